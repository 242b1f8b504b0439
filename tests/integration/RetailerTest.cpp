// The retailer's search over the bus: what it asks, what the UI app gets, what it leaves behind.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "RetailerWorld.h"
#include "SiteValues.h"

namespace ServiceTest {

namespace {

using TestSupport::RawMessage;
using Texts = std::vector<std::string>;

class TheRetailersSearch : public RetailerWorld {
  protected:
    void SetUp() override
    {
        RetailerWorld::SetUp();
        stock(threeItems());
        startRetailer();
    }

    void searchAndConfirm(const std::string& term)
    {
        EXPECT_EQ(search(term), "");
        const RawMessage result = resultMessage();
        EXPECT_EQ(textOf(result, "key_search_term"), term);
        EXPECT_EQ(ui->confirm(result), "");
    }

    void expectPicture(const std::string& index, const std::string& type, const std::string& file,
                       const std::string& bytesOf)
    {
        const Picture picture = ui->nextRetailerPicture();
        EXPECT_EQ(picture.index, index);
        EXPECT_EQ(picture.type, type);
        EXPECT_EQ(picture.path, picturesFolder() + "/" + file);
        EXPECT_TRUE(contentOf(picture.path) == pictureBytes(bytesOf)) << picture.path;
    }

    void expectAllPictures()
    {
        expectPicture("0", "0", "10.jpg", "/i/seoul.jpg");
        expectPicture("0", "2", "12.png", "91");
        expectPicture("1", "0", "20.png", "/i/maeil.png");
    }
};

TEST_F(TheRetailersSearch, AsksWithAPostOfJson)
{
    search("오트 \"밀크\"");
    resultMessage();

    const std::vector<Asked> requests = retailer->requests(SearchPath);
    ASSERT_EQ(requests.size(), 1U);
    const Asked& asked = requests[0];
    EXPECT_EQ(asked.method, "POST");
    EXPECT_EQ(asked.target, SearchPath);
    EXPECT_EQ(asked.header("Host"), CARVOY_RETAILER_API_HOST);
    EXPECT_EQ(asked.header("User-Agent"), "QMREFAPP/41/emartmallQMR");
    EXPECT_EQ(asked.header("Content-Type"), "application/json");
    EXPECT_EQ(asked.header("Cookie"), "MOBIL_APP_NO=41; APP_INF=N|HH_FS;");
    EXPECT_EQ(asked.headers.count("User-Agent"), 1U);
    EXPECT_EQ(asked.headers.count("Content-Type"), 1U);

    const std::string time = asked.body.substr(17, 14);
    EXPECT_EQ(time.find_first_not_of("0123456789"), std::string::npos) << time;
    EXPECT_EQ(asked.body, R"({"common":{"ts":")" + time +
                              R"(","mobil_app_no":"41","apl_ver":"1.0.0","os_cd":"30"},)" +
                              R"("params":{"apiVersion":"1.0.0","siteNo":"6001","query":"오트 \"밀크\"",)" +
                              R"("target":"mobile_item","count":6}})");
}

TEST_F(TheRetailersSearch, BringsTheListsWhenTheUiAppIsToShowThem)
{
    search();
    const RawMessage result = resultMessage();

    EXPECT_EQ(result.caller, RetailerId);
    EXPECT_NE(result.id, 0U);
    EXPECT_EQ(result.extras.size(), 8U);
    EXPECT_EQ(textOf(result, "key_search_term"), "우유");
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "3");
    EXPECT_EQ(listOf(result, "key_product_names"), (Texts{"서울 우유 1L", "매일 우유 900mL", "두유"}));
    EXPECT_EQ(listOf(result, "key_product_prices"), (Texts{"2,980원", "990원", "1,290,000원"}));
    EXPECT_EQ(listOf(result, "key_product_prices_before_discount"), (Texts{"", "", ""}));
    EXPECT_EQ(listOf(result, "key_product_discount_type"), (Texts{"11", "", "B0"}));
    EXPECT_EQ(listOf(result, "key_product_discount_txt"), (Texts{"1,000원 할인", "", ""}));
    EXPECT_EQ(listOf(result, "key_product_ids"), (Texts{"1000024500411", "1000024500412", ""}));
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    EXPECT_EQ(responseFlag(), "1\n");
    EXPECT_EQ(log.count("itemCount: 3"), 1U);
}

TEST_F(TheRetailersSearch, BringsThePictureOfAProductAndThenItsBadge)
{
    searchAndConfirm("우유");

    expectAllPictures();
    waitForPictures();
    EXPECT_EQ(resultMessage().operation, serviceOperation("result")) << "nothing came in between";
    EXPECT_EQ(pictureFiles(), (Texts{"10.jpg", "12.png", "20.png"}));
    EXPECT_EQ(errors(), Texts{});
    stopService();
    EXPECT_FALSE(std::filesystem::exists(picturesFolder()));
    EXPECT_EQ(service->errors(), "");
}

