// Each thing that the shop's own client sends, left out or changed, is refused for what it is.
#include "RetailerFixture.h"

namespace ApplianceTest {
namespace {

using nlohmann::ordered_json;

class ARetailerSearch : public RetailerFixture {
  protected:
    Reply postBody(const std::string& body) const { return client().post(searchPath, body); }

    Reply postHeaders(const std::vector<std::string>& headers) const
    {
        HttpClient other = client();
        other.headers = headers;
        return other.post(searchPath, soundBody("우유").dump());
    }

    // The complaint about a body that is sound but for one member.
    std::string complaint(const std::string& part, const std::string& member, const ordered_json& value) const
    {
        ordered_json body = soundBody("우유");
        body[part][member] = value;
        const Reply reply = postBody(body.dump());
        EXPECT_EQ(reply.status, 400) << body;
        return messageOf(reply);
    }
};

TEST_F(ARetailerSearch, ThatIsSoundIsAnswered)
{
    EXPECT_EQ(search("우유").status, 200);
    EXPECT_EQ(search("우유").contentType, "application/json");
}

TEST_F(ARetailerSearch, IsPostedToOnePathOnly)
{
    EXPECT_EQ(client().get(searchPath).status, 405);
    EXPECT_EQ(messageOf(client().get(searchPath)), "only POST is served here");
    const Reply elsewhere = client().post("/api/refrigerator/search", soundBody("우유").dump());
    EXPECT_EQ(elsewhere.status, 405);
    EXPECT_EQ(messageOf(elsewhere), "only GET is served here");
    EXPECT_EQ(client().get("/api/refrigerator/search").status, 404);
}

TEST_F(ARetailerSearch, IsOnItsOwnHostOnly)
{
    HttpClient wrongHost = iconClient();
    wrongHost.headers = soundHeaders();
    const Reply reply = wrongHost.post(searchPath, soundBody("우유").dump());
    EXPECT_EQ(reply.status, 421);
    EXPECT_EQ(messageOf(reply), "this is not on the host retailer-icons.example");
}

TEST_F(ARetailerSearch, NeedsTheUserAgentOfTheShopsClient)
{
    std::vector<std::string> headers = soundHeaders();
    headers[0] = "User-Agent: curl";
    EXPECT_EQ(postHeaders(headers).status, 403);
    EXPECT_EQ(messageOf(postHeaders(headers)), "User-Agent is not \"QMREFAPP/41/emartmallQMR\"");
    headers[0] = "User-Agent:";
    EXPECT_EQ(postHeaders(headers).status, 403);
}

TEST_F(ARetailerSearch, NeedsAJsonContentType)
{
    std::vector<std::string> headers = soundHeaders();
    for (const char* type : {"Content-Type: text/plain", "Content-Type: application/json; charset=utf-8",
                             "Content-Type: application/x-www-form-urlencoded", "Content-Type:"}) {
        headers[1] = type;
        EXPECT_EQ(postHeaders(headers).status, 415) << type;
    }
}

TEST_F(ARetailerSearch, NeedsTheCookieAsItIs)
{
    std::vector<std::string> headers = soundHeaders();
    for (const char* cookie :
         {"Cookie:", "Cookie: MOBIL_APP_NO=41", "Cookie: APP_INF=N|HH_FS; MOBIL_APP_NO=41;"}) {
        headers[2] = cookie;
        EXPECT_EQ(postHeaders(headers).status, 403) << cookie;
    }
    headers.pop_back();
    EXPECT_EQ(messageOf(postHeaders(headers)), "Cookie is not there once");
}

TEST_F(ARetailerSearch, NeedsAJsonObjectWithItsTwoParts)
{
    for (const char* body : {"", "우유", "{", "{\"common\":", "\xFF"})
        EXPECT_EQ(messageOf(postBody(body)), "the body is not JSON") << body;
    for (const char* body : {"[]", "null", "\"common\""})
        EXPECT_EQ(messageOf(postBody(body)), "the body is not an object") << body;
    const ordered_json sound = soundBody("우유");
    const ordered_json turned{{"params", sound.at("params")}, {"common", sound.at("common")}};
    ordered_json longer = sound;
    longer["more"] = 1;
    for (const ordered_json& body : {ordered_json::object(), turned, longer}) {
        EXPECT_EQ(postBody(body.dump()).status, 400);
        EXPECT_EQ(messageOf(postBody(body.dump())),
                  "the body does not have the members common, params in this order");
    }
    EXPECT_EQ(postBody(std::string(20000, '[')).status, 400);
    EXPECT_EQ(messageOf(postBody(R"({"common":[],"params":{}})")), "common is not an object");
}

TEST_F(ARetailerSearch, NeedsTheMembersOfBothPartsInTheirOrder)
{
    for (const char* part : {"common", "params"}) {
        const ordered_json sound = soundBody("우유").at(part);
        for (const auto& member : sound.items()) {
            ordered_json body = soundBody("우유");
            body[part].erase(member.key());
            const std::string message = messageOf(postBody(body.dump()));
            EXPECT_EQ(message.find(part), 0U) << message;
            EXPECT_NE(message.find(member.key()), std::string::npos) << message;
            // At the end now, where only the last one belongs.
            body[part][member.key()] = member.value();
            EXPECT_EQ(postBody(body.dump()).status, body == soundBody("우유") ? 200 : 400) << body;
        }
    }
    EXPECT_EQ(complaint("common", "more", "1"),
              "common does not have the members ts, mobil_app_no, apl_ver, os_cd in this order");
    EXPECT_EQ(complaint("params", "more", "1"),
              "params does not have the members apiVersion, siteNo, query, target, count in this order");
}

TEST_F(ARetailerSearch, NeedsATimeOfFourteenDigits)
{
    for (const char* time : {"", "2026013123595", "202601312359590", "2026013123595x", " 2026013123595"})
        EXPECT_EQ(complaint("common", "ts", time), "ts is not a time of 14 digits") << time;
    EXPECT_EQ(complaint("common", "ts", 20260131235959), "ts is not a text");
}

TEST_F(ARetailerSearch, NeedsTheFixedTexts)
{
    EXPECT_EQ(complaint("common", "mobil_app_no", "42"), "mobil_app_no is not \"41\"");
    EXPECT_EQ(complaint("common", "apl_ver", "1.0"), "apl_ver is not \"1.0.0\"");
    EXPECT_EQ(complaint("common", "os_cd", ""), "os_cd is not \"30\"");
    EXPECT_EQ(complaint("common", "os_cd", 30), "os_cd is not a text");
    EXPECT_EQ(complaint("params", "apiVersion", "2.0.0"), "apiVersion is not \"1.0.0\"");
    EXPECT_EQ(complaint("params", "siteNo", "6002"), "siteNo is not \"6001\"");
    EXPECT_EQ(complaint("params", "target", "item"), "target is not \"mobile_item\"");
}

TEST_F(ARetailerSearch, NeedsAQueryAndACount)
{
    EXPECT_EQ(complaint("params", "query", ""), "query is blank");
    EXPECT_EQ(complaint("params", "query", " \t"), "query is blank");
    EXPECT_EQ(complaint("params", "query", nullptr), "query is not a text");
    for (const ordered_json& count : {ordered_json("6"), ordered_json(0), ordered_json(101), ordered_json(-1),
                                      ordered_json(6.0), ordered_json(nullptr)})
        EXPECT_EQ(complaint("params", "count", count), "count is not a whole number from 1 to 100") << count;
}

TEST_F(ARetailerSearch, MustNotBeTooLong)
{
    const Reply reply = search(std::string(100000, 'a'));
    EXPECT_EQ(reply.status, 413);
    EXPECT_EQ(messageOf(reply), "the body is too long");
}

}  // namespace
}  // namespace ApplianceTest
