// How deep a text may be nested before it is refused.
#include <gtest/gtest.h>

#include <string>

#include "GLibWatch.h"
#include "JsonReader.h"
#include "RepeatedText.h"

namespace Carvoy {

namespace {

constexpr int LIMIT = 1024;

std::string arrays(int depth)
{
    return repeat("[", depth) + repeat("]", depth);
}

std::string objects(int depth)
{
    return repeat("{\"a\":", depth - 1) + "{" + repeat("}", depth);
}

std::string mixed(int depth)
{
    return repeat("[{\"a\":", depth / 2) + "1" + repeat("}]", depth / 2);
}

bool loads(const std::string& text)
{
    GLibWatch watch;
    JsonParserPtr parser(json_parser_new());
    return JsonReader::load(parser.get(), text);
}

}  // namespace

TEST(JsonNestingTest, TheDeepestTextThatIsTakenHas1024Levels)
{
    EXPECT_TRUE(loads(arrays(LIMIT)));
    EXPECT_TRUE(loads(objects(LIMIT)));
    EXPECT_TRUE(loads(mixed(LIMIT)));
}

TEST(JsonNestingTest, OneLevelMoreIsRefused)
{
    EXPECT_FALSE(loads(arrays(LIMIT + 1)));
    EXPECT_FALSE(loads(objects(LIMIT + 1)));
    EXPECT_FALSE(loads("[" + mixed(LIMIT) + "]"));
}

TEST(JsonNestingTest, AHundredThousandLevelsAreRefused)
{
    EXPECT_FALSE(loads(arrays(100000)));
    EXPECT_FALSE(loads(objects(100000)));
    EXPECT_FALSE(loads(mixed(100000)));
}

TEST(JsonNestingTest, AnUnfinishedDeepTextIsRefused)
{
    EXPECT_FALSE(loads(repeat("[", 100000)));
    EXPECT_FALSE(loads(repeat("{\"a\":", 100000)));
    EXPECT_FALSE(loads(repeat("[{\"a\":", 100000)));
    EXPECT_FALSE(loads(repeat("]", 100000)));
    EXPECT_FALSE(loads(repeat("}", 100000) + repeat("[", 100000)));
}

TEST(JsonNestingTest, ManyArraysBesideEachOtherAreNotDeep)
{
    EXPECT_TRUE(loads("[" + repeat("[{}],", 100000) + "[]]"));
}

TEST(JsonNestingTest, BracketsWithinATextDoNotCount)
{
    const std::string brackets = repeat("[{", 100000);
    EXPECT_TRUE(loads("[\"" + brackets + "\"]"));
    EXPECT_TRUE(loads("{\"" + brackets + "\": 1}"));
    EXPECT_TRUE(loads("[\"\\\"" + brackets + "\\\\\", \"" + brackets + "\"]"));
    EXPECT_TRUE(loads("[\"\\u005b" + brackets + "\"]"));
}

TEST(JsonNestingTest, BracketsBehindATextCount)
{
    EXPECT_FALSE(loads("[\"text\", " + arrays(100000) + "]"));
    EXPECT_FALSE(loads("[\"\\\\\", " + arrays(100000) + "]"));
    EXPECT_FALSE(loads("[\"\\\"\", " + arrays(100000) + "]"));
    EXPECT_FALSE(loads("{\"/'\": " + arrays(100000) + "}"));
}

TEST(JsonNestingTest, ATextWithoutItsEndHidesNothing)
{
    EXPECT_FALSE(loads("[\"" + arrays(100000)));
    EXPECT_FALSE(loads("[\"\\"));
    EXPECT_FALSE(loads("\""));
}

// json-glib reads over comments, in which a quote is no quote.
TEST(JsonNestingTest, AQuoteWithinACommentHidesNoBracket)
{
    EXPECT_FALSE(loads("/* \" */" + arrays(100000) + "/* \" */"));
    EXPECT_FALSE(loads("// \"\n" + arrays(100000) + "// \"\n"));
    EXPECT_FALSE(loads("[/* \" */ 1, " + arrays(100000) + "]"));
}

TEST(JsonNestingTest, ABracketThatClosesWithinACommentClosesNothing)
{
    EXPECT_FALSE(loads(repeat("[/*]*/", 100000) + repeat("]", 100000)));
    EXPECT_FALSE(loads(repeat("[//]\n", 100000) + repeat("]", 100000)));
}

TEST(JsonNestingTest, AQuoteWithinSingleQuotesHidesNoBracket)
{
    EXPECT_FALSE(loads("['\"', " + arrays(100000) + ", '\"']"));
    EXPECT_FALSE(loads("{'\"': " + arrays(100000) + "}"));
}

TEST(JsonNestingTest, ABracketThatClosesWithinSingleQuotesClosesNothing)
{
    EXPECT_FALSE(loads(repeat("['" + repeat("]", 9) + "',", 100000) + "1" + repeat("]", 100000)));
}

TEST(JsonNestingTest, ACommentOrASingleQuoteIsNoReasonToRefuseAShallowText)
{
    EXPECT_TRUE(loads("{\"products\": [/* one */ {\"name\": 'Milk'}]} /* that is all */"));
}

// json-glib takes what stands behind half of a character, or behind too few digits, for a part of the escape:
// also the quote that closes the text. What follows would be a text to it, and the next text would not.
TEST(JsonNestingTest, AnEscapeThatTakesItsTextsEndWithItHidesNoBracket)
{
    for (const char* escape :
         {"\\ud83d", "\\udc00", "\\ud8", "\\u0", "\\u00e", "\\ud83d\\udc", "\\ud83d\\udc0"}) {
        const std::string text = "\"" + std::string(escape) + "\"";
        EXPECT_FALSE(loads("[" + text + ", \"," + repeat("[", 100000) + "\"]")) << escape;
        EXPECT_FALSE(loads("{" + text + ": \"\", \"\": \":" + repeat("[", 100000) + "\"}")) << escape;
    }
}

TEST(JsonNestingTest, AnEscapeThatTakesABackslashWithItHidesNoBracket)
{
    for (const char* escape : {"\\u0", "\\u00e", "\\ud8", "\\ud83d\\udc"})
        EXPECT_FALSE(loads("[\"" + std::string(escape) + "\\\"," + repeat("[", 100000) + "\"]")) << escape;
}

TEST(JsonNestingTest, AnEscapeOfHalfACharacterIsNoReasonToRefuseAShallowText)
{
    const std::string brackets = repeat("[{", 100000);
    for (const char* text :
         {"\\ud83dx", "\\ud83d ", "\\ud83d\\n", "\\ud83d\\\"", "\\ud83d\\\\", "\\udc00x", "\\u0g", "\\u",
          "\\ux", "\\ud8x!", "\\ud83d\\ude00", "\\uD83D\\uDE00", "\\u00e9", "\\ud83d\\udcx"})
        EXPECT_TRUE(loads("[\"" + std::string(text) + brackets + "\", \"" + brackets + "\"]")) << text;
}

// json-glib goes one level down at each of them, before it has come to a value.
TEST(JsonNestingTest, AnAssignmentIsOneLevel)
{
    EXPECT_TRUE(loads(repeat("var a = ", LIMIT) + "1"));
    EXPECT_FALSE(loads(repeat("var a = ", LIMIT + 1) + "1"));
    EXPECT_TRUE(loads("var a = var b = " + arrays(LIMIT - 2)));
    EXPECT_FALSE(loads("var a = var b = " + arrays(LIMIT - 1)));
}

TEST(JsonNestingTest, AMillionAssignmentsAreRefusedWhereverTheyStand)
{
    const std::string assignments = repeat("var a=", 1000000);
    for (const char* before :
         {"", "\xEF\xBB\xBF", "1 ", "\"\\\"=\" ", "{} ", "/*=*/ ", "// '\n", "'\"' ", "/ \" / "})
        EXPECT_FALSE(loads(before + assignments + "1")) << before;
    EXPECT_FALSE(loads(repeat("var a /* = */ = ", 1000000) + "1"));
    EXPECT_FALSE(loads(assignments));
}

TEST(JsonNestingTest, ASignOfEqualityWithinATextIsNoLevel)
{
    EXPECT_TRUE(loads("{\"" + repeat("=", 100000) + "\": \"" + repeat("var a=", 100000) + "\"}"));
}

TEST(JsonNestingTest, AZeroByteHidesNoBracket)
{
    EXPECT_FALSE(loads(std::string("[\0", 2) + arrays(100000) + "]"));
    EXPECT_FALSE(loads("[\"" + std::string(1, '\0') + "\", " + arrays(100000) + "]"));
}

}  // namespace Carvoy
