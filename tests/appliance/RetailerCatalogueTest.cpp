// The stock that is served, and the search over it.
#include "Catalogue.h"

#include "Pictures.h"
#include "ScratchRoot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>

namespace {

using namespace Appliance::Retailer;

using Codes = std::set<std::string>;

const Catalogue& stock()
{
    static const Catalogue catalogue(RETAILER_CATALOGUE);
    return catalogue;
}

// Of each product's first discount or badge, the one that counts; "" for none.
Codes firstDiscounts()
{
    Codes codes;
    for (const Product& product : stock().products())
        codes.insert(product.discounts.empty() ? "" : product.discounts.front().type);
    return codes;
}

Codes firstBadges()
{
    Codes codes;
    for (const Product& product : stock().products())
        codes.insert(product.badges.empty() ? "" : product.badges.front());
    return codes;
}

Codes without(Codes codes, const Codes& others)
{
    for (const std::string& code : others)
        codes.erase(code);
    return codes;
}

// U+AC00 to U+D7A3 begin with a byte from EA to ED.
bool isKorean(const std::string& name)
{
    return std::any_of(name.begin(), name.end(), [](char byte) {
        const auto value = static_cast<unsigned char>(byte);
        return value >= 0xEA && value <= 0xED;
    });
}

std::string complaintAbout(const std::string& text)
{
    const std::string file = TestSupport::ScratchRoot::file("catalogue-under-test.json");
    std::ofstream(file, std::ios::trunc) << text;
    try {
        const Catalogue catalogue(file);
    } catch (const std::exception& error) {
        return error.what();
    }
    return "";
}

TEST(TheRetailersStock, IsOfSixtyKoreanProductsAndMore)
{
    EXPECT_GE(stock().products().size(), 60U);
    std::set<std::string> ids;
    std::set<std::string> names;
    for (const Product& product : stock().products()) {
        EXPECT_TRUE(isKorean(product.name)) << product.name;
        EXPECT_TRUE(ids.insert(product.id).second) << product.id;
        EXPECT_TRUE(names.insert(product.name).second) << product.name;
    }
}

TEST(TheRetailersStock, HasWonPricesOfEveryLengthFromThreeDigitsToSeven)
{
    std::set<std::size_t> lengths;
    for (const Product& product : stock().products()) {
        EXPECT_GT(product.price, 0);
        EXPECT_EQ(product.price % 10, 0) << product.name;
        lengths.insert(std::to_string(product.price).size());
    }
    EXPECT_EQ(lengths, (std::set<std::size_t>{3, 4, 5, 6, 7}));
}

TEST(TheRetailersStock, HasDiscountsOfEveryKindOfOthersAndProductsWithout)
{
    const Codes known{"10", "11", "30", "60", "A0", "B0", "C0"};
    const Codes found = firstDiscounts();
    EXPECT_EQ(without(known, found), Codes());
    EXPECT_EQ(found.count(""), 1U);
    EXPECT_GE(without(found, known).size(), 3U);
    for (const Product& product : stock().products())
        for (const Discount& discount : product.discounts)
            EXPECT_NE(discount.text, "") << product.name;
}

TEST(TheRetailersStock, HasBadgesOfEveryKindOfOthersAndProductsWithout)
{
    const Codes known{"90", "91", "100", "110", "120", "130", "270"};
    const Codes found = firstBadges();
    EXPECT_EQ(without(known, found), Codes());
    EXPECT_EQ(found.count(""), 1U);
    EXPECT_GE(without(found, known).size(), 3U);
}

TEST(TheRetailersStock, HasAProductWithMoreThanOneDiscountAndBadge)
{
    EXPECT_TRUE(std::any_of(stock().products().begin(), stock().products().end(), [](const Product& product) {
        return product.discounts.size() > 1 && product.badges.size() > 1;
    }));
}

TEST(TheRetailersStock, HasPicturesOfEveryType)
{
    const Appliance::StandIn::Pictures pictures(RETAILER_PICTURES);
    std::set<std::string> types;
    for (const Product& product : stock().products()) {
        ASSERT_TRUE(pictures.find(product.picture)) << product.picture;
        types.insert(pictures.find(product.picture)->contentType);
    }
    EXPECT_EQ(types, (std::set<std::string>{"image/gif", "image/jpeg", "image/png"}));
}

TEST(TheRetailersSearch, FindsWordsAndPartsOfThem)
{
    EXPECT_GE(stock().search("우유").size(), 6U);
    for (const Product* hit : stock().search("우유"))
        EXPECT_NE(hit->name.find("우유"), std::string::npos);
    // Whole words before what is only a part of one.
    EXPECT_EQ(stock().search("우유").front()->name, "초록들 유기농 우유 900mL");
    ASSERT_EQ(stock().search("흰우").size(), 2U);
    EXPECT_EQ(stock().search("라면").size(), 2U);
}

TEST(TheRetailersSearch, WantsEveryWordInAnyOrder)
{
    ASSERT_EQ(stock().search("우유 바나나").size(), 1U);
    EXPECT_EQ(stock().search("우유 바나나").front()->name, "바나나 우유 240mL 4입");
    EXPECT_TRUE(stock().search("우유 라면").empty());
    EXPECT_TRUE(stock().search("자전거").empty());
    EXPECT_EQ(stock().search("").size(), stock().products().size());
}

TEST(ARetailersCatalogueFile, MustBeThereAndComplete)
{
    EXPECT_THROW(Catalogue("/nowhere/at/all"), std::runtime_error);
    const std::string sound = R"({"id": "1", "name": "우유", "price": 990, "picture": "a.png"})";
    EXPECT_EQ(complaintAbout(R"({"products": [)" + sound + "]}"), "");
    for (const char* text :
         {"", "{}", R"({"products": []})", R"({"products": [{}]})",
          R"({"products": [{"id": "1", "name": "우유", "price": "990", "picture": "a.png"}]})",
          R"({"products": [{"id": "1", "name": "우유", "price": 990}]})",
          R"({"products": [{"id": "1", "name": "우유", "price": 990, "picture": "a.png", "badges": [90]}]})",
          R"({"products": [{"id": "1", "name": "우유", "price": 990, "picture": "a.png",
              "discounts": [{"type": "10"}]}]})"})
        EXPECT_NE(complaintAbout(text).find("catalogue-under-test.json is wrong: "), std::string::npos)
            << text;
}

}  // namespace
