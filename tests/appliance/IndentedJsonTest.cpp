#include "IndentedJson.h"

#include <gtest/gtest.h>

namespace {

using Appliance::indentedJson;

TEST(IndentedJson, HasNoControlCharacterInIt)
{
    const std::string text = "a\x1B[2J\x7F\xC2\x80\xC2\x9B\xC2\x9F\xC2\xA0é";
    const std::string json = indentedJson({{text, text}});
    EXPECT_EQ(json,
              "{\n  \"a\\u001b[2J\\u007f\\u0080\\u009b\\u009f\xC2\xA0é\": "
              "\"a\\u001b[2J\\u007f\\u0080\\u009b\\u009f\xC2\xA0é\"\n}");
    EXPECT_EQ(nlohmann::json::parse(json)[text], text);
}

TEST(IndentedJson, ReplacesWhatIsNotUtf8)
{
    EXPECT_EQ(indentedJson("a\xFF\xC2"), "\"a\xEF\xBF\xBD\xEF\xBF\xBD\"");
}

}  // namespace
