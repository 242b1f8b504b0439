// One whole search: what comes of it, and what it leaves behind whatever the retailer says.
#include <gtest/gtest.h>
#include <vconf.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "DBControl.h"
#include "ImageCurlDownloader.h"
#include "Items.h"
#include "SearchEmartControlFixture.h"
#include "Singleton.h"
#include "SiteValues.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

class SearchEmartControlFlowTest : public SearchEmartControlFixture {
  protected:
    /** A search that ends like this leaves the record and the flag like that. */
    void expectOutcome(int result, const StatusRecord& record, const Texts& log)
    {
        Calls::reset();
        EXPECT_EQ(search_->processEmartSearch("milk"), result);
        EXPECT_EQ(statusRecord(), record);
        EXPECT_EQ(responseFlag(), 1);
        EXPECT_EQ(logged(), log);
    }

    /** What the record is given, the request and the flag, in order. */
    static Texts steps()
    {
        Texts steps;
        for (const TestSupport::Call& call : Calls::all()) {
            if (call.name == "ndd_bundle_add_int" && call.arguments[0] != "id")
                steps.push_back(call.arguments[0] + " " + call.arguments[1]);
            else if (call.name == "curl_easy_perform" || call.name == "json_parser_new")
                steps.push_back(call.name);
            else if (call.name == "vconf_set_int")
                steps.push_back(call.arguments[0] + " " + call.arguments[1]);
        }
        return steps;
    }

    void expectNew()
    {
        EXPECT_EQ(search_->httpCode, 401);
        EXPECT_EQ(search_->productCount, 0);
        EXPECT_EQ(search_->allLists(), std::vector<Texts>(8));
        EXPECT_EQ(search_->searchTerm, "");
        EXPECT_FALSE(std::filesystem::exists(imageFile("")));
    }
};

}  // namespace

TEST_F(SearchEmartControlFlowTest, ANewControllerHasNothing)
{
    expectNew();
    EXPECT_EQ(search_->requestCount, 0);
    EXPECT_NE(Util::Singleton<Util::ImageCurlDownloader>::mInstance, nullptr);
    EXPECT_EQ(sent().size(), 0u);
    EXPECT_EQ(statusRecord(), std::nullopt);
    EXPECT_EQ(responseFlag(), std::nullopt);
}

TEST_F(SearchEmartControlFlowTest, InitForgetsTheResult)
{
    answerWith({Items::pictured("Milk", addPicture("/0.png", "zero"))});
    search();
    confirm();
    ASSERT_TRUE(waitForImages(1));
    EXPECT_EQ(search_->httpCode, 200);
    EXPECT_EQ(search_->searchTerm, "milk");
    EXPECT_EQ(search_->requestCount, 6);
    EXPECT_EQ(search_->productCount, 1);
    for (const Texts& list : search_->allLists())
        EXPECT_EQ(list.size(), 1u);

    search_->init();
    expectNew();
    search_->sendEmartAllImagePath();
    EXPECT_EQ(loggedErrors(), Texts{"sendEmartAllImagePath: UI is not ready to show image"});
}

TEST_F(SearchEmartControlFlowTest, TheEndOfTheControllerRemovesThePictures)
{
    answerWith({Items::pictured("Milk", addPicture("/0.png", "zero"))});
    search();
    confirm();
    ASSERT_TRUE(waitForImages(1));
    EXPECT_TRUE(std::filesystem::exists(imageFile("10.png")));
    search_.reset();
    EXPECT_FALSE(std::filesystem::exists(imageFile("")));
}

TEST_F(SearchEmartControlFlowTest, AnAnswerWithProductsIsASuccess)
{
    answerWith({"{}", "{}", "{}"});
    expectOutcome(FOUND, {1, 1, 3, {}, {}}, {"findItems: itemCount: 3"});
    EXPECT_EQ(search_->httpCode, 200);
    EXPECT_EQ(search_->productCount, 3);
}

