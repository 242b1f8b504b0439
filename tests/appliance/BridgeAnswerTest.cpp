// What a search is answered with, over TLS, without and with trouble.
#include "BridgeFixture.h"

#include <chrono>

namespace ApplianceTest {
namespace {

using nlohmann::json;

class ASearchAnswer : public BridgeFixture {};

TEST_F(ASearchAnswer, HoldsAllMatchesHoweverSmallThePageIs)
{
    const Reply reply = search("milk");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.contentType, "application/json");
    const json answer = json::parse(reply.body);
    EXPECT_GE(answer.at("products").size(), 8U);
    EXPECT_EQ(answer.at("total"), answer.at("products").size());
}

TEST_F(ASearchAnswer, TellsNamePictureSizePricesAndReference)
{
    const json product = products("almond milk").at(0);
    EXPECT_EQ(product.at("name"), "Almond Milk Unsweetened");
    EXPECT_EQ(product.at("imageUrl"), "https://merchant-bridge.example/images/almond-milk-unsweetened.png");
    EXPECT_EQ(product.at("productOptionGroups").at(0).at("productOptions").at(0).at("label"), "64 fl oz");
    const json& variant = product.at("mbVariants").at(0);
    EXPECT_EQ(variant.at("amountMinorUnits"), 375);
    EXPECT_FALSE(variant.contains("formerPriceAmountMinorUnits"));
    EXPECT_EQ(variant.at("productVariantRef"), "FM-1007-1");
}

TEST_F(ASearchAnswer, TellsTheFormerPriceWhereItIsReduced)
{
    const json variant = products("oat milk").at(0).at("mbVariants").at(0);
    EXPECT_EQ(variant.at("amountMinorUnits"), 399);
    EXPECT_EQ(variant.at("formerPriceAmountMinorUnits"), 499);
}

TEST_F(ASearchAnswer, IsThatOfTheMerchantAsked)
{
    EXPECT_EQ(products("hass avocado", "greengrocer").size(), 1U);
    EXPECT_EQ(products("hass avocado", "freshmart").size(), 0U);
}

TEST_F(ASearchAnswer, ToTroubleWordsAloneHoldsEveryProduct)
{
    EXPECT_GT(products("~image-404").size(), 30U);
}

TEST_F(ASearchAnswer, ComesLateWhenAsked)
{
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(search("milk ~delay=200ms").status, 200);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(200));
}

TEST_F(ASearchAnswer, HasTheStatusAskedForWithAnErrorText)
{
    for (const int status : {300, 401, 404, 500, 503, 599}) {
        const Reply reply = search("milk ~status=" + std::to_string(status));
        EXPECT_EQ(reply.result, CURLE_OK);
        EXPECT_EQ(reply.status, status);
        EXPECT_EQ(json::parse(reply.body).at("error").at("status"), status);
    }
    EXPECT_TRUE(json::parse(search("milk ~status=201").body).contains("products"));
}

TEST_F(ASearchAnswer, HasNoBodyWhereTheStatusForbidsOne)
{
    for (const int status : {204, 304}) {
        const Reply reply = search("milk ~status=" + std::to_string(status));
        EXPECT_EQ(reply.result, CURLE_OK);
        EXPECT_EQ(reply.status, status);
        EXPECT_EQ(reply.body, "");
    }
}

TEST_F(ASearchAnswer, BreaksOffHalfWayWhenAsked)
{
    const std::string whole = search("milk").body;
    const Reply reply = search("milk ~truncate");
    EXPECT_NE(reply.result, CURLE_OK);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, whole.substr(0, whole.size() / 2));
}

TEST_F(ASearchAnswer, IsAResetConnectionWhenAsked)
{
    const Reply reply = search("milk ~reset");
    EXPECT_NE(reply.result, CURLE_OK);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.body, "");
}

TEST_F(ASearchAnswer, IsNotJsonWhenAsked)
{
    for (const char* word : {"~garbage", "~html", "~empty"}) {
        const Reply reply = search(std::string("milk ") + word);
        EXPECT_EQ(reply.result, CURLE_OK);
        EXPECT_EQ(reply.status, 200);
        EXPECT_FALSE(json::accept(reply.body)) << word;
    }
    EXPECT_EQ(search("~empty").body, "");
    EXPECT_EQ(search("~html").contentType, "text/html");
}

TEST_F(ASearchAnswer, HasMembersOfOddTypesWhenAsked)
{
    const json odd = products("milk ~odd-types");
    ASSERT_GE(odd.size(), 6U);
    EXPECT_TRUE(odd.at(0).at("name").is_number());
    EXPECT_TRUE(odd.at(1).at("name").is_null());
    EXPECT_TRUE(odd.at(2).empty());
    EXPECT_TRUE(odd.at(4).at("mbVariants").at(0).at("amountMinorUnits").is_string());
}

TEST_F(ASearchAnswer, HasNoProductsWhenAsked)
{
    EXPECT_EQ(products("milk ~none"), json::array());
}

TEST_F(ASearchAnswer, IsNestedDeepWhenAsked)
{
    const Reply reply = search("milk ~deep");
    EXPECT_EQ(reply.status, 200);
    const std::string opening(100000, '[');
    EXPECT_NE(reply.body.find(opening + std::string(100000, ']')), std::string::npos);
}

TEST_F(ASearchAnswer, IsOrdinaryJsonPaddedToTheSizeAskedFor)
{
    const Reply reply = search("milk ~big=3MB");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body.size(), 3000000U);
    EXPECT_GE(json::parse(reply.body).at("products").size(), 8U);
    EXPECT_EQ(search("milk ~big=50MB").body.size(), 50000000U);
}

TEST_F(ASearchAnswer, ThatIsBiggerThanAskedForStaysAsItIs)
{
    EXPECT_EQ(search("milk ~big=1KB").body, search("milk").body);
}

TEST_F(ASearchAnswer, CombinesTroubles)
{
    const Reply reply = search("milk ~delay=10ms ~html ~status=502 ~truncate");
    EXPECT_NE(reply.result, CURLE_OK);
    EXPECT_EQ(reply.status, 502);
    EXPECT_EQ(reply.body.substr(0, 9), "<!DOCTYPE");
}

TEST_F(ASearchAnswer, NamesATroubleWordThatIsNotKnown)
{
    const Reply reply = search("milk ~nonsense=\xFF");
    EXPECT_EQ(reply.status, 400);
    const std::string message = json::parse(reply.body).at("error").at("message");
    EXPECT_EQ(message.substr(0, 10), "~nonsense=");
    EXPECT_NE(message.find("~delay=3s"), std::string::npos);
}

}  // namespace
}  // namespace ApplianceTest
