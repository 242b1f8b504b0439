// The requests of the shop's own client, and reading what comes back.
#include "RetailerFixture.h"

#include "ScratchRoot.h"

#include <filesystem>

namespace ApplianceTest {

using TestSupport::ScratchRoot;

Appliance::Retailer::Settings RetailerFixture::settings()
{
    Appliance::Retailer::Settings settings;
    settings.host = host;
    settings.iconHost = iconHost;
    settings.logFile = ScratchRoot::file("retailer.log");
    settings.catalogueFile = RETAILER_CATALOGUE;
    settings.picturesFolder = RETAILER_PICTURES;
    settings.iconsFolder = RETAILER_ICONS;
    return settings;
}

std::vector<std::string> RetailerFixture::soundHeaders()
{
    return {"User-Agent: QMREFAPP/41/emartmallQMR", "Content-Type: application/json",
            "Cookie: MOBIL_APP_NO=41; APP_INF=N|HH_FS;"};
}

nlohmann::ordered_json RetailerFixture::soundBody(const std::string& query)
{
    return {
        {"common", {{"ts", "20260131235959"}, {"mobil_app_no", "41"}, {"apl_ver", "1.0.0"}, {"os_cd", "30"}}},
        {"params",
         {{"apiVersion", "1.0.0"},
          {"siteNo", "6001"},
          {"query", query},
          {"target", "mobile_item"},
          {"count", 6}}}};
}

void RetailerFixture::SetUp()
{
    std::filesystem::remove(settings().logFile);
    server = std::make_unique<Appliance::Retailer::Server>(settings());
}

HttpClient RetailerFixture::client() const
{
    HttpClient client(host, server->port());
    client.headers = soundHeaders();
    return client;
}

HttpClient RetailerFixture::iconClient() const
{
    return {iconHost, server->port()};
}

Reply RetailerFixture::search(const std::string& query) const
{
    return client().post(searchPath, soundBody(query).dump());
}

nlohmann::json RetailerFixture::items(const std::string& query) const
{
    const Reply reply = search(query);
    EXPECT_EQ(reply.result, CURLE_OK);
    EXPECT_EQ(reply.status, 200);
    return nlohmann::json::parse(reply.body).at("data").at("itemList");
}

std::string RetailerFixture::picturePathOf(const std::string& query, std::size_t position) const
{
    const std::string url = items(query).at(position - 1).at("itemImgUrl");
    const std::string origin = std::string("http://") + host;
    EXPECT_EQ(url.substr(0, origin.size()), origin);
    return url.substr(origin.size());
}

std::string messageOf(const Reply& reply)
{
    const auto error = nlohmann::json::parse(reply.body).at("error");
    EXPECT_EQ(error.at("status"), reply.status);
    return error.at("message");
}

}  // namespace ApplianceTest