TEST_F(SearchEmartControlFlowTest, AnAnswerFillsTheListsPositionByPosition)
{
    answerWith({R"({"itemNm": "우유", "displayPrc": "2980", "itemImgUrl": "", "itemId": "1",
                    "benefitGrp1": [{"type": "B0", "txt": "할인"}], "benefitGrp2": [{"type": "91"}]})",
                R"({"itemNm": "치즈"})"});
    search();
    EXPECT_EQ(search_->productNames, (Texts{"우유", "치즈"}));
    EXPECT_EQ(search_->prices, (Texts{"2,980원", ""}));
    EXPECT_EQ(search_->pricesBeforeDiscount, (Texts{"", ""}));
    EXPECT_EQ(search_->imageUrls, (Texts{"", ""}));
    EXPECT_EQ(search_->productIds, (Texts{"1", ""}));
    EXPECT_EQ(search_->discountTypes, (Texts{"B0", ""}));
    EXPECT_EQ(search_->discountTexts, (Texts{"할인", ""}));
    EXPECT_EQ(search_->discountIconUrls,
              (Texts{"http://" CARVOY_RETAILER_ICON_HOST "/ui/app/6001/icon/91.png", ""}));
}

TEST_F(SearchEmartControlFlowTest, OfTenProductsTheFirstSixAreKeptInEveryList)
{
    Texts items;
    for (int i = 0; i < 10; ++i)
        items.push_back("{\"itemNm\": \"" + std::to_string(i) + "\"}");
    answerWith(items);
    expectOutcome(FOUND, {1, 1, 6, {}, {}}, {"findItems: itemCount: 10"});
    EXPECT_EQ(search_->productCount, 6);
    EXPECT_EQ(search_->productNames, (Texts{"0", "1", "2", "3", "4", "5"}));
    for (const Texts& list : search_->allLists())
        EXPECT_EQ(list.size(), 6u);
}

TEST_F(SearchEmartControlFlowTest, AnAnswerThatCannotBeUsedStillTellsThatTheUserIsLinked)
{
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"<html>", "json_parser_load_from_data() failed"},
        {"", "json_parser_get_root() failed"},
        {"[]", "Invalid json type"},
        {"{}", "no member: data"},
        {R"({"data": []})", "json_node_get_object_member() failed"},
        {R"({"data": {}})", "no member: itemList"},
        {R"({"data": {"itemList": {}}})", "json_object_get_array_member() failed"},
        {R"({"data": {"itemList": []}})", "empty json array"}};
    for (const auto& [body, message] : cases) {
        retailer_.answerSearch(200, body);
        expectOutcome(BAD_ANSWER, {1, 1, 0, {}, {}}, {"parseResult: " + std::string(message)});
        EXPECT_EQ(search_->productCount, 0);
        EXPECT_EQ(search_->allLists(), std::vector<Texts>(8));
    }
    search_.reset();
    EXPECT_EQ(Calls::count("fopen"), 0u);
}

TEST_F(SearchEmartControlFlowTest, WithoutAParserTheAnswerCannotBeUsed)
{
    answerWith({"{}"});
    Calls::fail("json_parser_new", ENOMEM);
    EXPECT_EQ(search_->processEmartSearch("milk"), BAD_ANSWER);
    Calls::fail("json_node_get_object", 0);
    EXPECT_EQ(search_->processEmartSearch("milk"), BAD_ANSWER);
    EXPECT_EQ(logged(), (Texts{"parseResult: Couldn't create json parser",
                               "parseResult: json_node_get_object() failed"}));
}

TEST_F(SearchEmartControlFlowTest, AForbiddenSearchIsOneWithoutALogin)
{
    retailer_.answerSearch(403, Items::answer({"{}"}));
    expectOutcome(NOT_LOGGED_IN, {1, 0, 0, {}, {}}, {"searchProduct: curl perform failed: 403"});
    EXPECT_EQ(search_->httpCode, 403);
}

TEST_F(SearchEmartControlFlowTest, ARejectedLoginIsAFailureWithALineOfItsOwn)
{
    retailer_.answerSearch(401, Items::answer({"{}"}));
    expectOutcome(FAILED, {1, 0, 0, {}, {}}, {"searchProduct: Not logged in"});
}

TEST_F(SearchEmartControlFlowTest, EveryOtherStatusIsAFailure)
{
    for (int status : {201, 202, 204, 206, 300, 304, 400, 402, 404, 407, 429, 500, 503, 599, 999}) {
        const bool hasBody = status != 204 && status != 304;
        retailer_.answerSearch(status, hasBody ? Items::answer({"{}"}) : "");
        expectOutcome(FAILED, {1, 0, 0, {}, {}},
                      {"searchProduct: curl perform failed: " + std::to_string(status)});
        EXPECT_EQ(search_->httpCode, status);
    }
}

