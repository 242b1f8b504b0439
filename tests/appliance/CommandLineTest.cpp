#include <gtest/gtest.h>

#include <algorithm>

#include "Commands.h"

namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::string>;

struct Given {
    Words words;
    Words texts;
    std::chrono::milliseconds limit{5'000};
};

// What a command line with words, a text option and a time limit reads. Throws CLI::ParseError.
Given parsed(Words arguments)
{
    Given given;
    CLI::App app;
    Tool::addTexts(app, "WORD", given.words, "")->required();
    Tool::addTexts(app, "--text", given.texts, "");
    Tool::addTimeoutOption(app, given.limit, "");
    std::reverse(arguments.begin(), arguments.end());
    app.parse(arguments);
    return given;
}

TEST(TheCommandLine, TakesTextsAsTheyAre)
{
    const Words texts = {R"(["a","b"])", "[]", "{}", "%%", "a,b", "", "{broken"};
    Words arguments = {"word"};
    for (const std::string& text : texts) {
        arguments.insert(arguments.end(), {"--text", text});
    }
    const Given given = parsed(arguments);
    EXPECT_EQ(given.texts, texts);
    EXPECT_EQ(given.words, Words{"word"});
}

TEST(TheCommandLine, TakesWordsAsTheyAre)
{
    const Words words = {"[show,me]", "the", "{}", "[second]", "one"};
    EXPECT_EQ(parsed(words).words, words);
    EXPECT_EQ(parsed({"a", "--text", "b", "c"}).words, (Words{"a", "c"}));
    EXPECT_THROW(parsed({}), CLI::RequiredError);
}

TEST(TheCommandLine, TakesALimitInSeconds)
{
    EXPECT_EQ(parsed({"a"}).limit, 5s);
    EXPECT_EQ(parsed({"a", "--timeout", "0.25"}).limit, 250ms);
    EXPECT_EQ(parsed({"a", "--timeout", "3600"}).limit, 3600s);
    EXPECT_EQ(parsed({"a", "--timeout", "0.001"}).limit, 1ms);
}

TEST(TheCommandLine, RefusesALimitThatIsNone)
{
    for (const char* text : {"nan", "NAN", "-nan", "inf", "infinity", "0", "-1", "0.0009", "3600.1", "1e999",
                             "5s", "", " ", "1 2"}) {
        EXPECT_THROW(parsed({"a", "--timeout", text}), CLI::ValidationError) << text;
    }
}

}  // namespace
