// Time stamps, prices, and the codes of discounts and badges.
#include "RetailerTexts.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "SiteValues.h"

namespace Carvoy::RetailerTexts {

namespace {

std::tm timeOf(int year, int month, int day, int hour, int minute, int second)
{
    std::tm time{};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    return time;
}

std::string icon(int badge)
{
    return "http://" CARVOY_RETAILER_ICON_HOST "/ui/app/6001/icon/" + std::to_string(badge) + ".png";
}

}  // namespace

TEST(RetailerTextsTest, ATimestampHasFourteenDigitsWithTheYearFirst)
{
    EXPECT_EQ(timestamp(timeOf(2026, 1, 2, 3, 4, 5)), "20260102030405");
    EXPECT_EQ(timestamp(timeOf(2026, 12, 31, 23, 59, 58)), "20261231235958");
    EXPECT_EQ(timestamp(timeOf(2024, 2, 29, 0, 0, 0)), "20240229000000");
    EXPECT_EQ(timestamp(timeOf(2016, 12, 31, 23, 59, 60)), "20161231235960");
    EXPECT_EQ(timestamp(timeOf(1000, 1, 1, 0, 0, 0)), "10000101000000");
    EXPECT_EQ(timestamp(timeOf(9999, 12, 31, 23, 59, 59)), "99991231235959");
    EXPECT_EQ(timestamp(timeOf(999, 1, 1, 0, 0, 0)), " 9990101000000");
    EXPECT_EQ(timestamp(timeOf(12345, 12, 31, 23, 59, 59)), "12341231235959");
}

TEST(RetailerTextsTest, APriceHasACommaBehindEachGroupOfThreeFromTheRight)
{
    const std::vector<std::pair<const char*, const char*>> cases = {{"", "원"},
                                                                    {"1", "1원"},
                                                                    {"12", "12원"},
                                                                    {"123", "123원"},
                                                                    {"1234", "1,234원"},
                                                                    {"12345", "12,345원"},
                                                                    {"123456", "123,456원"},
                                                                    {"1234567", "1,234,567원"},
                                                                    {"12345678", "12,345,678원"},
                                                                    {"123456789", "123,456,789원"},
                                                                    {"1234567890", "1,234,567,890원"},
                                                                    {"990", "990원"},
                                                                    {"1000", "1,000원"},
                                                                    {"12900", "12,900원"},
                                                                    {"1290000", "1,290,000원"},
                                                                    {"000", "000원"},
                                                                    {"0000", "0,000원"}};
    for (const auto& [digits, text] : cases)
        EXPECT_EQ(price(digits), text);
}

TEST(RetailerTextsTest, WhatIsNoDigitIsGroupedLikeOne)
{
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"abc", "abc원"},           {"abcd", "a,bcd원"}, {"-500", "-,500원"},    {"12,900", "12,,900원"},
        {"1 290.0", "1, 29,0.0원"}, {" ", " 원"},        {"\n\t12", "\n,\t12원"}};
    for (const auto& [digits, text] : cases)
        EXPECT_EQ(price(digits), text);
}

TEST(RetailerTextsTest, TheCharactersOfAPriceAreNeverTornApart)
{
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"품절", "품,절원"},          {"가격문의", "가,격,문,의원"}, {"12개", "12,개원"},
        {"약 12900", "약, 12,900원"}, {"😀😀😀😀", "😀,😀😀😀원"},           {"é1000", "é1,000원"}};
    for (const auto& [digits, text] : cases) {
        EXPECT_EQ(price(digits), text);
        EXPECT_TRUE(g_utf8_validate(price(digits).c_str(), -1, nullptr)) << digits;
    }
}

TEST(RetailerTextsTest, AVeryLongPriceIsGroupedAllTheSame)
{
    const std::string text = price(std::string(30'001, '7'));
    EXPECT_EQ(text.size(), 30'001u + 10'000u + std::string("원").size());
    EXPECT_EQ(text.substr(0, 8), "7,777,77");
    EXPECT_EQ(text.find(",,"), std::string::npos);
}

TEST(RetailerTextsTest, AKnownDiscountIsAcceptedHoweverItsNumberIsWritten)
{
    for (const char* type : {"10", "11", "30", "60", "A0", "B0", "C0", "010", "+10", " 10", "\t\n11", "10abc",
                             "10.9", "60 ", "0000030", "11-", "30,10"})
        EXPECT_TRUE(isAcceptedDiscount(type)) << type;
}

TEST(RetailerTextsTest, AnyOtherDiscountIsNotAccepted)
{
    for (const char* type : {"",
                             "0",
                             "1",
                             "3",
                             "6",
                             "9",
                             "12",
                             "20",
                             "29",
                             "31",
                             "40",
                             "50",
                             "59",
                             "61",
                             "70",
                             "90",
                             "100",
                             "101",
                             "110",
                             "300",
                             "600",
                             "-10",
                             "- 10",
                             "+-10",
                             "1 0",
                             "1e1",
                             "0x0A",
                             "0A0",
                             "A",
                             "A0 ",
                             " A0",
                             "a0",
                             "b0",
                             "c0",
                             "A1",
                             "A00",
                             "D0",
                             "AB0",
                             "abc",
                             "x10",
                             "٣٠",
                             "열",
                             "4294967306",
                             "-4294967286",
                             "18446744073709551626",
                             "99999999999999999999999999",
                             "-99999999999999999999999999"})
        EXPECT_FALSE(isAcceptedDiscount(type)) << type;
    EXPECT_FALSE(isAcceptedDiscount(std::string("A0\0", 3)));
}

TEST(RetailerTextsTest, AKnownBadgeHasItsIconUnderItsNumber)
{
    for (int badge : {90, 91, 100, 110, 120, 130, 270})
        EXPECT_EQ(iconUrl(std::to_string(badge)), icon(badge));
}

TEST(RetailerTextsTest, TheIconOfABadgeIsNamedByItsNumberHoweverThatIsWritten)
{
    const std::vector<std::pair<const char*, int>> cases = {
        {"090", 90},    {" 91", 91},       {"+100", 100}, {"110abc", 110},
        {"120.9", 120}, {"00000130", 130}, {"270 ", 270}, {"\t90/../x", 90}};
    for (const auto& [type, badge] : cases)
        EXPECT_EQ(iconUrl(type), icon(badge)) << type;
}

TEST(RetailerTextsTest, AnyOtherBadgeHasNoIcon)
{
    for (const char* type : {"",
                             "0",
                             "9",
                             "10",
                             "11",
                             "27",
                             "89",
                             "92",
                             "99",
                             "101",
                             "109",
                             "111",
                             "119",
                             "121",
                             "129",
                             "131",
                             "140",
                             "269",
                             "271",
                             "900",
                             "2700",
                             "-90",
                             "- 90",
                             "x90",
                             "A0",
                             "9 0",
                             "0x5A",
                             "9e1",
                             "4294967386",
                             "18446744073709551706",
                             "99999999999999999999999999"})
        EXPECT_EQ(iconUrl(type), std::nullopt) << type;
}

}  // namespace Carvoy::RetailerTexts
