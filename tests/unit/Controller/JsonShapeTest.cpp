// What is told of a text without parsing it. How deep one may be: JsonNestingTest; what is then loaded:
// JsonReaderTest.
#include "JsonShape.h"

#include <gtest/gtest.h>

#include <string>

#include "RepeatedText.h"

namespace Carvoy {

namespace {

constexpr int LIMIT = 1024;

bool isFit(const std::string& text)
{
    return JsonShape::isFitForParser(text);
}

}  // namespace

TEST(JsonShapeTest, WhatIsUnfinishedIsForTheParserToRefuse)
{
    for (const char* text : {"", " ", "[", "{\"a\":", "\"", "[\"", "[\"\\", "\"\\u", "[1,", "x", "v", "va",
                             "var", "var a", "var a =", "\xEF\xBB\xBF", "\xEF\xBB\xBFvar"})
        EXPECT_TRUE(isFit(text)) << text;
}

TEST(JsonShapeTest, WhatIsNoValueIsForTheParserToRefuse)
{
    for (const char* text : {"1 2", "\"a\" \"b\"", "null null", "[1 2]", "{\"a\" 1}", "{1: 2}", "[}", "{]",
                             "1; 2", "x = y", "[=]", "variable = 1", "var var = 1", "\\", "\\\"", "[\\]",
                             "[\"\\x\"]", "var a = {} = 1", "[var a = {}]"})
        EXPECT_TRUE(isFit(text)) << text;
}

TEST(JsonShapeTest, ABracketTooManyIsUnfitWhereverItStands)
{
    for (const char* text : {"]", "}", " ]", "1]", "[]]", "{}}", "[[]}]", "\"\"]", "\xEF\xBB\xBF]", "/ /]",
                             "/ ] /]", "'']", "var a = ]", "var a = []]", "[]];"})
        EXPECT_FALSE(isFit(text)) << text;
}

TEST(JsonShapeTest, ASemicolonIsUnfitBetweenBracketsOnly)
{
    for (const char* text : {"[;", "{;", "[[];", "[1;]", "/ /[;", "[/ /;", "['';", "{\"a\";"})
        EXPECT_FALSE(isFit(text)) << text;
    for (const char* text : {";", "[];", "\"[;\"", "[\";\"]", "[';']", "[/;/]", "/[;/", "[\"\\\";\"]"})
        EXPECT_TRUE(isFit(text)) << text;
}

TEST(JsonShapeTest, AnAssignmentsNameHoldsNeitherTextsNorBrackets)
{
    for (const char* name : {"\"\"", "''", "[", "]", "{", "}", ";", "a []", "a / / {}", "/=/ a ;"})
        EXPECT_FALSE(isFit(std::string("var ") + name + " = 1")) << name;
    for (const char* name : {"a", "", "a b", "\\", "1,2:3", "/ [ ] ; \" ' = /", "a /=/", "var a"})
        EXPECT_TRUE(isFit(std::string("var ") + name + " = {}")) << name;
    // Where a value is, there is no name.
    EXPECT_FALSE(isFit("1 var a = []"));
    EXPECT_TRUE(isFit("1 var a; \"\""));
}

TEST(JsonShapeTest, ACommentOrASingleQuoteWithoutItsEndIsUnfit)
{
    for (const char* text : {"/", "'", "[/", "['", "[/ ']", "[' /]", "1 /", "/ / /", "var / a = 1", "[] '"})
        EXPECT_FALSE(isFit(text)) << text;
    for (const char* text : {"//", "''", "/'/", "'/'", "[/\"/]", "['\\']", "\"/\"", "\"'\"", "[\"\\\"/'\"]"})
        EXPECT_TRUE(isFit(text)) << text;
}

TEST(JsonShapeTest, BehindACommentEachOpeningBracketIsALevelEvenIfItIsClosed)
{
    const auto lists = [](int count) { return repeat("[],", count - 1) + "[]"; };
    EXPECT_TRUE(isFit("[" + lists(5 * LIMIT) + "]"));
    for (const char* hidden : {"/ /", "''"}) {
        EXPECT_TRUE(isFit("[" + lists(5 * LIMIT) + hidden + "]")) << hidden;
        EXPECT_TRUE(isFit(std::string("[") + hidden + lists(LIMIT - 1) + "]")) << hidden;
        EXPECT_FALSE(isFit(std::string("[") + hidden + lists(LIMIT) + "]")) << hidden;
    }
}

TEST(JsonShapeTest, BehindACommentABracketCountsAlsoInATextAndInAComment)
{
    for (const char* quote : {"\"", "'", "/"}) {
        const std::string before = std::string("/ /[") + quote;
        EXPECT_TRUE(isFit(before + repeat("{", LIMIT - 1) + quote + "]")) << quote;
        EXPECT_FALSE(isFit(before + repeat("{", LIMIT) + quote + "]")) << quote;
        EXPECT_TRUE(isFit(before + repeat("=", LIMIT - 1) + quote + "]")) << quote;
        EXPECT_FALSE(isFit(before + repeat("=", LIMIT) + quote + "]")) << quote;
    }
}

TEST(JsonShapeTest, WhatIsOpenInFrontOfACommentCountsAsWell)
{
    const std::string open = "var a = " + repeat("[", 23);
    EXPECT_TRUE(isFit(open + "/" + repeat("[", LIMIT - 24) + "/"));
    EXPECT_FALSE(isFit(open + "/" + repeat("[", LIMIT - 23) + "/"));
}

TEST(JsonShapeTest, AZeroByteEndsNothing)
{
    const std::string zero(1, '\0');
    EXPECT_FALSE(isFit("[" + zero + "]]"));
    EXPECT_FALSE(isFit(zero + "[] []"));
    EXPECT_FALSE(isFit("[" + zero + repeat("[", LIMIT)));
    EXPECT_FALSE(isFit("[\"" + zero + "\"]]"));
    EXPECT_TRUE(isFit("[" + zero + "]"));
}

}  // namespace Carvoy
