// Texts of the response parser's library, as the service takes them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "ResponseParser.h"

namespace Carvoy {

namespace {

/** Hands out a copy of `text`, or fails with `code`. */
struct Source {
    const char* text;
    int code = NDP_ERROR_NONE;
};

int give(Source* source, char** text)
{
    if (source->text)
        *text = strdup(source->text);
    return source->code;
}

std::string textOf(Source source)
{
    return ResponseParser::trimmedText(give, &source);
}

}  // namespace

TEST(Trim, TakesTheFiveBlanksFromBothEnds)
{
    EXPECT_EQ(ResponseParser::trim(" \t\r\n\vCommerce Check Out\v\n\r\t "), "Commerce Check Out");
    for (const char* blank : {" ", "\t", "\r", "\n", "\v"}) {
        EXPECT_EQ(ResponseParser::trim(blank + std::string("2")), "2");
        EXPECT_EQ(ResponseParser::trim("2" + std::string(blank)), "2");
    }
}

TEST(Trim, LeavesWhatIsInsideAndAllOtherCharacters)
{
    for (const char* text : {"", "2", "a b", "a \t\r\n\vb", "\f2\f", "\u00a02\u00a0", "\u30002", "\x01"})
        EXPECT_EQ(ResponseParser::trim(text), text);
}

TEST(Trim, LeavesNothingOfBlanksOnly)
{
    for (const char* text : {" ", "\n", " \t\r\n\v", "   "})
        EXPECT_EQ(ResponseParser::trim(text), "");
}

TEST(TrimmedText, IsACopyOfWhatTheLibraryHandsOut)
{
    EXPECT_EQ(textOf({"\n Commerce Check Out \t"}), "Commerce Check Out");
    EXPECT_EQ(textOf({""}), "");
}

TEST(TrimmedText, IsEmptyWhereTheLibraryHasNone)
{
    EXPECT_EQ(textOf({nullptr}), "");
    EXPECT_EQ(textOf({nullptr, NDP_ERROR_NO_SUCH_VALUE}), "");
}

}  // namespace Carvoy
