// Answers that are valid and unlike what a merchant usually sends: what the UI app gets of them.
#include "ServiceWorld.h"

namespace ServiceTest {

namespace {

using TestSupport::RawMessage;
using Texts = std::vector<std::string>;

const std::string ProductLists[] = {"key_product_names",
                                    "key_product_size_or_weights",
                                    "key_product_discount_percents",
                                    "key_product_prices_before_discount",
                                    "key_product_prices",
                                    "key_product_variant_refs"};

class AnAnswer : public ServiceWorld {
  protected:
    void SetUp() override
    {
        ui = std::make_unique<UiPeer>();
        startService();
    }

    RawMessage resultOf(const std::string& body)
    {
        merchant->answer(Merchant::SearchPath, {200, body});
        search();
        return resultMessage();
    }
};

struct Oddity {
    const char* name;
    const char* products;  // six of them
};

std::ostream& operator<<(std::ostream& stream, const Oddity& oddity)
{
    return stream << oddity.name;
}

class AnAnswerOfOddProducts : public AnAnswer, public testing::WithParamInterface<Oddity> {};

TEST_P(AnAnswerOfOddProducts, LeavesTheirSlotsEmptyWithoutAWordOnStandardError)
{
    const RawMessage result = resultOf("{\"products\": [" + std::string(GetParam().products) + "]}");

    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "6");
    for (const std::string& list : ProductLists)
        EXPECT_EQ(listOf(result, list), Texts(6)) << list;
    EXPECT_EQ(status(), (StatusRecord{1, 1, 6, {}, {}}));
    stopService();
    for (const LogLine& line : log.lines())
        EXPECT_NE(line.function, "parseResult") << line.text();
    EXPECT_EQ(service->errors(), "");
}

const Oddity Oddities[] = {
    {"OfAnotherType", R"([], "x", 7, 1.5, true,
        {"name": ["x"], "imageUrl": {"a": "x"}, "productOptionGroups": {}, "mbVariants": {}})"},
    {"WithMembersOfAnotherType", R"({"name": 7}, {"imageUrl": true}, {"name": false, "imageUrl": 1.5},
        {"productOptionGroups": "x"}, {"mbVariants": 7},
        {"name": {}, "imageUrl": [], "productOptionGroups": 1.5, "mbVariants": "x"})"},
    {"WithOptionsOfAnotherType", R"({"productOptionGroups": [7]}, {"productOptionGroups": [["x"]]},
        {"productOptionGroups": [{"productOptions": {"label": "x"}}]},
        {"productOptionGroups": [{"productOptions": ["x"]}]},
        {"productOptionGroups": [{"productOptions": [{"label": 7}]}]},
        {"productOptionGroups": [{"productOptions": [{"label": ["x"]}]}]})"},
    {"WithVariantsOfAnotherType", R"({"mbVariants": ["x"]}, {"mbVariants": [[]]},
        {"mbVariants": [{"amountMinorUnits": "750"}]},
        {"mbVariants": [{"formerPriceAmountMinorUnits": true}]},
        {"mbVariants": [{"amountMinorUnits": [750], "formerPriceAmountMinorUnits": {}}]},
        {"mbVariants": [{"productVariantRef": 7}]})"},
    {"OfNothing", R"(null, {"productOptionGroups": [null], "mbVariants": [null]},
        {"name": null, "imageUrl": null, "productOptionGroups": null, "mbVariants": null},
        {"productOptionGroups": [{"productOptions": null}]},
        {"productOptionGroups": [{"productOptions": [null]}]},
        {"productOptionGroups": [{"productOptions": [{"label": null}]}], "mbVariants": [
            {"amountMinorUnits": null, "formerPriceAmountMinorUnits": null, "productVariantRef": null}]})"},
    {"WithMembersMissing", R"({}, {"productOptionGroups": [], "mbVariants": []},
        {"productOptionGroups": [{}]}, {"mbVariants": [{}]},
        {"productOptionGroups": [{"productOptions": []}]},
        {"productOptionGroups": [{"productOptions": [{}]}]})"},
};

INSTANTIATE_TEST_SUITE_P(Each, AnAnswerOfOddProducts, testing::ValuesIn(Oddities),
                         [](const auto& oddity) { return oddity.param.name; });

TEST_F(AnAnswer, WithOneOddProductShowsTheOthersInFull)
{
    merchant->answer("/p/good.png", {200, pictureBytes("/p/good.png"), "image/png"});
    const std::string good = answerOf({{"Good Milk", "/p/good.png", "1 gal", 750, 1000, "ref-good"}});
    const std::string list = good.substr(good.find('[') + 1);

    const RawMessage result = resultOf("{\"products\": [{\"name\": 7, \"mbVariants\": null}, " + list);
    ui->confirm(result);

    EXPECT_EQ(listOf(result, "key_product_names"), (Texts{"", "Good Milk"}));
    EXPECT_EQ(listOf(result, "key_product_size_or_weights"), (Texts{"", "1 gal"}));
    EXPECT_EQ(listOf(result, "key_product_discount_percents"), (Texts{"", "Save 25%"}));
    EXPECT_EQ(listOf(result, "key_product_prices_before_discount"), (Texts{"", "$10.0"}));
    EXPECT_EQ(listOf(result, "key_product_prices"), (Texts{"", "$7.50"}));
    EXPECT_EQ(listOf(result, "key_product_variant_refs"), (Texts{"", "ref-good"}));
    EXPECT_EQ(ui->nextPicture().index, "1");
    stopService();
    EXPECT_EQ(service->errors(), "");
}

TEST_F(AnAnswer, OfFiftyMegabytesIsShownLikeAnyOther)
{
    constexpr std::size_t size = 50'000'000;
    stock(threeProducts());
    const std::string body =
        "{\"others\": \"" + std::string(size, 'x') + "\", " + answerOf(threeProducts()).substr(1);

    const RawMessage result = resultOf(body);
    ui->confirm(result);

    EXPECT_EQ(listOf(result, "key_product_names"), (Texts{"Whole Milk", "Oat Milk", "Goat Milk"}));
    EXPECT_EQ(listOf(result, "key_product_prices"), (Texts{"$7.50", "$12.5", ""}));
    for (const char* index : {"0", "1", "2"})
        EXPECT_EQ(ui->nextPicture().index, index);
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    stopService();
    EXPECT_EQ(service->errors(), "");
}

}  // namespace

}  // namespace ServiceTest
