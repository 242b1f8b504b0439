// What an answer's body becomes, as the UI app gets to see it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "GLibWatch.h"
#include "Products.h"
#include "SearchControlFixture.h"

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

class SearchControlParseTest : public SearchControlFixture {
  protected:
    /** Parses an answer that must be taken, and returns the message that shows it. */
    SentMessage parsed(const std::string& body)
    {
        search_->init();
        EXPECT_EQ(search_->parseResult(body), 0) << body.substr(0, 200);
        return result();
    }

    GLibWatch watch_;
};

}  // namespace

TEST_F(SearchControlParseTest, AWholeProductFillsEverySlot)
{
    const SentMessage message = parsed(R"({"products": [{
        "name": "Organic Whole Milk",
        "imageUrl": "https://merchant-bridge.example/pictures/milk.png",
        "productOptionGroups": [{"productOptions": [{"label": "1 gal"}]}],
        "mbVariants": [{"amountMinorUnits": 750, "formerPriceAmountMinorUnits": 1000,
                        "productVariantRef": "freshmart:milk:1"}]}]})");

    EXPECT_EQ(message.text("key_total_num_of_products"), "1");
    EXPECT_EQ(message.list("key_product_names"), Texts{"Organic Whole Milk"});
    EXPECT_EQ(message.list("key_product_size_or_weights"), Texts{"1 gal"});
    EXPECT_EQ(message.list("key_product_discount_percents"), Texts{"Save 25%"});
    EXPECT_EQ(message.list("key_product_prices_before_discount"), Texts{"$10.0"});
    EXPECT_EQ(message.list("key_product_prices"), Texts{"$7.50"});
    EXPECT_EQ(message.list("key_product_variant_refs"), Texts{"freshmart:milk:1"});
    EXPECT_EQ(search_->getVariantRefs(), Texts{"freshmart:milk:1"});
}

TEST_F(SearchControlParseTest, ProductsKeepTheirOrderAndTheirPlaces)
{
    const SentMessage message =
        parsed(Products::answer({R"({"name": "a"})", Products::priced("100", "-1"), R"({"name": "c"})"}));

    EXPECT_EQ(message.list("key_product_names"), (Texts{"a", "", "c"}));
    EXPECT_EQ(message.list("key_product_prices"), (Texts{"", "$1.0", ""}));
}

TEST_F(SearchControlParseTest, OfTenProductsTheFirstSixAreKeptInEveryList)
{
    Texts products;
    for (int i = 0; i < 10; ++i)
        products.push_back("{\"name\": \"product " + std::to_string(i) + "\"}");
    const SentMessage message = parsed(Products::answer(products));

    EXPECT_EQ(message.text("key_total_num_of_products"), "6");
    EXPECT_EQ(message.list("key_product_names"),
              (Texts{"product 0", "product 1", "product 2", "product 3", "product 4", "product 5"}));
    for (const auto& [key, values] : message.lists)
        EXPECT_EQ(values.size(), 6u) << key;
    EXPECT_EQ(message.lists.size(), 6u);
}

TEST_F(SearchControlParseTest, SixProductsAreAllKept)
{
    const SentMessage message = parsed(Products::answer(Texts(6, "{}")));
    EXPECT_EQ(message.text("key_total_num_of_products"), "6");
    EXPECT_EQ(message.list("key_product_names"), Texts(6));
}

TEST_F(SearchControlParseTest, AProductWithoutVariantsKeepsItsNameAndLabelOnly)
{
    const SentMessage message = parsed(
        R"({"products": [{"name": "Milk", "imageUrl": "https://x.example/a.png",
                          "productOptionGroups": [{"productOptions": [{"label": "1 qt"}]}]}]})");

    EXPECT_EQ(message.list("key_product_names"), Texts{"Milk"});
    EXPECT_EQ(message.list("key_product_size_or_weights"), Texts{"1 qt"});
    EXPECT_EQ(message.list("key_product_prices"), Texts{""});
    EXPECT_EQ(message.list("key_product_prices_before_discount"), Texts{""});
    EXPECT_EQ(message.list("key_product_discount_percents"), Texts{""});
    EXPECT_EQ(message.list("key_product_variant_refs"), Texts{""});
}

