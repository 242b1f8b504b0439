// Prices and discounts, as the UI app gets to see them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "GLibWatch.h"
#include "Products.h"
#include "SearchControlFixture.h"

namespace Carvoy {

namespace {

// JSON values in, texts out.
struct PriceCase {
    const char* amount;
    const char* former;
    const char* price;
    const char* priceBefore;
    const char* discount;
};

class SearchControlPriceTest : public SearchControlFixture {
  protected:
    void expect(const std::vector<PriceCase>& cases)
    {
        for (const PriceCase& one : cases)
            expect(one);
    }

    void expect(const PriceCase& one)
    {
        search_->init();
        ASSERT_EQ(search_->parseResult(Products::answer({Products::priced(one.amount, one.former)})), 0);
        const SentMessage message = result();
        const std::string name = std::string(one.amount) + " after " + one.former;
        EXPECT_EQ(message.list("key_product_prices").at(0), one.price) << name;
        EXPECT_EQ(message.list("key_product_prices_before_discount").at(0), one.priceBefore) << name;
        EXPECT_EQ(message.list("key_product_discount_percents").at(0), one.discount) << name;
    }

    GLibWatch watch_;
};

}  // namespace

TEST_F(SearchControlPriceTest, CentsAreNotPadded)
{
    expect({{"1250", "-1", "$12.50", "", ""},
            {"1205", "-1", "$12.5", "", ""},
            {"99", "-1", "$0.99", "", ""},
            {"300", "-1", "$3.0", "", ""},
            {"5", "-1", "$0.5", "", ""},
            {"100", "-1", "$1.0", "", ""},
            {"1", "-1", "$0.1", "", ""},
            {"123456789", "-1", "$1234567.89", "", ""}});
}

TEST_F(SearchControlPriceTest, AReductionIsCutToWholePerCents)
{
    expect({{"750", "1000", "$7.50", "$10.0", "Save 25%"},
            {"500", "999", "$5.0", "$9.99", "Save 49%"},
            {"999", "1000", "$9.99", "$10.0", "Save 0%"},
            {"1", "1000", "$0.1", "$10.0", "Save 99%"},
            {"1", "2147483647", "$0.1", "$21474836.47", "Save 99%"},
            {"1073741824", "2147483647", "$10737418.24", "$21474836.47", "Save 49%"}});
}

TEST_F(SearchControlPriceTest, ThereIsNoDiscountWithoutAReduction)
{
    expect({{"300", "300", "$3.0", "$3.0", ""},
            {"1000", "1000", "$10.0", "$10.0", ""},
            {"1200", "1000", "$12.0", "$10.0", ""},
            {"1200", "-1", "$12.0", "", ""},
            {"1200", "0", "$12.0", "", ""},
            {"1200", "-5000", "$12.0", "", ""}});
}

TEST_F(SearchControlPriceTest, WithoutAPriceTheFormerOneIsStillShown)
{
    expect(
        {{"0", "1000", "", "$10.0", ""}, {"-1", "1000", "", "$10.0", ""}, {"-750", "1000", "", "$10.0", ""}});
}

TEST_F(SearchControlPriceTest, ThePriceOfNothingIsNotShown)
{
    expect({{"0", "0", "", "", ""}, {"-2147483648", "-2147483648", "", "", ""}});
}

TEST_F(SearchControlPriceTest, AnAbsentPriceIsNone)
{
    ASSERT_EQ(
        search_->parseResult(Products::answer(
            {Products::withVariant("\"formerPriceAmountMinorUnits\": 1000, \"productVariantRef\": \"a\""),
             Products::withVariant("\"amountMinorUnits\": 1000, \"productVariantRef\": \"b\""),
             Products::withVariant("\"productVariantRef\": \"c\"")})),
        0);
    const SentMessage message = result();
    EXPECT_EQ(message.list("key_product_prices"), (std::vector<std::string>{"", "$10.0", ""}));
    EXPECT_EQ(message.list("key_product_prices_before_discount"),
              (std::vector<std::string>{"$10.0", "", ""}));
    EXPECT_EQ(message.list("key_product_discount_percents"), std::vector<std::string>(3));
    EXPECT_EQ(message.list("key_product_variant_refs"), (std::vector<std::string>{"a", "b", "c"}));
}

TEST_F(SearchControlPriceTest, ANumberBeyond32BitsKeepsItsLow32Bits)
{
    expect({{"4294968046", "-1", "$7.50", "", ""},
            {"4294967296", "1000", "", "$10.0", ""},
            {"2147483648", "1000", "", "$10.0", ""},
            {"750", "4294968296", "$7.50", "$10.0", "Save 25%"},
            {"9223372036854775807", "1000", "", "$10.0", ""},
            {"-9223372036854775808", "1000", "", "$10.0", ""}});
}

TEST_F(SearchControlPriceTest, AFractionOfACentIsCutOff)
{
    expect({{"750.99", "1000.5", "$7.50", "$10.0", "Save 25%"}, {"0.9", "0.9", "", "", ""}});
}

TEST_F(SearchControlPriceTest, AFractionBeyond64BitsIsNoPrice)
{
    expect({{"1e19", "1e300", "", "", ""}, {"-1e19", "1000", "", "$10.0", ""}});
}

// The parser keeps the low 64 bits, or all of them set; both end in no price here.
TEST_F(SearchControlPriceTest, AnIntegerBeyond64BitsIsNoPrice)
{
    expect({{"9223372036854775808", "1000", "", "$10.0", ""},
            {"18446744073709551616", "1000", "", "$10.0", ""},
            {"123456789012345678901234567890", "1000", "", "$10.0", ""}});
}

}  // namespace Carvoy
