#include "Card.h"

#include <gtest/gtest.h>

#include "CardJson.h"

namespace {

using Ui::Card;
using Ui::CardState;
using Ui::ProductLists;
using Ui::Source;

ProductLists threeMilks()
{
    return {"freshmart",
            "milk",
            "3",
            {"Whole Milk", "Skim Milk", "Crème fraîche"},
            {"1 gal", "", "8 oz"},
            {"", "Save 10%", ""},
            {"", "$3.0", ""},
            {"$4.49", "$2.69", "$1.5"},
            {"v1", "v2", "v3"}};
}

Card shownCard()
{
    Card card;
    card.startSearch("freshmart", "milk");
    EXPECT_EQ(card.showResult(threeMilks()), std::nullopt);
    return card;
}

ProductLists twoRetailerMilks()
{
    ProductLists lists;
    lists.source = Source::Retailer;
    lists.term = "우유";
    lists.total = "2";
    lists.names = {"흰우유 1L", "초코 우유"};
    lists.discounts = {"1+1", ""};
    lists.discountTypes = {"30", ""};
    lists.formerPrices = {"", ""};
    lists.prices = {"2,850원", "990원"};
    lists.ids = {"1000", "2000"};
    return lists;
}

ProductLists nothingOfNoTerm()
{
    ProductLists lists;
    lists.source = Source::Retailer;
    lists.total = "0";
    return lists;
}

Card shownRetailerCard()
{
    Card card;
    card.startRetailerSearch("우유");
    EXPECT_EQ(card.showResult(twoRetailerMilks()), std::nullopt);
    return card;
}

TEST(ACard, IsEmptyBeforeTheFirstSearch)
{
    const Card card;
    EXPECT_EQ(card.content().state, CardState::Empty);
    EXPECT_EQ(card.content().sequence, 0);
}

TEST(ACard, CountsItsSearches)
{
    Card card;
    card.startSearch("freshmart", "milk");
    card.startSearch("greengrocer", "apple");
    EXPECT_EQ(card.content().sequence, 2);
    EXPECT_EQ(card.content().state, CardState::Searching);
    EXPECT_EQ(card.content().merchant, "greengrocer");
}

TEST(ACard, ShowsTheProductsOfItsSearch)
{
    const Card card = shownCard();
    ASSERT_EQ(card.content().products.size(), 3U);
    EXPECT_EQ(card.content().state, CardState::Shown);
    EXPECT_EQ(card.content().results, 1);
    const Ui::Product& skim = card.content().products[1];
    EXPECT_EQ(skim.name, "Skim Milk");
    EXPECT_EQ(skim.size, "");
    EXPECT_EQ(skim.discount, "Save 10%");
    EXPECT_EQ(skim.formerPrice, "$3.0");
    EXPECT_EQ(skim.price, "$2.69");
    EXPECT_EQ(skim.variantRef, "v2");
    EXPECT_EQ(skim.picture, "");
}

TEST(ACard, ShowsTheRetailersProducts)
{
    const Card card = shownRetailerCard();
    EXPECT_EQ(card.content().source, Source::Retailer);
    EXPECT_EQ(card.content().merchant, "");
    ASSERT_EQ(card.content().products.size(), 2U);
    const Ui::Product& milk = card.content().products[0];
    EXPECT_EQ(milk.name, "흰우유 1L");
    EXPECT_EQ(milk.discount, "1+1");
    EXPECT_EQ(milk.discountType, "30");
    EXPECT_EQ(milk.price, "2,850원");
    EXPECT_EQ(milk.id, "1000");
    EXPECT_EQ(milk.picture, "");
    EXPECT_EQ(milk.badge, "");
}

TEST(ACard, ForgetsTheMerchantWithASearchAtTheRetailer)
{
    Card card = shownCard();
    card.startRetailerSearch("우유");
    EXPECT_EQ(card.content().merchant, "");
    EXPECT_EQ(card.content().sequence, 2);
    EXPECT_TRUE(card.content().products.empty());
}

TEST(ACard, IgnoresListsOfAnotherSourceWhileItsOwnAreAwaited)
{
    Card card;
    card.startRetailerSearch("milk");
    ProductLists merchants = threeMilks();
    merchants.merchant = "";
    EXPECT_EQ(card.showResult(merchants), "it belongs to another search");
    card.startSearch("", "우유");
    EXPECT_EQ(card.showResult(twoRetailerMilks()), "it belongs to another search");
    EXPECT_EQ(card.content().state, CardState::Searching);
}

TEST(ACard, TakesNothingOfNoTermFromTheRetailerAsItsAnswer)
{
    Card card;
    card.startRetailerSearch("우유");
    EXPECT_EQ(card.showResult(nothingOfNoTerm()), std::nullopt);
    EXPECT_EQ(card.content().state, CardState::Shown);
    EXPECT_EQ(card.content().term, "우유");
    EXPECT_TRUE(card.content().products.empty());
}

TEST(ACard, TakesNothingOfNoTermFromNobodyElse)
{
    Card card;
    card.startSearch("freshmart", "milk");
    ProductLists merchants = nothingOfNoTerm();
    merchants.source = Source::Merchant;
    merchants.merchant = "freshmart";
    EXPECT_NE(card.showResult(merchants), std::nullopt);
    EXPECT_NE(card.showResult(nothingOfNoTerm()), std::nullopt);
    card.startRetailerSearch("우유");
    ProductLists some = twoRetailerMilks();
    some.term = "";
    EXPECT_NE(card.showResult(some), std::nullopt);
}

TEST(ACard, TakesNothingOfNoTermForNoEarlierAnswer)
{
    Card card;
    card.startRetailerSearch("두부");
    card.noteAsked(Source::Retailer);
    card.noteAsked(Source::Retailer);
    card.noteAsked(Source::Merchant);
    card.startRetailerSearch("우유");
    card.noteAsked(Source::Retailer);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(card.showResult(nothingOfNoTerm()), "it belongs to another search");
    }
    EXPECT_EQ(card.content().state, CardState::Searching);
    EXPECT_EQ(card.showResult(nothingOfNoTerm()), std::nullopt);
    EXPECT_EQ(card.content().term, "우유");
}