TEST_F(SearchControlParseTest, OnlyTheFirstVariantCounts)
{
    const SentMessage message = parsed(
        R"({"products": [{"mbVariants": [{"amountMinorUnits": 100, "productVariantRef": "first"},
                                         {"amountMinorUnits": 200, "productVariantRef": "second",
                                          "formerPriceAmountMinorUnits": 400}]}]})");

    EXPECT_EQ(message.list("key_product_prices"), Texts{"$1.0"});
    EXPECT_EQ(message.list("key_product_variant_refs"), Texts{"first"});
    EXPECT_EQ(message.list("key_product_prices_before_discount"), Texts{""});
}

TEST_F(SearchControlParseTest, OnlyTheFirstOptionOfTheFirstGroupCounts)
{
    const SentMessage message = parsed(
        R"({"products": [{"productOptionGroups": [
                {"productOptions": [{"label": "first"}, {"label": "second"}]},
                {"productOptions": [{"label": "third"}]}]}]})");
    EXPECT_EQ(message.list("key_product_size_or_weights"), Texts{"first"});
}

TEST_F(SearchControlParseTest, ABrokenChainToTheLabelLeavesItsSlotEmpty)
{
    const Texts groups = {"null",
                          "[]",
                          "{}",
                          "[null]",
                          "[{}]",
                          "[[]]",
                          "[\"text\"]",
                          R"([{"productOptions": null}])",
                          R"([{"productOptions": {}}])",
                          R"([{"productOptions": []}])",
                          R"([{"productOptions": [null]}])",
                          R"([{"productOptions": ["label"]}])",
                          R"([{"productOptions": [{}]}])",
                          R"([{}, {"productOptions": [{"label": "second group"}]}])",
                          R"([{"productOptions": [{}, {"label": "second option"}]}])"};
    for (size_t begin = 0; begin < groups.size(); begin += 5) {
        Texts products;
        for (size_t i = begin; i < begin + 5; ++i)
            products.push_back("{\"name\": \"n\", \"productOptionGroups\": " + groups[i] + "}");
        const SentMessage message = parsed(Products::answer(products));
        EXPECT_EQ(message.list("key_product_size_or_weights"), Texts(5)) << begin;
        EXPECT_EQ(message.list("key_product_names"), Texts(5, "n")) << begin;
    }
}

TEST_F(SearchControlParseTest, ABrokenChainToTheVariantLeavesItsSlotsEmpty)
{
    const Texts variants = {"null", "[]", "{}", "[null]", "[[]]", "[null, {\"amountMinorUnits\": 5}]"};
    Texts products;
    for (const std::string& value : variants)
        products.push_back("{\"name\": \"n\", \"mbVariants\": " + value + "}");
    const SentMessage message = parsed(Products::answer(products));

    EXPECT_EQ(message.list("key_product_names"), Texts(6, "n"));
    EXPECT_EQ(message.list("key_product_prices"), Texts(6));
    EXPECT_EQ(message.list("key_product_variant_refs"), Texts(6));
}

TEST_F(SearchControlParseTest, AProductThatIsNoObjectKeepsItsEmptyPlace)
{
    for (const std::string& value : Products::everyValueBut("object")) {
        const SentMessage message = parsed(Products::answer({value, R"({"name": "behind"})"}));
        EXPECT_EQ(message.text("key_total_num_of_products"), "2") << value;
        EXPECT_EQ(message.list("key_product_names"), (Texts{"", "behind"})) << value;
        EXPECT_EQ(message.list("key_product_prices"), Texts(2)) << value;
    }
}

