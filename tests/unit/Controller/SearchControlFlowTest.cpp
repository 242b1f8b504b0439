// One whole search: what it asks the merchant, and what it leaves behind whatever the merchant says.
#include <gtest/gtest.h>
#include <vconf.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "DBControl.h"
#include "Products.h"
#include "SearchControlFixture.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

enum SearchResult { FOUND = 0, BAD_ANSWER = 1, NOT_LOGGED_IN = 2, FAILED = 3 };

class SearchControlFlowTest : public SearchControlFixture {
  protected:
    /** The target of the only search that reached the merchant. */
    std::string target()
    {
        const std::vector<MerchantRequest> requests = merchant_.requests();
        EXPECT_EQ(requests.size(), 1u);
        return requests.empty() ? "" : requests[0].target;
    }

    /** A search that ends like this leaves the record and the flag like that. */
    void expectOutcome(int result, const StatusRecord& record, const Texts& log)
    {
        EXPECT_EQ(search_->processSearch("freshmart", "milk"), result);
        EXPECT_EQ(statusRecord(), record);
        EXPECT_EQ(responseFlag(), 1);
        EXPECT_EQ(logged(), log);
    }
};

/** Where a header line stands in a request; the line must be there exactly once, byte for byte. */
size_t placeOf(const std::string& line, const std::string& head)
{
    const size_t place = head.find("\r\n" + line + "\r\n");
    EXPECT_NE(place, std::string::npos) << line << " in " << head;
    EXPECT_EQ(head.find(line, place + 2 + line.size()), std::string::npos) << head;
    return place;
}

}  // namespace

TEST_F(SearchControlFlowTest, AnAnswerWithProductsIsASuccess)
{
    answerWithPictures({addPicture("/1.png", "one"), addPicture("/2.png", "two")});
    EXPECT_EQ(search_->processSearch("freshmart", "milk"), FOUND);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 2, {}, {}}));
    EXPECT_EQ(responseFlag(), 1);
    confirm();
    EXPECT_TRUE(waitForImages(2));
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(SearchControlFlowTest, AnAnswerThatCannotBeUsedStillTellsThatTheUserIsLinked)
{
    merchant_.answerSearch(200, "<html>");
    expectOutcome(BAD_ANSWER, {1, 1, 0, {}, {}}, {"parseResult: json_parser_load_from_data() failed"});
}

TEST_F(SearchControlFlowTest, AnAnswerWithoutABodyCannotBeUsed)
{
    merchant_.answerSearch(200, "");
    expectOutcome(BAD_ANSWER, {1, 1, 0, {}, {}}, {"parseResult: json_parser_get_root() failed"});
}

TEST_F(SearchControlFlowTest, AnAnswerWithoutProductsCountsNone)
{
    merchant_.answerSearch(200, "{\"products\": []}");
    expectOutcome(BAD_ANSWER, {1, 1, 0, {}, {}}, {"parseResult: empty json array"});
}

TEST_F(SearchControlFlowTest, ARejectedLoginIsReported)
{
    merchant_.answerSearch(401, Products::answer({"{}"}));
    expectOutcome(NOT_LOGGED_IN, {0, 0, 0, {}, {}}, {"searchProduct: Not logged in"});
}

TEST_F(SearchControlFlowTest, EveryOtherStatusIsAFailure)
{
    for (int status : {201, 204, 301, 400, 403, 404, 500, 503}) {
        Calls::reset();
        merchant_.answerSearch(status, status == 204 ? "" : Products::answer({"{}"}));
        expectOutcome(FAILED, {1, 0, 0, {}, {}},
                      {"searchProduct: curl perform failed: " + std::to_string(status)});
    }
}

TEST_F(SearchControlFlowTest, WithoutAnAnswerTheFailureHasStatusZero)
{
    merchant_.handle(MerchantServer::SEARCH_PATH, [](const MerchantRequest&, MerchantConnection&) {});
    expectOutcome(FAILED, {1, 0, 0, {}, {}},
                  {"perform: curl_easy_perform() failed: Server returned nothing (no headers, no data)",
                   "searchProduct: curl perform failed: 0"});
}

