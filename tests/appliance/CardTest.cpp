#include "Card.h"

#include <gtest/gtest.h>

#include "CardJson.h"

namespace {

using Ui::Card;
using Ui::CardState;
using Ui::ProductLists;

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

}  // namespace
