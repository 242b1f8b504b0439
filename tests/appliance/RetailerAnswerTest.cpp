// What a search is answered with, without and with trouble.
#include "RetailerFixture.h"

#include <chrono>

namespace ApplianceTest {
namespace {

using nlohmann::json;

class ARetailerAnswer : public RetailerFixture {};

TEST_F(ARetailerAnswer, HoldsAllMatchesHoweverFewAreWanted)
{
    const json data = json::parse(search("우유").body).at("data");
    EXPECT_GT(data.at("itemList").size(), 6U);
    EXPECT_EQ(data.at("itemCount"), std::to_string(data.at("itemList").size()));
    EXPECT_EQ(items("~image-404").size(), items("~image-stall").size());
    EXPECT_GE(items("~image-404").size(), 60U);
}

TEST_F(ARetailerAnswer, TellsEverythingInTexts)
{
    const json item = items("유기농 우유").at(0);
    EXPECT_EQ(item.at("itemNm"), "초록들 유기농 우유 900mL");
    EXPECT_EQ(item.at("displayPrc"), "4980");
    EXPECT_EQ(item.at("itemImgUrl"), "http://retailer-api.example/images/organic-whole-milk.jpg");
    EXPECT_EQ(item.at("itemId"), "1000024500411");
    EXPECT_EQ(item.at("benefitGrp1"), json::parse(R"([{"type": "11", "txt": "1,000원 할인"},
                                                      {"type": "A0", "txt": "카드 5% 할인"}])"));
    EXPECT_EQ(item.at("benefitGrp2"), json::parse(R"([{"type": "270"}, {"type": "90"}])"));
}

TEST_F(ARetailerAnswer, HasEmptyListsWhereAProductHasNoBenefits)
{
    const json item = items("바게트").at(0);
    EXPECT_EQ(item.at("benefitGrp1"), json::array());
    EXPECT_EQ(item.at("benefitGrp2"), json::array());
}

TEST_F(ARetailerAnswer, ToAnUnknownThingIsAnEmptyList)
{
    EXPECT_EQ(items("자전거"), json::array());
    EXPECT_EQ(items("우유 ~none"), json::array());
    EXPECT_EQ(json::parse(search("자전거").body).at("data").at("itemCount"), "0");
}

TEST_F(ARetailerAnswer, ComesLateWhenAsked)
{
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(search("우유 ~delay=200ms").status, 200);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(200));
}

TEST_F(ARetailerAnswer, HasTheStatusAskedForWithAnErrorText)
{
    for (const int status : {300, 401, 403, 404, 500, 503, 599}) {
        const Reply reply = search("우유 ~status=" + std::to_string(status));
        EXPECT_EQ(reply.result, CURLE_OK);
        EXPECT_EQ(reply.status, status);
        EXPECT_EQ(messageOf(reply), "asked for by the search term");
    }
    EXPECT_TRUE(json::parse(search("우유 ~status=201").body).contains("data"));
    EXPECT_EQ(search("우유 ~status=204").body, "");
    EXPECT_EQ(search("우유 ~status=503 ~empty").body, "");
}

TEST_F(ARetailerAnswer, BreaksOffHalfWayWhenAsked)
{
    const std::string whole = search("우유").body;
    const Reply reply = search("우유 ~truncate");
    EXPECT_EQ(reply.result, CURLE_PARTIAL_FILE);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, whole.substr(0, whole.size() / 2));
    const Reply bad = search("우유 ~html ~status=502 ~truncate");
    EXPECT_EQ(bad.result, CURLE_PARTIAL_FILE);
    EXPECT_EQ(bad.status, 502);
    EXPECT_EQ(bad.body.substr(0, 9), "<!DOCTYPE");
}

TEST_F(ARetailerAnswer, IsAResetConnectionWhenAsked)
{
    const Reply reply = search("우유 ~reset");
    EXPECT_EQ(reply.result, CURLE_RECV_ERROR);
    EXPECT_EQ(reply.status, 0);
}

TEST_F(ARetailerAnswer, IsNotJsonWhenAsked)
{
    for (const char* word : {"~garbage", "~html", "~empty"}) {
        const Reply reply = search(std::string("우유 ") + word);
        EXPECT_EQ(reply.status, 200);
        EXPECT_FALSE(json::accept(reply.body)) << word;
    }
    EXPECT_EQ(search("~html").contentType, "text/html");
}

TEST_F(ARetailerAnswer, HasMembersOfOddTypesWhenAsked)
{
    const json odd = items("우유 ~odd-types");
    ASSERT_GE(odd.size(), 6U);
    EXPECT_TRUE(odd.at(0).at("displayPrc").is_number());
    EXPECT_TRUE(odd.at(1).at("itemNm").is_null());
    EXPECT_TRUE(odd.at(2).empty());
    EXPECT_TRUE(odd.at(3).at("benefitGrp1").at(0).is_null());
    EXPECT_TRUE(odd.at(4).at("benefitGrp2").at(0).at("type").is_number());
}

TEST_F(ARetailerAnswer, IsNestedDeepWhenAsked)
{
    const std::string body = search("우유 ~deep").body;
    EXPECT_NE(body.find(R"("itemList":)" + std::string(100000, '[') + std::string(100000, ']') + "}}"),
              std::string::npos);
}

TEST_F(ARetailerAnswer, IsOrdinaryJsonPaddedToTheSizeAskedFor)
{
    const Reply reply = search("우유 ~big=3MB");
    EXPECT_EQ(reply.body.size(), 3000000U);
    EXPECT_GT(json::parse(reply.body).at("data").at("itemList").size(), 6U);
}

TEST_F(ARetailerAnswer, NamesATroubleWordThatIsNotKnown)
{
    const Reply reply = search("우유 ~nonsense");
    EXPECT_EQ(reply.status, 400);
    EXPECT_EQ(messageOf(reply).substr(0, 23), "~nonsense is not known;");
}

}  // namespace
}  // namespace ApplianceTest