TEST_F(SearchControlFlowTest, AnAnswerThatBreaksOffIsNoAnswer)
{
    merchant_.handle(MerchantServer::SEARCH_PATH, [](const MerchantRequest&, MerchantConnection& connection) {
        connection.answerHead(200, 1000);
        connection.send(Products::answer({"{}"}));
    });
    expectOutcome(FAILED, {1, 0, 0, {}, {}},
                  {"perform: curl_easy_perform() failed: Transferred a partial file",
                   "searchProduct: curl perform failed: 0"});
}

TEST_F(SearchControlFlowTest, ARedirectIsNotFollowed)
{
    merchant_.answer(MerchantServer::SEARCH_PATH, 302, "",
                     "Location: " + MerchantServer::url("/elsewhere") + "\r\n");
    expectOutcome(FAILED, {1, 0, 0, {}, {}}, {"searchProduct: curl perform failed: 302"});
    EXPECT_EQ(merchant_.countOf("/elsewhere"), 0);
}

TEST_F(SearchControlFlowTest, AnEmptyTermNeverReachesTheMerchant)
{
    EXPECT_EQ(search_->processSearch("freshmart", ""), NOT_LOGGED_IN);
    EXPECT_EQ(search_->processSearch("", "milk"), NOT_LOGGED_IN);
    EXPECT_EQ(search_->processSearch("", ""), NOT_LOGGED_IN);
    EXPECT_EQ(logged(), Texts(3, "searchProduct: Invalid extra data"));
    EXPECT_EQ(statusRecord(), (StatusRecord{0, 0, 0, {}, {}}));
    EXPECT_EQ(responseFlag(), 1);
    EXPECT_EQ(merchant_.requests().size(), 0u);
    EXPECT_EQ(Calls::count("curl_easy_perform"), 0u);
}

TEST_F(SearchControlFlowTest, WithoutATokenFileTheUserIsNotLoggedIn)
{
    std::filesystem::remove(tokenFile());
    expectOutcome(NOT_LOGGED_IN, {0, 0, 0, {}, {}},
                  {"checkMCLogin: Not Open MC Login File!", "searchProduct: Invalid access token"});
    EXPECT_EQ(merchant_.requests().size(), 0u);
}

TEST_F(SearchControlFlowTest, AnEmptyTokenIsNoLogin)
{
    for (const char* line : {"", "\n", ",access\n", "session,\n", ",\n", "a,b,\n", "\nsession,access\n"}) {
        Calls::reset();
        writeFile(tokenFile(), line);
        expectOutcome(NOT_LOGGED_IN, {0, 0, 0, {}, {}}, {"searchProduct: Invalid access token"});
    }
    EXPECT_EQ(merchant_.requests().size(), 0u);
}

TEST_F(SearchControlFlowTest, TheQueryHasItsKeysInOrder)
{
    merchant_.answerSearch(500, "");
    search_->processSearch("freshmart", "milk");
    EXPECT_EQ(target(),
              "/merchantbridge-production/api/product/search"
              "?merchant=freshmart&query=milk&searchBy=full&pageSize=6");
}

TEST_F(SearchControlFlowTest, WhatTheUserSaysIsEscaped)
{
    merchant_.answerSearch(500, "");
    search_->processSearch("fresh mart&co", "oat milk & 50% cr\u00e8me/#?=+\"");
    EXPECT_EQ(target(),
              "/merchantbridge-production/api/product/search?merchant=fresh%20mart%26co&query=oat%20milk%20"
              "%26%2050%25%20cr%C3%A8me%2F%23%3F%3D%2B%22&searchBy=full&pageSize=6");
}

TEST_F(SearchControlFlowTest, AZeroByteIsEscapedLikeAnyOther)
{
    merchant_.answerSearch(500, "");
    search_->processSearch("freshmart", std::string("a\0b", 3));
    EXPECT_NE(target().find("&query=a%00b&"), std::string::npos);
}

TEST_F(SearchControlFlowTest, ATextThatCannotBeEscapedIsSentAsItIs)
{
    merchant_.answerSearch(500, "");
    Calls::fail("curl_easy_escape", ENOMEM, 2);
    search_->processSearch("freshmart", "milk");
    EXPECT_NE(target().find("?merchant=freshmart&query=milk&"), std::string::npos);
    EXPECT_EQ(loggedErrors(),
              (Texts{"encode: curl_easy_escape failed", "searchProduct: curl perform failed: 500"}));
}