TEST_F(TheRetailersSearch, HoldsThePicturesUntilTheListsAreConfirmed)
{
    search();
    const RawMessage refused = resultMessage();
    waitForPictures();
    EXPECT_EQ(ui->refuse(refused), "");
    EXPECT_TRUE(log.waitFor("Invalid app control response"));

    EXPECT_EQ(ui->confirm(resultMessage()), "");
    expectAllPictures();

    EXPECT_EQ(ui->confirm(resultMessage()), "");
    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "3") << "no picture came again";
}

TEST_F(TheRetailersSearch, LeavesOutAPictureThatFails)
{
    retailer->answer("/i/seoul.jpg", {404, "no such picture", "text/plain"});
    searchAndConfirm("우유");

    expectPicture("0", "2", "12.png", "91");
    expectPicture("1", "0", "20.png", "/i/maeil.png");
    EXPECT_EQ(errors(), (Texts{"startDownload: download failed, result: 0HTTP response: 404",
                               "startDownloadImages: Failed to startDownload for index 0, type: 0"}));
}

TEST_F(TheRetailersSearch, SendsAnEmptyResultBeforeAnySearch)
{
    const RawMessage result = resultMessage();
    EXPECT_EQ(result.extras.size(), 1U);
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "0");
    EXPECT_EQ(retailer->requests(SearchPath).size(), 0U);
}

TEST_F(TheRetailersSearch, IgnoresWhatItDoesNotKnow)
{
    for (const char* operation : {"show", "hide", "product_image", "emart_product_image", "Search", ""})
        EXPECT_EQ(ask(operation, {{"key_search_term", "우유"}}), "") << operation;
    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "0");
    EXPECT_EQ(retailer->requests(SearchPath).size(), 0U);
    EXPECT_EQ(status(), std::nullopt);
}

// The first search's picture and the new one's are both held: whatever else of the new search comes is
// fetched by the thread of the first one.
TEST_F(TheRetailersSearch, GoesOnWithTheProductsOfTheNextOne)
{
    retailer->hold("/i/seoul.jpg");
    searchAndConfirm("old");
    ASSERT_TRUE(retailer->waitForRequests("/i/seoul.jpg"));

    stock({{"New", "/n/0.png", "100", "", "", "100"}, {"Newer", "/n/1.png", "200", "", "", "110"}});
    retailer->hold("/n/0.png");
    searchAndConfirm("new");
    ASSERT_TRUE(retailer->waitForRequests("/n/0.png"));
    retailer->release("/i/seoul.jpg");

    expectPicture("0", "2", "12.png", "100");
    expectPicture("1", "0", "20.png", "/n/1.png");
    expectPicture("1", "2", "22.png", "110");
    retailer->release("/n/0.png");
    expectPicture("0", "0", "10.png", "/n/0.png");
    waitForPictures();
    EXPECT_EQ(textOf(resultMessage(), "key_search_term"), "new") << "each came once";
    for (const char* path :
         {"/n/0.png", "/n/1.png", "/ui/app/6001/icon/100.png", "/ui/app/6001/icon/110.png"})
        EXPECT_EQ(retailer->requests(path).size(), 1U) << path;
}

TEST_F(TheRetailersSearch, EndsWhereTheNextOneHasNoProducts)
{
    retailer->hold("/i/seoul.jpg");
    searchAndConfirm("old");
    ASSERT_TRUE(retailer->waitForRequests("/i/seoul.jpg"));
    retailer->answer(SearchPath, {200, R"({"data": {"itemList": []}})"});
    searchAndConfirm("none");

    retailer->release("/i/seoul.jpg");
    waitForPictures();
    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "0") << "no picture came";
    EXPECT_EQ(retailer->requests(iconPath("91")).size(), 0U);
    EXPECT_EQ(status(), (StatusRecord{1, 1, 0, {}, {}}));
}

TEST_F(TheRetailersSearch, EndsWithItsProgramWhileAPictureIsOnItsWay)
{
    retailer->hold("/i/maeil.png");
    searchAndConfirm("우유");
    ASSERT_TRUE(retailer->waitForRequests("/i/maeil.png"));
    service->signal(SIGTERM);
    ASSERT_TRUE(TestSupport::waitForName(RetailerId, false));
    retailer->release("/i/maeil.png");
    expectEnd(*service, 0);
    EXPECT_FALSE(std::filesystem::exists(picturesFolder()));
}

using TheService = RetailerWorld;