TEST(ACard, CountsOnlyTheAnswersThatItAwaits)
{
    Card card = shownRetailerCard();  // lists that nobody asked for
    card.noteAsked(Source::Retailer);
    card.startRetailerSearch("두부");
    card.noteAsked(Source::Retailer);
    EXPECT_EQ(card.showResult(threeMilks()), "it belongs to another search");
    EXPECT_EQ(card.showResult(nothingOfNoTerm()), "it belongs to another search");
    EXPECT_EQ(card.showResult(nothingOfNoTerm()), std::nullopt);
    card.startRetailerSearch("콩");
    EXPECT_EQ(card.showResult(nothingOfNoTerm()), std::nullopt);
    EXPECT_EQ(card.content().term, "콩");
}

TEST(ACard, ShowsAnEmptyResult)
{
    Card card;
    card.startSearch("freshmart", "unobtainium");
    EXPECT_EQ(card.showResult({"freshmart", "unobtainium", "0", {}, {}, {}, {}, {}, {}}), std::nullopt);
    EXPECT_EQ(card.content().state, CardState::Shown);
    EXPECT_TRUE(card.content().products.empty());
}

TEST(ACard, FillsWhatAShortListLacksWithEmptyTexts)
{
    Card card;
    EXPECT_EQ(card.showResult({"m", "t", "2", {"only one"}, {}, {}, {}, {}, {}}), std::nullopt);
    ASSERT_EQ(card.content().products.size(), 2U);
    EXPECT_EQ(card.content().products[1].name, "");
}

TEST(ACard, IgnoresListsOfAnotherSearchWhileItsOwnIsUnderWay)
{
    Card card;
    card.startSearch("freshmart", "milk");
    card.startSearch("freshmart", "bread");
    EXPECT_NE(card.showResult(threeMilks()), std::nullopt);
    EXPECT_EQ(card.content().state, CardState::Searching);
    EXPECT_EQ(card.content().term, "bread");
}

TEST(ACard, TakesListsOfASearchThatSomebodyElseStarted)
{
    Card card = shownCard();
    EXPECT_EQ(card.showResult({"greengrocer", "apple", "1", {"Gala"}, {}, {}, {}, {}, {}}), std::nullopt);
    EXPECT_EQ(card.content().merchant, "greengrocer");
    EXPECT_EQ(card.content().products[0].name, "Gala");
}

