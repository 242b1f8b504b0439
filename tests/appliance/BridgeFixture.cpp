#include "BridgeFixture.h"

#include "ScratchRoot.h"

#include <filesystem>
#include <fstream>

namespace ApplianceTest {

using TestSupport::ScratchRoot;

Appliance::MerchantBridge::Settings BridgeFixture::settings()
{
    Appliance::MerchantBridge::Settings settings;
    settings.host = host;
    settings.caFile = ScratchRoot::file("ca.pem");
    settings.tokensFile = ScratchRoot::file("tokens.txt");
    settings.logFile = ScratchRoot::file("bridge.log");
    settings.catalogueFile = MERCHANT_BRIDGE_CATALOGUE;
    settings.picturesFolder = MERCHANT_BRIDGE_PICTURES;
    std::ofstream(settings.tokensFile) << sessionToken << ',' << accessToken << '\n';
    return settings;
}

std::string BridgeFixture::searchTarget(const std::string& term, const std::string& merchant)
{
    return "/merchantbridge-production/api/product/search?merchant=" + HttpsClient::escape(merchant) +
           "&query=" + HttpsClient::escape(term) + "&searchBy=full&pageSize=6";
}

void BridgeFixture::SetUp()
{
    std::filesystem::remove(settings().logFile);
    server = std::make_unique<Appliance::MerchantBridge::Server>(settings());
}

HttpsClient BridgeFixture::customer() const
{
    HttpsClient client(host, server->port(), ScratchRoot::file("ca.pem"));
    client.headers = {std::string("X-Auth-Access-Token:") + accessToken,
                      std::string("X-Auth-Session-Token:") + sessionToken};
    return client;
}

Reply BridgeFixture::search(const std::string& term, const std::string& merchant) const
{
    return customer().get(searchTarget(term, merchant));
}

nlohmann::json BridgeFixture::products(const std::string& term, const std::string& merchant) const
{
    const Reply reply = search(term, merchant);
    EXPECT_EQ(reply.result, CURLE_OK);
    EXPECT_EQ(reply.status, 200);
    return nlohmann::json::parse(reply.body).at("products");
}

std::string BridgeFixture::picturePathOf(const std::string& term, std::size_t position) const
{
    const std::string url = products(term).at(position - 1).at("imageUrl");
    const std::string origin = std::string("https://") + host;
    EXPECT_EQ(url.substr(0, origin.size()), origin);
    return url.substr(origin.size());
}

}  // namespace ApplianceTest
