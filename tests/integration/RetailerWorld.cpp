#include "RetailerWorld.h"

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "SiteValues.h"

namespace ServiceTest {

using TestSupport::RawMessage;

namespace {

constexpr const char* const LoginFile = CARVOY_RETAILER_LOGIN_FILE;

}  // namespace

std::string answerOf(const std::vector<Item>& items)
{
    nlohmann::json list = nlohmann::json::array();
    for (const Item& item : items) {
        nlohmann::json entry = {{"itemNm", item.name}};
        if (!item.picture.empty())
            entry["itemImgUrl"] = "http://" CARVOY_RETAILER_API_HOST + item.picture;
        if (!item.price.empty())
            entry["displayPrc"] = item.price;
        if (!item.id.empty())
            entry["itemId"] = item.id;
        if (!item.discount.empty())
            entry["benefitGrp1"] = {{{"type", item.discount}, {"txt", item.text}}};
        if (!item.badge.empty())
            entry["benefitGrp2"] = {{{"type", item.badge}}};
        list.push_back(entry);
    }
    const std::string count = std::to_string(items.size());
    return nlohmann::json{{"data", {{"itemCount", count}, {"itemList", list}}}}.dump();
}

RetailerWorld::RetailerWorld() : keptLogin(LoginFile) {}

void RetailerWorld::SetUp()
{
    writeLogin("login\n");
    retailer = std::make_unique<Merchant>(retailerPort.number());
    ui = std::make_unique<UiPeer>();
}

TestSupport::ChildProcess::Variables RetailerWorld::retailerVariables() const
{
    const std::string leadHere = ":80:127.0.0.1:" + std::to_string(retailerPort.number());
    const std::string retailers =
        CARVOY_RETAILER_API_HOST + leadHere + "," CARVOY_RETAILER_ICON_HOST + leadHere;
    TestSupport::ChildProcess::Variables all = variables();
    for (auto& [name, value] : all) {
        if (name == "APPLIANCE_CONNECT_TO")
            value += "," + retailers;
    }
    return all;
}

void RetailerWorld::startRetailer()
{
    service = runService(retailerVariables(), CARVOY_RETAILER);
    ASSERT_TRUE(TestSupport::waitForName(RetailerId)) << service->errors();
    resultMessage();
    atRest_ = threads();
}

void RetailerWorld::writeLogin(const std::optional<std::string>& content)
{
    std::filesystem::remove_all(LoginFile);
    if (!content)
        return;
    std::filesystem::create_directories(std::filesystem::path(LoginFile).parent_path());
    std::ofstream(LoginFile, std::ios::binary) << *content;
}

std::string RetailerWorld::search(const std::string& term)
{
    return ask("search", {{"key_search_term", term}});
}

std::string RetailerWorld::ask(const std::string& operation, const TestSupport::Extras& extras)
{
    return client->launch(RetailerId, serviceOperation(operation), 0, extras);
}

RawMessage RetailerWorld::resultMessage()
{
    EXPECT_EQ(ask("result"), "");
    return ui->nextResult();
}

void RetailerWorld::stock(const std::vector<Item>& items)
{
    retailer->answer(SearchPath, {200, answerOf(items)});
    for (const Item& item : items) {
        if (!item.picture.empty())
            retailer->answer(item.picture, {200, pictureBytes(item.picture), "image/jpeg"});
        if (!item.badge.empty())
            retailer->answer(iconPath(item.badge), {200, pictureBytes(item.badge), "image/png"});
    }
}

std::vector<Item> RetailerWorld::threeItems()
{
    return {{"서울 우유 1L", "/i/seoul.jpg", "2980", "11", "1,000원 할인", "91", "1000024500411"},
            {"매일 우유 900mL", "/i/maeil.png", "990", "20", "없는 할인", "92", "1000024500412"},
            {"두유", "", "1290000", "B0", "", "", ""}};
}

}  // namespace ServiceTest