class ATotal : public testing::TestWithParam<const char*> {};

TEST_P(ATotal, ThatIsNoSmallNumberIsIgnored)
{
    Card card = shownCard();
    ProductLists lists = threeMilks();
    lists.total = GetParam();
    EXPECT_NE(card.showResult(lists), std::nullopt);
    EXPECT_EQ(card.content().results, 1);
    EXPECT_EQ(card.content().products.size(), 3U);
}

INSTANTIATE_TEST_SUITE_P(OddTexts, ATotal,
                         testing::Values("", "-1", "+3", " 3", "3 ", "three", "1e3", "0x3", "101",
                                         "99999999999999999999999"));

class APictureNumber : public testing::TestWithParam<const char*> {};

TEST_P(APictureNumber, OutsideTheCardIsIgnored)
{
    Card card = shownCard();
    EXPECT_NE(card.notePicture(GetParam(), "/tmp/1.png"), std::nullopt);
    for (const Ui::Product& product : card.content().products) {
        EXPECT_EQ(product.picture, "");
    }
}

INSTANTIATE_TEST_SUITE_P(OddTexts, APictureNumber,
                         testing::Values("", "3", "-1", "+1", "1.0", " 1", "one", "99999999999999999999999"));

TEST(ACard, NotesAPicture)
{
    Card card = shownCard();
    EXPECT_EQ(card.notePicture("2", "/tmp/3.jpg"), std::nullopt);
    EXPECT_EQ(card.content().products[2].picture, "/tmp/3.jpg");
}

TEST(ACard, NotesBothPicturesOfARetailersProduct)
{
    Card card = shownRetailerCard();
    EXPECT_EQ(card.noteRetailerPicture("1", "0", "/tmp/20.jpg"), std::nullopt);
    EXPECT_EQ(card.noteRetailerPicture("1", "2", "/tmp/22.png"), std::nullopt);
    EXPECT_EQ(card.content().products[1].picture, "/tmp/20.jpg");
    EXPECT_EQ(card.content().products[1].badge, "/tmp/22.png");
    EXPECT_EQ(card.content().products[0].picture, "");
    EXPECT_EQ(card.showResult(twoRetailerMilks()), std::nullopt);
    EXPECT_EQ(card.content().products[1].picture, "/tmp/20.jpg");
    EXPECT_EQ(card.content().products[1].badge, "/tmp/22.png");
}

TEST(ACard, DropsThePicturesOfARetailersProductThatIsNowAnother)
{
    for (auto list : {&ProductLists::ids, &ProductLists::discountTypes}) {
        Card card = shownRetailerCard();
        card.noteRetailerPicture("0", "0", "/tmp/10.jpg");
        card.noteRetailerPicture("0", "2", "/tmp/12.png");
        ProductLists lists = twoRetailerMilks();
        (lists.*list)[0] = "another";
        EXPECT_EQ(card.showResult(lists), std::nullopt);
        EXPECT_EQ(card.content().products[0].picture, "");
        EXPECT_EQ(card.content().products[0].badge, "");
    }
}

class APictureType : public testing::TestWithParam<const char*> {};

TEST_P(APictureType, ThatIsNeitherAPictureNorABadgeIsIgnored)
{
    Card card = shownRetailerCard();
    EXPECT_NE(card.noteRetailerPicture("0", GetParam(), "/tmp/10.png"), std::nullopt);
    EXPECT_EQ(card.content().products[0].picture, "");
    EXPECT_EQ(card.content().products[0].badge, "");
}

INSTANTIATE_TEST_SUITE_P(OddTexts, APictureType,
                         testing::Values("", "1", "3", "-0", "00", "0 ", "02", "zero"));

TEST(ACard, IgnoresBrokenPicturesOfTheRetailer)
{
    Card card = shownRetailerCard();
    EXPECT_NE(card.noteRetailerPicture("2", "0", "/tmp/30.png"), std::nullopt);
    EXPECT_NE(card.noteRetailerPicture("", "2", "/tmp/32.png"), std::nullopt);
    EXPECT_NE(card.noteRetailerPicture("0", "0", ""), std::nullopt);
    EXPECT_NE(card.noteRetailerPicture("0", "2", ""), std::nullopt);
}

