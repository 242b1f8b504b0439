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

TEST(AJsonLine, HasNoControlCharacterAndLosesNothing)
{
    const nlohmann::json json = {{"text", "a\n\x1B\x7F\u009B"}, {"list", {"牛乳", "b"}}};
    const std::string line = Appliance::jsonLine(json);
    EXPECT_EQ(line, R"({"list":["牛乳","b"],"text":"a\n\u001b\u007f\u009b"})");
    EXPECT_EQ(nlohmann::json::parse(line), json);
    EXPECT_EQ(Appliance::jsonLine("\xC3"), "\"\uFFFD\"");
}

}  // namespace
