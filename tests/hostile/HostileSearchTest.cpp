// A merchant who misbehaves: how the search ends, and that the next one works.
#include "HostileWorld.h"

namespace ServiceTest {

namespace {

using testing::ValuesIn;

class ASearchAtAHostileMerchant : public HostileWorld, public testing::WithParamInterface<Hostility> {};

TEST_P(ASearchAtAHostileMerchant, FailsIsLoggedAndLeavesTheNextOneUnharmed)
{
    HostileServer& server = standForMerchant(openingOf(GetParam(), authority, merchantHost()));
    misbehave(server, Merchant::SearchPath, GetParam());

    expectFailure(Logged::noAnswer(GetParam().reason), true, false);
}

const auto nameOf = [](const auto& one) { return std::string(one.param.name); };

INSTANTIATE_TEST_SUITE_P(WithHttp, ASearchAtAHostileMerchant, ValuesIn(hostilitiesOverHttp()), nameOf);
INSTANTIATE_TEST_SUITE_P(WithTls, ASearchAtAHostileMerchant, ValuesIn(hostilitiesOverTls()), nameOf);

}  // namespace

}  // namespace ServiceTest
