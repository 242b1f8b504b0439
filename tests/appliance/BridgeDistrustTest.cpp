// A certificate that nobody trusts, on request.
#include "BridgeFixture.h"

#include "ScratchRoot.h"

#include <filesystem>
#include <fstream>
#include <memory>

namespace ApplianceTest {
namespace {

using Appliance::MerchantBridge::Server;
using TestSupport::ScratchRoot;

class ADistrustedBridge : public BridgeFixture {
  protected:
    void SetUp() override
    {
        std::filesystem::remove(file);
        auto own = settings();
        own.untrustedWhile = file;
        server = std::make_unique<Server>(own);
    }

    void beginDistrust() const { std::ofstream(file) << "anything"; }
    void endDistrust() const { std::filesystem::remove(file); }

    CURLcode resultOfASearch() const { return search("milk").result; }

    const std::string file = ScratchRoot::file("untrusted");
};

TEST_F(ADistrustedBridge, IsTrustedBeforeAndAfterTheFileIsThere)
{
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(search("milk").status, 200);
        beginDistrust();
        EXPECT_EQ(resultOfASearch(), CURLE_PEER_FAILED_VERIFICATION);
        EXPECT_EQ(customer().get("/images/whole-milk.png").result, CURLE_PEER_FAILED_VERIFICATION);
        endDistrust();
    }
    EXPECT_EQ(search("milk").status, 200);
}

TEST_F(ADistrustedBridge, IsDistrustedByClientsThatKnowItAlready)
{
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> client(curl_easy_init(), curl_easy_cleanup);
    const auto result = [&] { return customer().getWith(client.get(), searchTarget("milk")).result; };
    EXPECT_EQ(result(), CURLE_OK);
    EXPECT_EQ(result(), CURLE_OK);
    beginDistrust();
    EXPECT_EQ(result(), CURLE_PEER_FAILED_VERIFICATION);
}

TEST_F(ADistrustedBridge, IsForTheSameHost)
{
    beginDistrust();
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> client(curl_easy_init(), curl_easy_cleanup);
    curl_easy_setopt(client.get(), CURLOPT_SSL_VERIFYPEER, 0L);  // its name is looked at all the same
    EXPECT_EQ(customer().getWith(client.get(), searchTarget("milk")).status, 200);
}

TEST_F(ADistrustedBridge, MakesOtherTroubleAsEver)
{
    EXPECT_EQ(search("milk ~status=503").status, 503);
    EXPECT_EQ(search("milk ~truncate").result, CURLE_PARTIAL_FILE);
    EXPECT_NE(search("milk ~reset").result, CURLE_OK);
    beginDistrust();
    EXPECT_EQ(search("milk ~status=503").status, 0);
    endDistrust();
    EXPECT_EQ(search("milk ~status=503").status, 503);
}

TEST_F(ADistrustedBridge, LogsNoRequestOfThoseWhoDoNotTrustIt)
{
    std::filesystem::remove(ScratchRoot::file("bridge.log"));
    auto own = settings();
    own.untrustedWhile = file;
    server = std::make_unique<Server>(own);
    beginDistrust();
    resultOfASearch();
    server.reset();
    EXPECT_EQ(readFile(ScratchRoot::file("bridge.log")), "");
}

}  // namespace
}  // namespace ApplianceTest