TEST_F(TheService, TakesNoSearchToTheRetailer)
{
    ServiceWorld::stock(threeProducts());
    startService(Until::ReadyForVoice, retailerVariables());
    ServiceWorld::search("milk");
    EXPECT_EQ(textOf(ServiceWorld::resultMessage(), "key_total_num_of_products"), "3");
    EXPECT_EQ(launch(serviceOperation("search"), {{"key_search_term", "우유"}}), "");
    EXPECT_EQ(textOf(ServiceWorld::resultMessage(), "key_total_num_of_products"), "0");
    EXPECT_EQ(errors(), Texts{"searchProduct: Invalid extra data"});
    EXPECT_EQ(retailer->requests(SearchPath).size(), 0U);
}

struct Failure {
    const char* name;
    std::function<void(Merchant&)> arrange;
    std::optional<std::string> login;
    Texts logged;
    StatusRecord status;
    std::string term = "우유";
};

std::ostream& operator<<(std::ostream& stream, const Failure& failure)
{
    return stream << failure.name;
}

class ARetailersSearchThatFails : public TheRetailersSearch, public testing::WithParamInterface<Failure> {};

TEST_P(ARetailersSearchThatFails, IsLoggedAndKeptAndLeavesTheNextOneUnharmed)
{
    writeLogin(GetParam().login);
    if (GetParam().arrange)
        GetParam().arrange(*retailer);
    EXPECT_EQ(search(GetParam().term), "");
    const RawMessage result = resultMessage();

    EXPECT_EQ(errors(), GetParam().logged);
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "0");
    EXPECT_EQ(result.extras.count("key_product_names"), 0U);
    EXPECT_EQ(status(), GetParam().status);
    EXPECT_EQ(responseFlag(), "1\n");
    EXPECT_EQ(retailer->requests(SearchPath).size(), GetParam().arrange ? 1U : 0U);

    writeLogin("login");
    stock(threeItems());
    searchAndConfirm("두유");
    expectAllPictures();
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    stopService();
    EXPECT_EQ(service->errors(), "");
}

const char* const SearchPathOfAll = "/api/refrigerator/search/datas.ssg";

std::function<void(Merchant&)> answer(int status, const std::string& body)
{
    return [=](Merchant& retailer) { retailer.answer(SearchPathOfAll, {status, body}); };
}

Failure status(const char* name, int code, const std::string& text)
{
    return {name,
            answer(code, R"({"data": {"itemList": [{"itemNm": "x"}]}})"),
            "login",
            {"searchProduct: " + text},
            {1, 0, 0, {}, {}}};
}

Failure badAnswer(const char* name, const std::string& body, const std::string& text)
{
    return {name, answer(200, body), "login", {"parseResult: " + text}, {1, 1, 0, {}, {}}};
}

Failure notLoggedIn(const char* name, const std::optional<std::string>& login, const Texts& logged = {})
{
    return {name, {}, login, logged, {0, 0, 0, {}, {}}};
}

INSTANTIATE_TEST_SUITE_P(
    By, ARetailersSearchThatFails,
    testing::Values(
        notLoggedIn("NoLoginFile", std::nullopt), notLoggedIn("Logout", "logout\n"),
        notLoggedIn("Capitals", "LOGIN\n",
                    {"checkEmartLogin: No matching value for emart - ecommerce login: LOGIN"}),
        Failure{"NoTerm", {}, "login", {"searchProduct: Invalid extra data"}, {1, 0, 0, {}, {}}, ""},
        status("Unauthorized", 401, "Not logged in"), status("Forbidden", 403, "curl perform failed: 403"),
        status("ServerError", 500, "curl perform failed: 500"),
        Failure{"CutOff",
                [](Merchant& retailer) {
                    Answer cut{200, "{\"data\""};
                    cut.withheld = 100;
                    retailer.answer(SearchPathOfAll, cut);
                },
                "login",
                {"perform: curl_easy_perform() failed: Transferred a partial file",
                 "searchProduct: curl perform failed: 0"},
                {1, 0, 0, {}, {}}},
        badAnswer("Html", "<html>", "json_parser_load_from_data() failed"),
        badAnswer("Array", "[]", "Invalid json type"), badAnswer("NoData", "{}", "no member: data"),
        badAnswer("TextForData", R"({"data": "x"})", "json_node_get_object_member() failed"),
        badAnswer("NoItems", R"({"data": {}})", "no member: itemList"),
        badAnswer("ObjectForItems", R"({"data": {"itemList": {}}})", "json_object_get_array_member() failed"),
        badAnswer("NoneFound", R"({"data": {"itemCount": "0", "itemList": []}})", "empty json array"),
        badAnswer("Nested", R"({"data": )" + std::string(100'000, '['),
                  "json_parser_load_from_data() failed")),
    [](const auto& one) { return std::string(one.param.name); });

}  // namespace

}  // namespace ServiceTest