TEST_F(SearchEmartControlFlowTest, ARedirectIsNotFollowed)
{
    for (int status : {301, 302, 303, 307, 308}) {
        retailer_.answer(RetailerServer::SEARCH_PATH, status, "", "Location: " + url("/elsewhere") + "\r\n");
        expectOutcome(FAILED, {1, 0, 0, {}, {}},
                      {"searchProduct: curl perform failed: " + std::to_string(status)});
    }
    EXPECT_EQ(retailer_.countOf("/elsewhere"), 0);
}

TEST_F(SearchEmartControlFlowTest, WithoutAnAnswerTheFailureHasStatusZero)
{
    retailer_.handle(RetailerServer::SEARCH_PATH, [](const ServerRequest&, ServerConnection&) {});
    expectOutcome(FAILED, {1, 0, 0, {}, {}},
                  {"perform: curl_easy_perform() failed: Server returned nothing (no headers, no data)",
                   "searchProduct: curl perform failed: 0"});
    EXPECT_EQ(search_->httpCode, 0);
}

TEST_F(SearchEmartControlFlowTest, AnAnswerThatBreaksOffIsNoAnswer)
{
    retailer_.handle(RetailerServer::SEARCH_PATH, [](const ServerRequest&, ServerConnection& connection) {
        connection.answerHead(200, 1000);
        connection.send(Items::answer({"{}"}));
    });
    expectOutcome(FAILED, {1, 0, 0, {}, {}},
                  {"perform: curl_easy_perform() failed: Transferred a partial file",
                   "searchProduct: curl perform failed: 0"});
}

TEST_F(SearchEmartControlFlowTest, AnEmptyTermNeverReachesTheRetailer)
{
    EXPECT_EQ(search_->processEmartSearch(""), FAILED);
    EXPECT_EQ(logged(), Texts{"searchProduct: Invalid extra data"});
    EXPECT_EQ(loggedErrors().size(), 1u);
    EXPECT_EQ(search_->httpCode, 401);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 0, 0, {}, {}}));
    EXPECT_EQ(responseFlag(), 1);
    EXPECT_EQ(Calls::count("curl_easy_perform"), 0u);
    EXPECT_EQ(retailer_.requests().size(), 0u);
}

TEST_F(SearchEmartControlFlowTest, TheFailedStatusOfOneSearchIsNotThatOfTheNext)
{
    retailer_.answerSearch(403, "");
    EXPECT_EQ(search_->processEmartSearch("milk"), NOT_LOGGED_IN);
    EXPECT_EQ(search_->processEmartSearch(""), FAILED);
    answerWith({"{}"});
    search();
    EXPECT_EQ(search_->processEmartSearch(""), FAILED);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 0, 0, {}, {}}));
}

TEST_F(SearchEmartControlFlowTest, TheRecordIsWrittenBeforeTheRequestAndBehindTheAnswer)
{
    answerWith({"{}", "{}"});
    search();
    EXPECT_EQ(steps(),
              (Texts{"isLoggedIn 0", "isLinked 0", "totalCount 0", "curl_easy_perform", "json_parser_new",
                     "isLoggedIn 1", "isLinked 1", "totalCount 2", "db/nuvex/e-commerce/response 1"}));
}

TEST_F(SearchEmartControlFlowTest, TheRecordIsWrittenTwiceWithoutALogin)
{
    writeFile(loginFile(), "logout\n");
    Calls::reset();
    EXPECT_EQ(search_->processEmartSearch("milk"), NOT_LOGGED_IN);
    EXPECT_EQ(steps(), (Texts{"isLoggedIn 0", "isLinked 0", "totalCount 0", "isLoggedIn 0", "isLinked 0",
                              "totalCount 0", "db/nuvex/e-commerce/response 1"}));
}

TEST_F(SearchEmartControlFlowTest, TheCountOfTheSearchBeforeIsGoneWhileTheRetailerIsAsked)
{
    answerWith({"{}", "{}"});
    search();
    std::optional<StatusRecord> meanwhile;
    const auto isSeen = newLatch();
    retailer_.handle(RetailerServer::SEARCH_PATH, [&](const ServerRequest&, ServerConnection& connection) {
        meanwhile = statusRecord();
        isSeen->open();
        connection.answer(500, "");
    });
    EXPECT_EQ(search_->processEmartSearch("milk"), FAILED);
    ASSERT_TRUE(isSeen->wait());
    EXPECT_EQ(meanwhile, (StatusRecord{0, 0, 0, {}, {}}));
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 0, 0, {}, {}}));
}

TEST_F(SearchEmartControlFlowTest, TheSearchLeavesCartAndViewAsTheyAre)
{
    ASSERT_EQ(DBControl::updateStatus(0, 0, 0, 7, 3), 0);
    answerWith({"{}", "{}", "{}"});
    search();
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 3, 7, 3}));
}

