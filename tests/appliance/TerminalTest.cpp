#include "Terminal.h"

#include <gtest/gtest.h>

#include "PlainText.h"

namespace {

TEST(PrintableText, LosesItsColours)
{
    EXPECT_EQ(Appliance::withoutColours("\x1B[32m[1] a.cpp: f(2) > done\x1B[0m"), "[1] a.cpp: f(2) > done");
    EXPECT_EQ(Appliance::withoutColours("\x1B[1;31mred\x1B[m"), "red");
}

TEST(PrintableText, HasNoControlCharacters)
{
    EXPECT_EQ(Appliance::printable("a\tb\nc\x7F"), "a\uFFFDb\uFFFDc\uFFFD");
    EXPECT_EQ(Appliance::printable("\xC2\x9B"
                                   "2J"),
              "\uFFFD2J");
}

TEST(PrintableText, KeepsItsUtf8)
{
    EXPECT_EQ(Appliance::printable("Jalapeño 牛乳 \xC2\xA0"), "Jalapeño 牛乳 \xC2\xA0");
    EXPECT_EQ(Appliance::printable(""), "");
}

TEST(PrintableText, KeepsColoursAndNothingElseForATerminal)
{
    EXPECT_EQ(Appliance::printableWithColours("\x1B[31mred\x1B[0m\x1B[2J"), "\x1B[31mred\x1B[0m\uFFFD[2J");
}

TEST(AStyle, ColoursNothingUnlessItIsToldTo)
{
    EXPECT_EQ(Tool::Style{}.red("x"), "x");
    EXPECT_EQ((Tool::Style{true, 0}).red("x"), "\x1B[31mx\x1B[0m");
}

}  // namespace
