#include "Shop.h"

#include <gtest/gtest.h>

#include "ShopJson.h"

namespace {

using Partner::Page;
using Partner::Shop;

Shop showing(const std::string& variantRef)
{
    Shop shop;
    shop.showProduct({"freshmart", variantRef});
    return shop;
}

TEST(AShop, ShowsOneProductAtATime)
{
    Shop shop = showing("v1");
    EXPECT_EQ(shop.showProduct({"greengrocer", "v2"}), "");
    EXPECT_EQ(shop.content().page, Page::Product);
    EXPECT_EQ(shop.content().product.merchant, "greengrocer");
    EXPECT_EQ(shop.content().product.variantRef, "v2");
}

TEST(AShop, KeepsItsPageWhereNoProductIsNamed)
{
    Shop shop = showing("v1");
    EXPECT_NE(shop.showProduct({"", "v2"}), "");
    EXPECT_NE(shop.showProduct({"freshmart", ""}), "");
    EXPECT_EQ(shop.content().product.variantRef, "v1");
}

TEST(AShop, CountsAProductThatIsAddedAgain)
{
    Shop shop = showing("v1");
    EXPECT_EQ(shop.addToCart(), "");
    EXPECT_EQ(shop.addToCart(), "");
    ASSERT_EQ(shop.content().cart.size(), 1U);
    EXPECT_EQ(shop.content().cart[0].quantity, 2);
}

TEST(AShop, TellsTheSameReferenceOfTwoMerchantsApart)
{
    Shop shop = showing("v1");
    shop.addToCart();
    shop.showProduct({"greengrocer", "v1"});
    shop.addToCart();
    EXPECT_EQ(shop.content().cart.size(), 2U);
}

TEST(AShop, AddsOnlyWhatItShows)
{
    Shop shop;
    EXPECT_NE(shop.addToCart(), "");
    shop = showing("v1");
    shop.showCart();
    EXPECT_NE(shop.addToCart(), "");
    shop.checkOut();
    EXPECT_NE(shop.addToCart(), "");
    EXPECT_TRUE(shop.content().cart.empty());
}

TEST(AShop, ForgetsTheProductWithItsPage)
{
    Shop shop = showing("v1");
    shop.checkOut();
    EXPECT_EQ(shop.content().page, Page::CheckOut);
    EXPECT_EQ(shop.content().product.variantRef, "");
}

TEST(AShop, HasACartThatCanBeFull)
{
    Shop shop;
    for (std::size_t i = 0; i < Shop::CartLines; ++i) {
        shop.showProduct({"freshmart", std::to_string(i)});
        EXPECT_EQ(shop.addToCart(), "");
    }
    EXPECT_EQ(shop.addToCart(), "");
    shop.showProduct({"freshmart", "one more"});
    EXPECT_EQ(shop.addToCart(), "the cart is full");
    EXPECT_EQ(shop.content().cart.size(), Shop::CartLines);
}

TEST(AShop, IsTheSameAfterItsWayThroughJson)
{
    Shop shop = showing("v1");
    shop.addToCart();
    shop.noteReceived({0, "2026-01-02T03:04:05.678Z", "op", "org.example", {{"key", "text"}}, "taken"});
    const nlohmann::json json = Partner::toJson(shop.content());
    EXPECT_EQ(json["page"], "product");
    EXPECT_EQ(json["product"]["variantRef"], "v1");
    EXPECT_EQ(json["cart"][0]["quantity"], 1);
    EXPECT_EQ(Partner::toJson(Partner::shopFromJson(json)), json);
}

// The JSON of a shop, but for what the patch puts in its place.
nlohmann::json damaged(const char* patch)
{
    Shop shop = showing("v1");
    shop.addToCart();
    shop.noteReceived({0, "", "op", "org.example", {}, "taken"});
    nlohmann::json json = Partner::toJson(shop.content());
    const nlohmann::json changes = nlohmann::json::parse(patch);
    for (const auto& [path, value] : changes.items()) {
        json[nlohmann::json::json_pointer(path)] = value;
    }
    return json;
}

TEST(AShop, IsNotReadFromWhatItIsNeverWrittenAs)
{
    EXPECT_NO_THROW(Partner::shopFromJson(damaged("{}")));
    for (const char* patch : {R"({"/page": "prodcut"})", R"({"/page": 1})", R"({"/cart/0/quantity": 0})",
                              R"({"/cart/0/quantity": 4294967297})", R"({"/cart/0/quantity": 1.5})",
                              R"({"/messages/0/number": -1})", R"({"/messages/0/number": 1e20})",
                              R"({"/messages/0/extras": []})", R"({"/other": 1})"}) {
        EXPECT_ANY_THROW(Partner::shopFromJson(damaged(patch))) << patch;
    }
    EXPECT_ANY_THROW(Partner::shopFromJson({}));
}

}  // namespace