TEST_F(SearchEmartControlFlowTest, ARecordThatCannotBeBegunDoesNotStopTheSearch)
{
    answerWith({"{}"});
    Calls::fail("ndd_manager_create", -5, 1);
    search();
    EXPECT_EQ(loggedErrors(), Texts{"processEmartSearch: updateStatus () init failed"});
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 1, {}, {}}));
    EXPECT_EQ(responseFlag(), 1);
}

TEST_F(SearchEmartControlFlowTest, ARecordThatCannotBeEndedDoesNotStopTheSearch)
{
    answerWith({"{}"});
    Calls::fail("ndd_manager_create", -5, 2);
    search();
    EXPECT_EQ(loggedErrors(), Texts{"processEmartSearch: updateStatus() failed"});
    EXPECT_EQ(statusRecord(), (StatusRecord{0, 0, 0, {}, {}}));
    EXPECT_EQ(responseFlag(), 1);
}

TEST_F(SearchEmartControlFlowTest, AFlagThatCannotBeSetDoesNotStopTheSearch)
{
    answerWith({"{}"});
    Calls::failAlways("vconf_set_int", VCONF_ERROR);
    search();
    EXPECT_EQ(loggedErrors(), Texts{"processEmartSearch: vconf_set_int() failed"});
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 1, {}, {}}));
    EXPECT_EQ(responseFlag(), std::nullopt);
}

TEST_F(SearchEmartControlFlowTest, AllFailuresTogetherAreLoggedInOrder)
{
    retailer_.answerSearch(500, "");
    Calls::failAlways("ndd_manager_create", -5);
    Calls::failAlways("vconf_set_int", VCONF_ERROR);
    EXPECT_EQ(search_->processEmartSearch("milk"), FAILED);
    EXPECT_EQ(
        logged(),
        (Texts{"processEmartSearch: updateStatus () init failed", "searchProduct: curl perform failed: 500",
               "processEmartSearch: updateStatus() failed", "processEmartSearch: vconf_set_int() failed"}));
    EXPECT_EQ(loggedErrors().size(), 4u);
}

TEST_F(SearchEmartControlFlowTest, TheFlagIsSetAgainByEverySearch)
{
    retailer_.answerSearch(500, "");
    search_->processEmartSearch("milk");
    vconf_set_int("db/nuvex/e-commerce/response", 0);
    search_->processEmartSearch("");
    EXPECT_EQ(responseFlag(), 1);
}

TEST_F(SearchEmartControlFlowTest, AFailedSearchForgetsTheResultOfTheOneBefore)
{
    answerWith({R"({"itemNm": "Milk"})"});
    search();
    retailer_.answerSearch(500, "");
    EXPECT_EQ(search_->processEmartSearch("tea"), FAILED);
    EXPECT_EQ(search_->allLists(), std::vector<Texts>(8));
    const SentMessage message = result();
    EXPECT_EQ(message.text("key_search_term"), "tea");
    EXPECT_EQ(message.text("key_total_num_of_products"), "0");
}

TEST_F(SearchEmartControlFlowTest, TheRequestItselfGivesTheBodyOfAGoodAnswerOnly)
{
    EXPECT_EQ(search_->searchProduct(), "");
    EXPECT_EQ(logged(), Texts{"searchProduct: Invalid extra data"});

    search_->searchTerm = "milk";
    for (const std::string& body :
         {std::string("{\"data\": {}}"), std::string("a\0\xff b", 5), std::string()}) {
        retailer_.answerSearch(200, body);
        EXPECT_EQ(search_->searchProduct(), body);
        EXPECT_EQ(search_->httpCode, 200);
    }
    for (int status : {201, 401, 403, 500}) {
        retailer_.answerSearch(status, "{\"data\": {}}");
        EXPECT_EQ(search_->searchProduct(), "");
        EXPECT_EQ(search_->httpCode, status);
    }
}

TEST_F(SearchEmartControlFlowTest, AnAnswerOfManyMegabytesIsRead)
{
    const std::string item = "{\"itemNm\": \"Milk\", \"text\": \"" + std::string(1000, 'x') + "\"}";
    answerWith(Texts(10'000, item));
    expectOutcome(FOUND, {1, 1, 6, {}, {}}, {"findItems: itemCount: 10000"});
    EXPECT_EQ(search_->productNames, Texts(6, "Milk"));
}

}  // namespace Carvoy
