// What an answer of the retailer is read as, and what is refused.
#include "RetailerAnswer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "Calls.h"
#include "GLibWatch.h"
#include "Items.h"
#include "Products.h"
#include "RepeatedText.h"
#include "SearchFixture.h"
#include "SiteValues.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

constexpr std::size_t LIMIT = 6;

class RetailerAnswerTest : public testing::Test {
  protected:
    RetailerAnswerTest() { Calls::reset(); }
    ~RetailerAnswerTest() override { Calls::reset(); }

    /** The products of an answer that must be taken. */
    static std::vector<RetailerProduct> read(const std::string& body, std::size_t limit = LIMIT)
    {
        std::vector<RetailerProduct> products;
        EXPECT_STREQ(RetailerAnswer::read(body, limit, products), nullptr) << body.substr(0, 100);
        return products;
    }

    /** The only product of an answer with this item. */
    static RetailerProduct product(const std::string& item)
    {
        const std::vector<RetailerProduct> products = read(Items::answer({item}));
        EXPECT_EQ(products.size(), 1u) << item;
        return products.empty() ? RetailerProduct() : products[0];
    }

    static void expectEmpty(const RetailerProduct& product, const std::string& name)
    {
        for (const std::string& text : {product.name, product.imageUrl, product.price, product.id,
                                        product.discountType, product.discountText, product.discountIconUrl})
            EXPECT_EQ(text, "") << name;
    }

    static void expectRefused(const std::string& body, const std::string& message)
    {
        std::vector<RetailerProduct> products;
        EXPECT_STREQ(RetailerAnswer::read(body, LIMIT, products), message.c_str()) << body.substr(0, 100);
        EXPECT_EQ(products.size(), 0u) << body.substr(0, 100);
    }

    GLibWatch watch_;
};

}  // namespace

TEST_F(RetailerAnswerTest, AWholeItemFillsEverySlot)
{
    const RetailerProduct milk = product(R"({
        "itemNm": "우유 1L", "displayPrc": "12900", "itemImgUrl": "http://pictures.example/milk.jpg",
        "itemId": "1000024500411", "benefitGrp1": [{"type": "11", "txt": "1,000원 할인"}],
        "benefitGrp2": [{"type": "270"}], "brandNm": "ignored"})");
    EXPECT_EQ(milk.name, "우유 1L");
    EXPECT_EQ(milk.price, "12,900원");
    EXPECT_EQ(milk.imageUrl, "http://pictures.example/milk.jpg");
    EXPECT_EQ(milk.id, "1000024500411");
    EXPECT_EQ(milk.discountType, "11");
    EXPECT_EQ(milk.discountText, "1,000원 할인");
    EXPECT_EQ(milk.discountIconUrl, "http://" CARVOY_RETAILER_ICON_HOST "/ui/app/6001/icon/270.png");
}

TEST_F(RetailerAnswerTest, WhatAnItemDoesNotHaveIsEmpty)
{
    expectEmpty(product("{}"), "{}");
    EXPECT_EQ(product(R"({"itemNm": "a"})").name, "a");
    EXPECT_EQ(product(R"({"displayPrc": "1"})").price, "1원");
    EXPECT_EQ(product(R"({"itemImgUrl": "u"})").imageUrl, "u");
    EXPECT_EQ(product(R"({"itemId": "i"})").id, "i");
}

TEST_F(RetailerAnswerTest, WhatIsOfAnotherTypeIsEmpty)
{
    for (const std::string& value : Products::everyValueBut("string")) {
        for (const char* name : {"itemNm", "displayPrc", "itemImgUrl", "itemId"})
            expectEmpty(product("{\"" + std::string(name) + "\": " + value + "}"), name + value);
    }
    for (const std::string& value : Products::everyValueBut("array")) {
        for (const char* name : {"benefitGrp1", "benefitGrp2"})
            expectEmpty(product("{\"" + std::string(name) + "\": " + value + "}"), name + value);
    }
    for (const std::string& value : Products::everyValueBut("object")) {
        for (const char* name : {"benefitGrp1", "benefitGrp2"})
            expectEmpty(product("{\"" + std::string(name) + "\": [" + value + "]}"), name + value);
    }
}