TEST_F(SearchControlFlowTest, TheRequestIsAPlainGetWithBothTokens)
{
    merchant_.answerSearch(500, "");
    search_->processSearch("freshmart", "milk");
    const std::string head = merchant_.requests().at(0).head;

    EXPECT_EQ(head.rfind("GET /merchantbridge-production/", 0), 0u) << head;
    EXPECT_LT(placeOf("X-Auth-Access-Token:access", head), placeOf("X-Auth-Session-Token:session", head));
    EXPECT_EQ(head.find("Content-Length"), std::string::npos) << head;
    EXPECT_EQ(head.find("Cookie"), std::string::npos) << head;
}

TEST_F(SearchControlFlowTest, NothingButTheAddressIsSetForTheRequest)
{
    merchant_.answerSearch(500, "");
    search_->processSearch("freshmart", "milk");
    Texts options;
    for (const TestSupport::Call& call : Calls::of("curl_easy_setopt"))
        options.push_back(call.arguments[0]);
    // What the platform adds to find the merchant is the platform's.
    for (const char* platforms : {"CAINFO", "CAPATH", "CONNECT_TO"})
        options.erase(std::remove(options.begin(), options.end(), platforms), options.end());
    EXPECT_EQ(options, (Texts{"HEADERFUNCTION", "HEADERDATA", "WRITEFUNCTION", "WRITEDATA", "VERBOSE",
                              "TIMEOUT", "NOSIGNAL", "URL", "HTTPHEADER"}));
}

TEST_F(SearchControlFlowTest, ANewLineInATokenDoesNotReachTheWire)
{
    writeFile(tokenFile(), "session,access\nX-Evil:1\n");
    merchant_.answerSearch(500, "");
    search_->processSearch("freshmart", "milk");
    EXPECT_EQ(merchant_.requests().at(0).head.find("Evil"), std::string::npos);
}

TEST_F(SearchControlFlowTest, AStatusRecordThatCannotBeWrittenDoesNotStopTheSearch)
{
    merchant_.answerSearch(401, "");
    Calls::failAlways("ndd_manager_create", -5);
    EXPECT_EQ(search_->processSearch("freshmart", "milk"), NOT_LOGGED_IN);
    EXPECT_EQ(logged(), (Texts{"searchProduct: Not logged in", "processSearch: updateStatus() failed"}));
    EXPECT_EQ(statusRecord(), std::nullopt);
    EXPECT_EQ(responseFlag(), 1);
}

TEST_F(SearchControlFlowTest, AFlagThatCannotBeSetDoesNotStopTheSearch)
{
    merchant_.answerSearch(401, "");
    Calls::failAlways("vconf_set_int", VCONF_ERROR);
    EXPECT_EQ(search_->processSearch("freshmart", "milk"), NOT_LOGGED_IN);
    EXPECT_EQ(logged(), (Texts{"searchProduct: Not logged in", "processSearch: vconf_set_int() failed"}));
    EXPECT_EQ(statusRecord(), (StatusRecord{0, 0, 0, {}, {}}));
    EXPECT_EQ(responseFlag(), std::nullopt);
}

TEST_F(SearchControlFlowTest, BothFailuresAreLoggedAndAGoodAnswerIsStillOne)
{
    merchant_.answerSearch(200, Products::answer({R"({"name": "Milk"})"}));
    Calls::failAlways("ndd_manager_create", -5);
    Calls::failAlways("vconf_set_int", VCONF_ERROR);
    EXPECT_EQ(search_->processSearch("freshmart", "milk"), FOUND);
    EXPECT_TRUE(holds(logged(), "processSearch: updateStatus() failed"));
    EXPECT_TRUE(holds(logged(), "processSearch: vconf_set_int() failed"));
    EXPECT_EQ(result().list("key_product_names"), Texts{"Milk"});
}

TEST_F(SearchControlFlowTest, TheRecordIsWrittenBeforeTheFlagAndOnceEach)
{
    merchant_.answerSearch(401, "");
    search_->processSearch("freshmart", "milk");
    EXPECT_EQ(Calls::order({"curl_easy_perform", "ndd_manager_create", "vconf_set_int"}),
              (Texts{"curl_easy_perform", "ndd_manager_create", "vconf_set_int"}));
    EXPECT_EQ(Calls::of("vconf_set_int").at(0).arguments, (Texts{"db/nuvex/e-commerce/response", "1"}));
}