TEST(ACard, IgnoresPicturesOfAnotherSource)
{
    Card retailers = shownRetailerCard();
    EXPECT_EQ(retailers.notePicture("0", "/tmp/1.png"), "it belongs to another search");
    EXPECT_EQ(retailers.content().products[0].picture, "");
    Card merchants = shownCard();
    EXPECT_EQ(merchants.noteRetailerPicture("0", "0", "/tmp/10.png"), "it belongs to another search");
    EXPECT_EQ(merchants.content().products[0].picture, "");
}

TEST(ASource, HasOneName)
{
    EXPECT_EQ(Ui::sourceNamed("merchant"), Source::Merchant);
    EXPECT_EQ(Ui::sourceNamed("retailer"), Source::Retailer);
    for (const char* name : {"", "Retailer", "retailers", "freshmart"}) {
        EXPECT_EQ(Ui::sourceNamed(name), std::nullopt) << name;
    }
}

TEST(ACard, IgnoresAPictureWithoutAPath)
{
    Card card = shownCard();
    EXPECT_NE(card.notePicture("2", ""), std::nullopt);
}

TEST(ACard, KeepsItsPicturesWhenTheSameListsComeAgain)
{
    Card card = shownCard();
    card.notePicture("0", "/tmp/1.png");
    EXPECT_EQ(card.showResult(threeMilks()), std::nullopt);
    EXPECT_EQ(card.content().products[0].picture, "/tmp/1.png");
    EXPECT_EQ(card.content().results, 2);
}

TEST(ACard, DropsThePictureOfAProductThatIsNowAnother)
{
    Card card = shownCard();
    card.notePicture("0", "/tmp/1.png");
    ProductLists lists = threeMilks();
    lists.variantRefs[0] = "v9";
    EXPECT_EQ(card.showResult(lists), std::nullopt);
    EXPECT_EQ(card.content().products[0].picture, "");
}

TEST(ACard, DropsItsPicturesWithANewSearch)
{
    Card card = shownCard();
    card.notePicture("0", "/tmp/1.png");
    card.startSearch("freshmart", "milk");
    EXPECT_EQ(card.showResult(threeMilks()), std::nullopt);
    EXPECT_EQ(card.content().products[0].picture, "");
}

TEST(ACard, RemembersOnlyTheNewestMessages)
{
    Card card;
    for (std::size_t i = 0; i < Appliance::MessagesKept + 5; ++i) {
        card.noteReceived({0, "", std::to_string(i), "", {}, ""});
    }
    EXPECT_EQ(card.content().messages.size(), Appliance::MessagesKept);
    EXPECT_EQ(card.content().messages.front().operation, "5");
}

TEST(ACard, IsTheSameAfterItsWayThroughJson)
{
    Card card = shownCard();
    card.notePicture("1", "/tmp/2.gif");
    card.noteReceived({0, "2026-01-02T03:04:05.678Z", "op", "org.example", {{"key", "text"}}, "taken"});
    const nlohmann::json json = Ui::toJson(card.content());
    EXPECT_EQ(json["state"], "shown");
    EXPECT_EQ(json["total"], 3);
    EXPECT_EQ(json["products"][2]["name"], "Crème fraîche");
    EXPECT_EQ(Ui::toJson(Ui::cardFromJson(json)), json);
}

TEST(ACard, OfTheRetailerIsTheSameAfterItsWayThroughJson)
{
    Card card = shownRetailerCard();
    card.noteRetailerPicture("0", "2", "/tmp/12.png");
    const nlohmann::json json = Ui::toJson(card.content());
    EXPECT_EQ(json["source"], "retailer");
    EXPECT_EQ(json["products"][0]["badge"], "/tmp/12.png");
    EXPECT_EQ(json["products"][0]["discountType"], "30");
    EXPECT_EQ(json["products"][1]["id"], "2000");
    EXPECT_EQ(Ui::toJson(Ui::cardFromJson(json)), json);
    nlohmann::json odd = json;
    odd["source"] = "greengrocer";
    EXPECT_THROW(Ui::cardFromJson(odd), std::runtime_error);
    odd = json;
    odd.erase("source");
    EXPECT_THROW(Ui::cardFromJson(odd), nlohmann::json::exception);
}

}  // namespace
