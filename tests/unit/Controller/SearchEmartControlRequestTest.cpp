// What the retailer is asked, byte by byte.
#include <gtest/gtest.h>
#include <json-glib/json-glib.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "GLibWatch.h"
#include "JsonReader.h"
#include "SearchEmartControlFixture.h"
#include "SiteValues.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

constexpr const char* TS_BEGIN = "{\"common\":{\"ts\":\"";
constexpr size_t TS_LENGTH = 14;

using Object = std::unique_ptr<JsonObject, decltype(&json_object_unref)>;

std::string textOf(const std::tm& time)
{
    char text[TS_LENGTH + 1];
    strftime(text, sizeof text, "%Y%m%d%H%M%S", &time);
    return text;
}

std::string localTime()
{
    const time_t now = time(nullptr);
    return textOf(*localtime(&now));
}

/** The time in a zone so many seconds east of UTC; asks for no zone. */
std::string timeEast(long seconds)
{
    const time_t there = time(nullptr) + seconds;
    return textOf(*gmtime(&there));
}

/** A time zone for as long as it lives. The process was told of it by its environment only. */
class TimeZone {
  public:
    explicit TimeZone(const char* zone)
    {
        if (const char* before = getenv("TZ"))
            before_ = before;
        setenv("TZ", zone, 1);
    }
    ~TimeZone()
    {
        if (before_)
            setenv("TZ", before_->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

  private:
    std::optional<std::string> before_;
};

class SearchEmartControlRequestTest : public SearchEmartControlFixture {
  protected:
    /** The only request of a search for this term, which fails. */
    ServerRequest requestFor(const std::string& term)
    {
        retailer_.reset();
        retailer_.answerSearch(500, "");
        EXPECT_EQ(search_->processEmartSearch(term), FAILED);
        const std::vector<ServerRequest> requests = retailer_.requests();
        EXPECT_EQ(requests.size(), 1u);
        return requests.empty() ? ServerRequest{} : requests[0];
    }

    /** The query in a request's body, as a JSON parser reads it. */
    static std::string queryOf(const std::string& body)
    {
        JsonParserPtr parser;
        JsonObject* request = nullptr;
        const char* fault = JsonReader::loadObject(parser, body, request);
        EXPECT_EQ(fault, nullptr) << fault;
        JsonObject* params = request ? JsonReader::objectMember(request, "params") : nullptr;
        const char* query = params ? JsonReader::stringMember(params, "query") : nullptr;
        EXPECT_NE(query, nullptr) << body.substr(0, 300);
        return query ? query : "";
    }

    static std::string timestampOf(const std::string& body)
    {
        EXPECT_EQ(body.rfind(TS_BEGIN, 0), 0u) << body;
        return body.substr(strlen(TS_BEGIN), TS_LENGTH);
    }

    /** What follows the time stamp. */
    static std::string restOf(const std::string& body)
    {
        return body.substr(std::min(body.size(), strlen(TS_BEGIN) + TS_LENGTH));
    }

    /** What an operation makes of `params`, which it takes. */
    static std::string textOf(std::pair<char*, gsize> body)
    {
        const std::unique_ptr<char, decltype(&free)> owner(body.first, free);
        EXPECT_EQ(strlen(body.first), body.second);
        return {body.first, body.second};
    }

    /** The object as compact JSON. */
    static std::string textOf(JsonObject* object)
    {
        JsonNode* root = json_node_new(JSON_NODE_OBJECT);
        json_node_take_object(root, object);
        const std::unique_ptr<char, decltype(&g_free)> text(json_to_string(root, FALSE), g_free);
        json_node_free(root);
        return text.get();
    }

    GLibWatch watch_;
};

}  // namespace

TEST_F(SearchEmartControlRequestTest, TheRequestIsAPostWithItsHeadersOnceEach)
{
    const ServerRequest request = requestFor("우유");
    Texts lines;
    std::string rest = request.head;
    for (size_t end; (end = rest.find("\r\n")) != std::string::npos; rest.erase(0, end + 2))
        lines.push_back(rest.substr(0, end));
    EXPECT_EQ(rest, "");
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], "POST /api/refrigerator/search/datas.ssg HTTP/1.1");

    const auto agent = std::find(lines.begin(), lines.end(), "User-Agent: QMREFAPP/41/emartmallQMR");
    const auto type = std::find(lines.begin(), lines.end(), "Content-Type: application/json");
    ASSERT_NE(type, lines.end());
    EXPECT_LT(agent, type);

    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines,
              (Texts{"", "Accept: */*", "Content-Length: " + std::to_string(request.body.size()),
                     "Content-Type: application/json", "Cookie: MOBIL_APP_NO=41; APP_INF=N|HH_FS;",
                     "Host: " CARVOY_RETAILER_API_HOST, "POST /api/refrigerator/search/datas.ssg HTTP/1.1",
                     "User-Agent: QMREFAPP/41/emartmallQMR"}));
}