TEST_F(RetailerAnswerTest, AnEmptyPriceStillHasItsUnit)
{
    EXPECT_EQ(product(R"({"displayPrc": ""})").price, "원");
}

TEST_F(RetailerAnswerTest, APriceIsReadOutOfItsEscapes)
{
    EXPECT_EQ(product(R"({"displayPrc": "\u0031\u0032900"})").price, "12,900원");
    EXPECT_EQ(product(R"({"displayPrc": "\uac00\uaca9\ubb38\uc758"})").price, "가,격,문,의원");
}

TEST_F(RetailerAnswerTest, ADiscountIsKeptWithItsTextIfItIsAccepted)
{
    for (const char* type : {"10", "11", "30", "60", "A0", "B0", "C0", "10abc", " 10"}) {
        const RetailerProduct found =
            product("{\"benefitGrp1\": [{\"type\": \"" + std::string(type) + "\", \"txt\": \"할인\"}]}");
        EXPECT_EQ(found.discountType, type);
        EXPECT_EQ(found.discountText, "할인") << type;
    }
    for (const char* type : {"20", "a0", "A0 ", "-10", "", "0", "270"})
        expectEmpty(
            product("{\"benefitGrp1\": [{\"type\": \"" + std::string(type) + "\", \"txt\": \"할인\"}]}"),
            type);
}

TEST_F(RetailerAnswerTest, ATypeThatIsNoTextIsNoType)
{
    for (const std::string& value : Products::everyValueBut("string"))
        expectEmpty(product("{\"benefitGrp1\": [{\"type\": " + value +
                            ", \"txt\": \"x\"}], \"benefitGrp2\": [{\"type\": " + value + "}]}"),
                    value);
    expectEmpty(product(R"({"benefitGrp1": [{"type": 10, "txt": "x"}], "benefitGrp2": [{"type": 90}]})"),
                "10");
    expectEmpty(product(R"({"benefitGrp1": [{"txt": "x"}], "benefitGrp2": [{"txt": "x"}]})"), "no type");
}

TEST_F(RetailerAnswerTest, ADiscountWithoutATextKeepsItsType)
{
    EXPECT_EQ(product(R"({"benefitGrp1": [{"type": "B0"}]})").discountType, "B0");
    EXPECT_EQ(product(R"({"benefitGrp1": [{"type": "B0"}]})").discountText, "");
    for (const std::string& value : Products::everyValueBut("string")) {
        const RetailerProduct found =
            product("{\"benefitGrp1\": [{\"type\": \"B0\", \"txt\": " + value + "}]}");
        EXPECT_EQ(found.discountType, "B0") << value;
        EXPECT_EQ(found.discountText, "") << value;
    }
}

TEST_F(RetailerAnswerTest, ABadgeHasAnIconIfItIsAccepted)
{
    const std::string icons = "http://" CARVOY_RETAILER_ICON_HOST "/ui/app/6001/icon/";
    for (const char* type : {"90", "91", "100", "110", "120", "130", "270"})
        EXPECT_EQ(product("{\"benefitGrp2\": [{\"type\": \"" + std::string(type) + "\"}]}").discountIconUrl,
                  icons + type + ".png");
    EXPECT_EQ(product(R"({"benefitGrp2": [{"type": "091x"}]})").discountIconUrl, icons + "91.png");
    for (const char* type : {"92", "10", "A0", "", "0", "-90", "4294967386"})
        expectEmpty(product("{\"benefitGrp2\": [{\"type\": \"" + std::string(type) + "\"}]}"), type);
}

TEST_F(RetailerAnswerTest, OfDiscountsAndBadgesOnlyTheFirstCounts)
{
    expectEmpty(product(R"({"benefitGrp1": [{"type": "20"}, {"type": "10", "txt": "x"}],
                            "benefitGrp2": [{"type": "92"}, {"type": "90"}]})"),
                "second of two");
    const RetailerProduct found = product(R"({"benefitGrp1": [{"type": "10"}, {"type": "11", "txt": "x"}],
                                              "benefitGrp2": [{"type": "90"}, {"type": "91"}]})");
    EXPECT_EQ(found.discountType, "10");
    EXPECT_EQ(found.discountText, "");
    EXPECT_NE(found.discountIconUrl.find("/90.png"), std::string::npos);
}

