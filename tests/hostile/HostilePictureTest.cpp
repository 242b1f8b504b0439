// Whoever has the pictures misbehaves: how the picture ends, and that the next ones come.
#include "HostileWorld.h"

namespace ServiceTest {

namespace {

using testing::ValuesIn;

class APictureOfAHostileServer : public HostileWorld, public testing::WithParamInterface<Hostility> {
  protected:
    void SetUp() override
    {
        HostileServer& server = stand(PictureHost, HttpsPort, openingOf(GetParam(), authority, PictureHost));
        misbehave(server, "/hostile.png", GetParam());
        FailedSearch::SetUp();
    }
};

TEST_P(APictureOfAHostileServer, IsLoggedAndLeftOutAndLeavesTheNextOnesUnharmed)
{
    searchWithPicture(pictureUrl());

    expectPictureFailure("curl_easy_perform failed, result: " + GetParam().reason);
}

const auto nameOf = [](const auto& one) { return std::string(one.param.name); };

INSTANTIATE_TEST_SUITE_P(WithHttp, APictureOfAHostileServer, ValuesIn(hostilitiesOverHttp()), nameOf);
INSTANTIATE_TEST_SUITE_P(WithTls, APictureOfAHostileServer, ValuesIn(hostilitiesOverTls()), nameOf);

}  // namespace

}  // namespace ServiceTest