TEST_F(SearchEmartControlRequestTest, TheBodyHasItsMembersInOrder)
{
    const std::string body = requestFor("milk").body;
    EXPECT_EQ(restOf(body),
              R"(","mobil_app_no":"41","apl_ver":"1.0.0","os_cd":"30"},"params":{"apiVersion":"1.0.0",)"
              R"("siteNo":"6001","query":"milk","target":"mobile_item","count":6}})");
}

TEST_F(SearchEmartControlRequestTest, OnlyTheseOptionsAreSetForTheRequestAndInThisOrder)
{
    requestFor("milk");
    Texts options;
    for (const TestSupport::Call& call : Calls::of("curl_easy_setopt"))
        options.push_back(call.arguments[0]);
    // What the platform adds to find the retailer is the platform's.
    for (const char* platforms : {"CAINFO", "CAPATH", "CONNECT_TO"})
        options.erase(std::remove(options.begin(), options.end(), platforms), options.end());
    EXPECT_EQ(options, (Texts{"HEADERFUNCTION", "HEADERDATA", "WRITEFUNCTION", "WRITEDATA", "VERBOSE",
                              "TIMEOUT", "NOSIGNAL", "COOKIE", "URL", "CUSTOMREQUEST", "POSTFIELDS",
                              "POSTFIELDSIZE", "HTTPHEADER"}));
}

TEST_F(SearchEmartControlRequestTest, TheTimestampIsTheLocalTimeOfTheRequest)
{
    const std::string before = localTime();
    const std::string timestamp = timestampOf(requestFor("milk").body);
    const std::string after = localTime();
    EXPECT_EQ(timestamp.size(), TS_LENGTH);
    EXPECT_TRUE(std::all_of(timestamp.begin(), timestamp.end(), [](unsigned char c) { return isdigit(c); }));
    EXPECT_LE(before, timestamp);
    EXPECT_LE(timestamp, after);
}

TEST_F(SearchEmartControlRequestTest, AnotherTimeZoneCountsFromTheNextRequestOn)
{
    constexpr long HOUR = 3600;
    const std::vector<std::pair<const char*, long>> zones = {
        {"XST-9", 9 * HOUR}, {"YST+11", -11 * HOUR}, {"UTC0", 0}, {"ZST-5:45", 5 * HOUR + 45 * 60}};
    for (const auto& [zone, offset] : zones) {
        const TimeZone here(zone);
        const std::string before = timeEast(offset);
        const std::string timestamp = timestampOf(
            textOf(search_->getRequestBodyJson(REQUEST_SEARCH, search_->getRequestParamSearch())));
        EXPECT_LE(before, timestamp) << zone;
        EXPECT_LE(timestamp, timeEast(offset)) << zone;
    }
}