TEST_F(SearchControlFlowTest, TheFlagIsSetAgainByEverySearch)
{
    merchant_.answerSearch(500, "");
    search_->processSearch("freshmart", "milk");
    vconf_set_int("db/nuvex/e-commerce/response", 0);
    search_->processSearch("freshmart", "");
    EXPECT_EQ(responseFlag(), 1);
}

TEST_F(SearchControlFlowTest, TheSearchLeavesCartAndViewAsTheyAre)
{
    ASSERT_EQ(DBControl::updateStatus(0, 0, 0, 7, 3), 0);
    merchant_.answerSearch(200, Products::answer({"{}", "{}", "{}"}));
    search_->processSearch("freshmart", "milk");
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 3, 7, 3}));
}

TEST_F(SearchControlFlowTest, AFailedSearchForgetsTheResultOfTheOneBefore)
{
    merchant_.answerSearch(
        200, Products::answer({R"({"name": "Milk", "mbVariants": [{"productVariantRef": "a"}]})"}));
    ASSERT_EQ(search_->processSearch("freshmart", "milk"), FOUND);
    ASSERT_EQ(search_->getVariantRefs(), Texts{"a"});
    ASSERT_EQ(search_->getMerchant(), "freshmart");

    merchant_.answerSearch(500, "");
    EXPECT_EQ(search_->processSearch("cornershop", "tea"), FAILED);
    EXPECT_EQ(search_->getVariantRefs(), Texts());
    EXPECT_EQ(search_->getMerchant(), "cornershop");
    EXPECT_EQ(result().text("key_total_num_of_products"), "0");
}

TEST_F(SearchControlFlowTest, TheFailedStatusOfOneSearchIsNotThatOfTheNext)
{
    merchant_.answerSearch(500, "");
    ASSERT_EQ(search_->processSearch("freshmart", "milk"), FAILED);
    EXPECT_EQ(search_->processSearch("freshmart", ""), NOT_LOGGED_IN);
    merchant_.answerSearch(200, Products::answer({"{}"}));
    ASSERT_EQ(search_->processSearch("freshmart", "milk"), FOUND);
    EXPECT_EQ(search_->processSearch("", "milk"), NOT_LOGGED_IN);
    EXPECT_EQ(statusRecord(), (StatusRecord{0, 0, 0, {}, {}}));
}

TEST_F(SearchControlFlowTest, InitForgetsTheResult)
{
    merchant_.answerSearch(
        200, Products::answer({R"({"name": "Milk", "mbVariants": [{"productVariantRef": "a"}]})"}));
    ASSERT_EQ(search_->processSearch("freshmart", "milk"), FOUND);
    search_->init();
    EXPECT_EQ(search_->getMerchant(), "");
    EXPECT_EQ(search_->getVariantRefs(), Texts());
    const SentMessage message = result();
    EXPECT_EQ(message.text("key_total_num_of_products"), "0");
    EXPECT_EQ(message.lists.size(), 0u);
}

TEST_F(SearchControlFlowTest, InitReturnsWhatWipingThePicturesReturned)
{
    EXPECT_EQ(search_->init(), 0);
    Calls::fail("system", 256);
    EXPECT_EQ(search_->init(), 256);
}

TEST_F(SearchControlFlowTest, TheRequestItselfGivesTheBodyOfAGoodAnswerOnly)
{
    // Before any search there is nothing to ask for.
    EXPECT_EQ(search_->searchProduct(), "");
    EXPECT_EQ(logged(), Texts{"searchProduct: Invalid extra data"});

    merchant_.answerSearch(200, "{\"products\": []}");
    search_->processSearch("freshmart", "milk");
    EXPECT_EQ(search_->searchProduct(), "{\"products\": []}");
    merchant_.answerSearch(403, "{\"products\": [{}]}");
    EXPECT_EQ(search_->searchProduct(), "");
    merchant_.answerSearch(401, "{\"products\": [{}]}");
    EXPECT_EQ(search_->searchProduct(), "");
}

}  // namespace Carvoy