TEST_F(SearchControlParseTest, ATextThatIsOfAnotherTypeLeavesItsSlotEmpty)
{
    for (const std::string& value : Products::everyValueBut("string")) {
        const SentMessage message = parsed(
            "{\"products\": [{\"name\": " + value + ", \"imageUrl\": " + value +
            ", \"productOptionGroups\": [{\"productOptions\": [{\"label\": " + value +
            "}]}], \"mbVariants\": [{\"productVariantRef\": " + value + ", \"amountMinorUnits\": 5}]}]}");
        EXPECT_EQ(message.list("key_product_names"), Texts{""}) << value;
        EXPECT_EQ(message.list("key_product_size_or_weights"), Texts{""}) << value;
        EXPECT_EQ(message.list("key_product_variant_refs"), Texts{""}) << value;
        EXPECT_EQ(message.list("key_product_prices"), Texts{"$0.5"}) << value;
    }
}

TEST_F(SearchControlParseTest, APriceThatIsNoNumberIsNoPrice)
{
    for (const std::string& value : Products::everyValueBut("number")) {
        const SentMessage message = parsed(Products::answer(
            {Products::priced(value, value), Products::priced("5", value), Products::priced(value, "7")}));
        EXPECT_EQ(message.list("key_product_prices"), (Texts{"", "$0.5", ""})) << value;
        EXPECT_EQ(message.list("key_product_prices_before_discount"), (Texts{"", "", "$0.7"})) << value;
        EXPECT_EQ(message.list("key_product_discount_percents"), Texts(3)) << value;
    }
}

TEST_F(SearchControlParseTest, AGroupListThatIsNoArrayLeavesItsSlotEmpty)
{
    for (const std::string& value : Products::everyValueBut("array")) {
        const SentMessage message =
            parsed("{\"products\": [{\"name\": \"n\", \"productOptionGroups\": " + value +
                   ", \"mbVariants\": " + value +
                   "}, {\"productOptionGroups\": [{\"productOptions\": " + value + "}]}]}");
        EXPECT_EQ(message.list("key_product_names"), (Texts{"n", ""})) << value;
        EXPECT_EQ(message.list("key_product_size_or_weights"), Texts(2)) << value;
    }
}

TEST_F(SearchControlParseTest, AnElementThatIsNoObjectLeavesItsSlotEmpty)
{
    for (const std::string& value : Products::everyValueBut("object")) {
        const SentMessage message =
            parsed("{\"products\": [{\"productOptionGroups\": [" + value + "], \"mbVariants\": [" + value +
                   "]}, {\"productOptionGroups\": [{\"productOptions\": [" + value + "]}]}]}");
        EXPECT_EQ(message.list("key_product_size_or_weights"), Texts(2)) << value;
        EXPECT_EQ(message.list("key_product_variant_refs"), Texts(2)) << value;
    }
}

TEST_F(SearchControlParseTest, OtherMembersAreIgnored)
{
    const SentMessage message = parsed(
        R"({"count": 2, "products": [{"brand": {"name": "x"}, "name": "Milk", "label": "y"}], "next": null})");
    EXPECT_EQ(message.list("key_product_names"), Texts{"Milk"});
    EXPECT_EQ(message.list("key_product_size_or_weights"), Texts{""});
}

TEST_F(SearchControlParseTest, TextsArePassedOnInUtf8)
{
    const SentMessage message = parsed(Products::answer(
        {R"({"name": "Cr\u00e8me \ud83e\udd5b"})", "{\"name\": \"\u725b\u4e73 \\\"fresh\\\"\"}"}));
    EXPECT_EQ(message.list("key_product_names"), (Texts{"Cr\u00e8me \U0001F95B", "\u725b\u4e73 \"fresh\""}));
}

TEST_F(SearchControlParseTest, ALongTextIsKeptWhole)
{
    const std::string name(100000, 'm');
    EXPECT_EQ(parsed(Products::answer({"{\"name\": \"" + name + "\"}"})).list("key_product_names"),
              Texts{name});
}

}  // namespace Carvoy