TEST_F(RetailerAnswerTest, DiscountAndBadgeAreNotMistakenForEachOther)
{
    expectEmpty(product(R"({"benefitGrp1": [{"type": "90", "txt": "x"}], "benefitGrp2": [{"type": "10"}]})"),
                "other way round");
}

TEST_F(RetailerAnswerTest, ItemsKeepTheirOrderAndTheirPlaces)
{
    const std::vector<RetailerProduct> products =
        read(Items::answer({R"({"itemNm": "a"})", "null", R"({"itemNm": "c"})", "[]", "\"d\"", "7"}));
    ASSERT_EQ(products.size(), 6u);
    EXPECT_EQ(products[0].name, "a");
    EXPECT_EQ(products[2].name, "c");
    for (size_t i : {1, 3, 4, 5})
        expectEmpty(products[i], std::to_string(i));
}

TEST_F(RetailerAnswerTest, ItemsBeyondTheLimitAreLeftOut)
{
    Texts items;
    for (int i = 0; i < 10; ++i)
        items.push_back("{\"itemNm\": \"" + std::to_string(i) + "\"}");
    for (std::size_t limit : {0u, 1u, 6u, 9u, 10u, 11u}) {
        const std::vector<RetailerProduct> products = read(Items::answer(items), limit);
        ASSERT_EQ(products.size(), std::min<std::size_t>(limit, 10));
        for (std::size_t i = 0; i < products.size(); ++i)
            EXPECT_EQ(products[i].name, std::to_string(i));
    }
}

TEST_F(RetailerAnswerTest, TheCountOfAllHitsIsLoggedIfItIsAText)
{
    read(R"({"data": {"itemCount": "1234", "itemList": [{}]}})");
    EXPECT_EQ(logged(), Texts{"findItems: itemCount: 1234"});
    EXPECT_EQ(loggedErrors(), Texts());

    // It is logged before the list is looked at, and does not count for anything.
    expectRefused(R"({"data": {"itemCount": "없음 %s%n"}})", "no member: itemList");
    EXPECT_EQ(logged().back(), "findItems: itemCount: 없음 %s%n");

    Calls::reset();
    for (const std::string& value : Products::everyValueBut("string"))
        EXPECT_EQ(read("{\"data\": {\"itemCount\": " + value + ", \"itemList\": [{}]}}").size(), 1u);
    read(R"({"data": {"itemList": [{}]}})");
    EXPECT_EQ(logged(), Texts());
}

TEST_F(RetailerAnswerTest, WithoutAParserNothingIsRead)
{
    Calls::fail("json_parser_new", ENOMEM);
    expectRefused(Items::answer({"{}"}), "Couldn't create json parser");
}

TEST_F(RetailerAnswerTest, WhatIsNotJsonIsRefused)
{
    for (const char* body :
         {"<html>", "우유", "{", "{\"data\": {\"itemList\": [{}]}", "{\"data\": {\"itemList\": [{}]}}}",
          "{\"data\": {\"itemList\": [{},]}}", "{data: {}}", "\""})
        expectRefused(body, "json_parser_load_from_data() failed");
}

TEST_F(RetailerAnswerTest, AnAnswerWithoutAValueHasNoRoot)
{
    for (const char* body : {"", " ", "\r\n\t \n", "/* nothing */"})
        expectRefused(body, "json_parser_get_root() failed");
}

TEST_F(RetailerAnswerTest, ARootThatIsNoObjectIsRefused)
{
    for (const char* body :
         {"[]", R"([{"data": {"itemList": [{}]}}])", "\"data\"", "1", "1.5", "true", "null"})
        expectRefused(body, "Invalid json type");
}

TEST_F(RetailerAnswerTest, ARootWhoseObjectCannotBeHadIsRefused)
{
    Calls::fail("json_node_get_object", 0);
    expectRefused(Items::answer({"{}"}), "json_node_get_object() failed");
}

TEST_F(RetailerAnswerTest, AnObjectWithoutDataIsRefused)
{
    for (const char* body :
         {"{}", R"({"Data": {}})", R"({"result": {"data": {"itemList": [{}]}}})", R"({"itemList": [{}]})"})
        expectRefused(body, "no member: data");
}