TEST_F(SearchEmartControlRequestTest, WhatTheUserSaysIsSentAsItIs)
{
    for (const char* term :
         {"우유", "서울우유 1L", "créme", "🥛", "say \"milk\"", "back\\slash", "a/b", "{}", "[]", "null",
          "50% & more", " ", "'", "\t\n\r", "\x01\x02\x1f", "\x7f", "a\u2028b", "\\u0041", "\",\"count\":9"})
        EXPECT_EQ(queryOf(requestFor(term).body), term);
}

TEST_F(SearchEmartControlRequestTest, QuotesAndControlCharactersAreEscaped)
{
    EXPECT_NE(requestFor("a\"b\\c").body.find(R"("query":"a\"b\\c")"), std::string::npos);
    EXPECT_NE(requestFor("a\nb\tc\rd").body.find(R"("query":"a\nb\tc\rd")"), std::string::npos);
    EXPECT_NE(requestFor("\x01\x1e").body.find(R"("query":"\u0001\u001e")"), std::string::npos);
    EXPECT_NE(requestFor("우유").body.find("\"query\":\"우유\""), std::string::npos);
}

TEST_F(SearchEmartControlRequestTest, BytesThatAreNoUtf8HarmNothing)
{
    for (const char* term : {"\xff", "a\xc3", "\xed\xa0\x80", "\xf5\x80"})
        EXPECT_NE(requestFor(term).body.find("\"query\":\"" + std::string(term) + "\""), std::string::npos);
}

TEST_F(SearchEmartControlRequestTest, ALongTermIsSentWhole)
{
    std::string term;
    for (int i = 0; i < 50'000; ++i)
        term += i % 2 ? "유" : "우";
    const ServerRequest request = requestFor(term);
    EXPECT_EQ(queryOf(request.body), term);
    EXPECT_NE(request.head.find("Content-Length: " + std::to_string(request.body.size()) + "\r\n"),
              std::string::npos);
}

TEST_F(SearchEmartControlRequestTest, TheParametersOfASearchTellTermAndCount)
{
    EXPECT_EQ(textOf(search_->getRequestParamSearch()),
              R"({"apiVersion":"1.0.0","siteNo":"6001","query":"","target":"mobile_item","count":0})");
    search_->searchTerm = "우유";
    search_->requestCount = 12;
    EXPECT_EQ(textOf(search_->getRequestParamSearch()),
              R"({"apiVersion":"1.0.0","siteNo":"6001","query":"우유","target":"mobile_item","count":12})");
}

TEST_F(SearchEmartControlRequestTest, TheParametersOfASearchByPictureAreFixed)
{
    search_->searchTerm = "우유";
    EXPECT_EQ(textOf(search_->getRequestParamObjang()),
              R"({"apiVersion":"1.0.0","pagingYn":"N","page":"1","imgSearchYn":"N","siteNo":"6001",)"
              R"("itemImgSize":"320"})");
}

TEST_F(SearchEmartControlRequestTest, BothWaysToABodyAndAllCommandsGiveTheSame)
{
    const std::string expected =
        R"(","mobil_app_no":"41","apl_ver":"1.0.0","os_cd":"30"},"params":{"apiVersion":"1.0.0",)"
        R"("pagingYn":"N","page":"1","imgSearchYn":"N","siteNo":"6001","itemImgSize":"320"}})";
    for (int number : {0, 1}) {
        const auto command = static_cast<_requestCommand>(number);
        EXPECT_EQ(restOf(textOf(search_->getRequestBodyJson(command, search_->getRequestParamObjang()))),
                  expected);
        EXPECT_EQ(restOf(textOf(search_->getRequestBody(command, search_->getRequestParamObjang()))),
                  expected);
    }
}

TEST_F(SearchEmartControlRequestTest, EmptyParametersMakeABody)
{
    EXPECT_EQ(restOf(textOf(search_->getRequestBodyJson(REQUEST_SEARCH, json_object_new()))),
              R"(","mobil_app_no":"41","apl_ver":"1.0.0","os_cd":"30"},"params":{}})");
}

}  // namespace Carvoy
