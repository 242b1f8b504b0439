#include "CardView.h"

#include <gtest/gtest.h>

#include "PlainText.h"

namespace {

Ui::CardContent groceries()
{
    Ui::CardContent card;
    card.state = Ui::CardState::Shown;
    card.merchant = "freshmart";
    card.term = "milk";
    card.products = {{"Whole Milk", "1 gal", "", "", "$4.49", "v1", ""},
                     {"Crème fraîche", "8 oz", "Save 10%", "$3.0", "$2.69", "v2", ""},
                     {"牛乳", "1 L", "", "", "$12.5", "v3", ""}};
    return card;
}

Ui::CardContent koreanGroceries()
{
    Ui::CardContent card;
    card.state = Ui::CardState::Shown;
    card.source = Ui::Source::Retailer;
    card.term = "우유";
    card.products.resize(3);
    card.products[0] = {"초록들 유기농 우유 900mL", "", "1,000원 할인", "", "4,980원", "", "", "1", "11", ""};
    card.products[1] = {"Soy Milk", "", "", "", "990원", "", "", "2", "", ""};
    card.products[2] = {"흰우유 1L", "", "1+1", "", "12,345원", "", "", "3", "30", ""};
    return card;
}

class ACardInTheTerminal : public testing::Test {
  protected:
    static void SetUpTestSuite() { Tool::useUtf8(); }
};

TEST_F(ACardInTheTerminal, IsATableThatWideCharactersDoNotBend)
{
    EXPECT_EQ(Tool::cardText(groceries(), {}),
              "“milk” at freshmart: 3 products\n"
              "\n"
              "#  Product        Size   Discount  Before  Price\n"
              "1  Whole Milk     1 gal                    $4.49\n"
              "2  Crème fraîche  8 oz   Save 10%    $3.0  $2.69\n"
              "3  牛乳           1 L                      $12.5\n");
}

TEST_F(ACardInTheTerminal, OfTheRetailerHasTypesInPlaceOfSizes)
{
    EXPECT_EQ(Tool::cardText(koreanGroceries(), {}),
              "“우유” at the retailer: 3 products\n"
              "\n"
              "#  Product                   Type  Discount      Before     Price\n"
              "1  초록들 유기농 우유 900mL  11    1,000원 할인           4,980원\n"
              "2  Soy Milk                                                 990원\n"
              "3  흰우유 1L                 30    1+1                   12,345원\n");
}

TEST_F(ACardInTheTerminal, CutsAWideNameBetweenItsCharacters)
{
    EXPECT_EQ(Tool::cardText(koreanGroceries(), {false, 54}),
              "“우유” at the retailer: 3 products\n"
              "\n"
              "#  Product        Type  Discount      Before     Price\n"
              "1  초록들 유기농  11    1,000원 할인           4,980원\n"
              "2  Soy Milk                                      990원\n"
              "3  흰우유 1L      30    1+1                   12,345원\n");
}

TEST_F(ACardInTheTerminal, CutsTheNameWhereTheTerminalIsNarrow)
{
    EXPECT_EQ(Tool::cardText(groceries(), {false, 44}),
              "“milk” at freshmart: 3 products\n"
              "\n"
              "#  Product    Size   Discount  Before  Price\n"
              "1  Whole Mil  1 gal                    $4.49\n"
              "2  Crème fra  8 oz   Save 10%    $3.0  $2.69\n"
              "3  牛乳       1 L                      $12.5\n");
}

TEST_F(ACardInTheTerminal, WithoutProductsIsItsTitle)
{
    Ui::CardContent card = groceries();
    card.products.clear();
    EXPECT_EQ(Tool::cardText(card, {}), "“milk” at freshmart: 0 products\n");
    card.state = Ui::CardState::Searching;
    EXPECT_EQ(Tool::cardText(card, {}), "“milk” at freshmart: searching\n");
    EXPECT_EQ(Tool::cardText({}, {}), "Nothing searched yet\n");
}

TEST_F(ACardInTheTerminal, CountsASingleProduct)
{
    Ui::CardContent card = groceries();
    card.products.resize(1);
    EXPECT_NE(Tool::cardText(card, {}).find(": 1 product\n"), std::string::npos);
}

TEST_F(ACardInTheTerminal, UsesColourOnlyWhereItIsWanted)
{
    EXPECT_EQ(Tool::cardText(groceries(), {}).find('\x1B'), std::string::npos);
    const std::string coloured = Tool::cardText(groceries(), {true, 100});
    EXPECT_NE(coloured.find("\x1B[1m"), std::string::npos);
    EXPECT_EQ(Appliance::withoutColours(coloured), Tool::cardText(groceries(), {false, 100}));
}

TEST_F(ACardInTheTerminal, CannotBeMovedAboutByControlCharacters)
{
    Ui::CardContent card = groceries();
    card.term = "milk\x1B[2J\r\n";
    card.products[0].name = "Whole\x1B[31mMilk\a";
    const std::string text = Tool::cardText(card, {});
    EXPECT_EQ(text.find('\x1B'), std::string::npos);
    EXPECT_EQ(text.find('\a'), std::string::npos);
    EXPECT_EQ(text.find('\r'), std::string::npos);
}

TEST_F(ACardInTheTerminal, CountsPicturesFromOne)
{
    EXPECT_EQ(Tool::pictureText(0, "/tmp/1.png", {}), "✓ picture 1  /tmp/1.png\n");
    EXPECT_EQ(Tool::missingPictureText(5, "not found", {}), "✗ picture 6  not found\n");
    EXPECT_EQ(Tool::pictureText(0, "/tmp/12.png", {}, Ui::PictureKind::Badge), "✓ badge   1  /tmp/12.png\n");
    EXPECT_EQ(Tool::missingPictureText(5, "not found", {}, Ui::PictureKind::Badge),
              "✗ badge   6  not found\n");
}

}  // namespace
