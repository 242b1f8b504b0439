#include "HostileWorld.h"

#include <utility>

#include "SiteValues.h"

namespace ServiceTest {

using TestSupport::ChildProcess;
using Texts = std::vector<std::string>;

namespace {

const std::string GoodPicture = "/p/good.png";

std::string originOf(const std::string& host, int port)
{
    return (port == 443 ? "https://" : "http://") + host;
}

}  // namespace

void HostileWorld::TearDown()
{
    FailedSearch::TearDown();
    for (const auto& server : servers_) {
        for (const char* token : {SessionToken, AccessToken})
            EXPECT_EQ(server->received().find(token), std::string::npos) << server->address("") << token;
    }
}

ChildProcess::Variables HostileWorld::added() const
{
    for (const auto& [name, value] : variables()) {
        if (name == "APPLIANCE_CONNECT_TO")
            return {{name, leads_ + value}};
    }
    return {};
}

HostileServer& HostileWorld::stand(const std::string& host, int hostPort, const Opening& opening,
                                   const ServerPlace& place)
{
    servers_.push_back(std::make_unique<HostileServer>(originOf(host, hostPort), opening, place));
    lead(host, hostPort, *servers_.back());
    return *servers_.back();
}

void HostileWorld::lead(const std::string& host, int hostPort, const HostileServer& server)
{
    leads_ += host + ":" + std::to_string(hostPort) + ":" + server.place() + ",";
}

HostileServer& HostileWorld::stand(const std::string& host)
{
    return stand(host, HttpsPort, overTls(authority.issue({host})));
}

HostileServer& HostileWorld::standForMerchant(const Opening& opening)
{
    merchant.reset();
    inMerchantsPlace_ = std::make_unique<HostileServer>(originOf(merchantHost(), HttpsPort), opening,
                                                        ServerPlace{"127.0.0.1", port.number()});
    return *inMerchantsPlace_;
}

void HostileWorld::putRight()
{
    inMerchantsPlace_.reset();
    FailedSearch::putRight();
}

void HostileWorld::searchWithPicture(const std::string& url)
{
    stock({{"Strange Milk", url}, {"Good Milk", GoodPicture}});
    search();
    const auto result = resultMessage();
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "2");
    ui->confirm(result);
}

void HostileWorld::expectPictureFailure(const std::string& text)
{
    const Picture picture = ui->nextPicture();
    EXPECT_EQ(picture.index, "1");
    EXPECT_TRUE(contentOf(picture.path) == pictureBytes(GoodPicture)) << picture.path;
    EXPECT_EQ(errors(), (Texts{"startDownload: " + text, "operator(): Failed to startDownload for index 0"}));
    stock(threeProducts());
    expectASearchThatWorks();
    stopService();
    EXPECT_EQ(service->errors(), "");
}

std::string HostileWorld::merchantHost()
{
    return CARVOY_MERCHANT_BRIDGE_HOST;
}

}  // namespace ServiceTest