TEST_F(RetailerAnswerTest, DataThatIsNoObjectIsRefused)
{
    for (const std::string& value : Products::everyValueBut("object"))
        expectRefused("{\"data\": " + value + "}", "json_node_get_object_member() failed");
}

TEST_F(RetailerAnswerTest, DataWithoutAListIsRefused)
{
    for (const char* data : {"{}", R"({"itemCount": "0"})", R"({"ItemList": [{}]})", R"({"itemlist": [{}]})"})
        expectRefused("{\"data\": " + std::string(data) + ", \"itemList\": [{}]}", "no member: itemList");
}

TEST_F(RetailerAnswerTest, AListThatIsNoArrayIsRefused)
{
    for (const std::string& value : Products::everyValueBut("array"))
        expectRefused("{\"data\": {\"itemList\": " + value + "}}", "json_object_get_array_member() failed");
}

TEST_F(RetailerAnswerTest, AnEmptyListIsRefused)
{
    expectRefused(R"({"data": {"itemList": []}})", "empty json array");
    expectRefused(R"({"data": {"itemCount": "7", "itemList": [ ]}})", "empty json array");
}

TEST_F(RetailerAnswerTest, OfTwoMembersOfOneNameTheLastCounts)
{
    EXPECT_EQ(product(R"({"itemNm": "a", "itemNm": "b"})").name, "b");
    expectRefused(R"({"data": {"itemList": [{}]}, "data": {}})", "no member: itemList");
}

TEST_F(RetailerAnswerTest, InvalidUtf8IsRefused)
{
    for (const char* bytes : {"\xff", "\xc3", "\xe2\x82", "\xed\xa0\x80", "\xc0\xaf", "\xf5\x80\x80\x80"})
        expectRefused(Items::answer({std::string("{\"itemNm\": \"") + bytes + "\"}"}),
                      "json_parser_load_from_data() failed");
}

TEST_F(RetailerAnswerTest, AZeroByteIsRefused)
{
    const std::string zero(1, '\0');
    const std::string whole = Items::answer({"{}"});
    for (const std::string& body :
         {zero, zero + whole, whole + zero, Items::answer({"{\"itemNm\": \"a" + zero + "b\"}"})})
        expectRefused(body, "json_parser_load_from_data() failed");
}

TEST_F(RetailerAnswerTest, AnAnswerNestedTooDeepIsRefused)
{
    for (const std::string& body :
         {repeat("[", 100'000) + repeat("]", 100'000),
          repeat("{\"data\":", 100'000) + "1" + repeat("}", 100'000), repeat("[", 100'000),
          Items::answer({repeat("[", 100'000) + repeat("]", 100'000)}),
          // The answer, its data and its list are three of the levels.
          Items::answer({repeat("[", 1022) + repeat("]", 1022)})})
        expectRefused(body, "json_parser_load_from_data() failed");
    EXPECT_EQ(read(Items::answer({repeat("[", 1021) + repeat("]", 1021), "{}"})).size(), 2u);
}

TEST_F(RetailerAnswerTest, AHugeAnswerIsRead)
{
    const std::string item = "{\"itemNm\": \"Milk\", \"text\": \"" + std::string(1000, 'x') + "\"}, ";
    const std::string body =
        "{\"data\": {\"itemList\": [" + repeat(item, 10'000) + "{}], \"itemCount\": \"10001\"}}";
    const std::vector<RetailerProduct> products = read(body);
    ASSERT_EQ(products.size(), LIMIT);
    for (const RetailerProduct& milk : products)
        EXPECT_EQ(milk.name, "Milk");
}

TEST_F(RetailerAnswerTest, TextsOfAMegabyteAreReadWhole)
{
    const std::string text(1024 * 1024, '9');
    const RetailerProduct found = product("{\"itemNm\": \"" + text + "\", \"displayPrc\": \"" + text +
                                          "\", \"benefitGrp1\": [{\"type\": \"" + text +
                                          "\"}], \"benefitGrp2\": [{\"type\": \"" + text + "\"}]}");
    EXPECT_EQ(found.name, text);
    EXPECT_EQ(found.price.substr(0, 9), "9,999,999");
    EXPECT_EQ(found.discountType, "");
    EXPECT_EQ(found.discountIconUrl, "");
}

}  // namespace Carvoy
