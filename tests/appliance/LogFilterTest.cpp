#include "LogFilter.h"

#include <gtest/gtest.h>

#include "LogFollower.h"
#include "LogJson.h"

namespace {

using Tool::LogFilter;

const std::string Error =
    "E/carvoy-service( 4711): \x1B[31m[4712] SearchControl.cpp: operator()(407) > no products\x1B[0m";
const std::string Info = "I/carvoy-ui( 17): card \x1B[2Jshown";
const std::string Other = "starting\x1B[2J up";

TEST(ALogFilter, ThatIsEmptyLetsEverythingPass)
{
    EXPECT_TRUE(LogFilter{}.isEmpty());
    for (const std::string& line : {Error, Info, Other, std::string()}) {
        EXPECT_TRUE(LogFilter{}.passes(line)) << line;
    }
}

// What every filter of one part makes of the three lines.
TEST(ALogFilter, TellsLinesByEachPart)
{
    struct Case {
        LogFilter filter;
        bool error;
        bool info;
    };
    const Case cases[] = {
        {{{'E'}, {}, {}, {}, {}}, true, false},
        {{{'I', 'E'}, {}, {}, {}, {}}, true, true},
        {{{'F'}, {}, {}, {}, {}}, false, false},
        {{{}, {"carvoy-ui"}, {}, {}, {}}, false, true},
        {{{}, {"carvoy"}, {}, {}, {}}, false, false},
        {{{}, {"carvoy-*"}, {}, {}, {}}, true, true},
        {{{}, {"x", "carvoy-service"}, {}, {}, {}}, true, false},
        {{{}, {}, {"SearchControl.cpp"}, {}, {}}, true, false},
        {{{}, {}, {"Search*"}, {}, {}}, true, false},
        {{{}, {}, {"main.cpp"}, {}, {}}, false, false},
        {{{}, {}, {"*"}, {}, {}}, true, false},
        {{{}, {}, {}, {"operator()"}, {}}, true, false},
        {{{}, {}, {}, {"operator"}, {}}, false, false},
        {{{}, {}, {}, {"*"}, {}}, true, false},
        {{{}, {}, {}, {}, {17}}, false, true},
        {{{}, {}, {}, {}, {17, 4711}}, true, true},
        {{{}, {}, {}, {}, {4712}}, false, false},
    };
    for (const Case& c : cases) {
        const auto at = &c - cases;
        EXPECT_FALSE(c.filter.isEmpty()) << at;
        EXPECT_EQ(c.filter.passes(Error), c.error) << at;
        EXPECT_EQ(c.filter.passes(Info), c.info) << at;
        EXPECT_FALSE(c.filter.passes(Other)) << at;
    }
}

TEST(ALogFilter, AsksForAllOfItsParts)
{
    LogFilter filter{{'E'}, {"carvoy-service"}, {"SearchControl.cpp"}, {"operator()"}, {4711}};
    EXPECT_TRUE(filter.passes(Error));
    for (const auto& change : {LogFilter{{'D'}, {}, {}, {}, {}}, LogFilter{{}, {"a"}, {}, {}, {}},
                               LogFilter{{}, {}, {"a"}, {}, {}}, LogFilter{{}, {}, {}, {"a"}, {}},
                               LogFilter{{}, {}, {}, {}, {1}}}) {
        LogFilter other = filter;
        other.levels = change.levels.empty() ? other.levels : change.levels;
        other.tags = change.tags.empty() ? other.tags : change.tags;
        other.files = change.files.empty() ? other.files : change.files;
        other.functions = change.functions.empty() ? other.functions : change.functions;
        other.processes = change.processes.empty() ? other.processes : change.processes;
        EXPECT_FALSE(other.passes(Error)) << &change;
    }
}

// As the search for the last lines judges it.
TEST(ALogFilter, JudgesALongLineByItsHead)
{
    const std::string late = "D/t( 1): [2] " + std::string(Appliance::LineHeadBytes, 'x') + ": f(3) > y";
    const LogFilter filter{{}, {}, {}, {"f"}, {}};
    EXPECT_FALSE(filter.passes(late));
    EXPECT_TRUE(filter.passes("D/t( 1): [2] x: f(3) > " + std::string(Appliance::LineHeadBytes, 'y')));
}

TEST(ALogLevel, HasANameAndALetter)
{
    for (const char* text : {"E", "e", "error", "Error", "ERROR"}) {
        EXPECT_EQ(Tool::levelFrom(text), 'E') << text;
    }
    for (const char* text : {"", "x", "err", "errors", "EE", "silent"}) {
        EXPECT_FALSE(Tool::levelFrom(text)) << text;
    }
    for (const char letter : std::string("VDIWEF")) {
        EXPECT_EQ(Tool::levelFrom(Tool::nameOfLevel(letter)), letter);
    }
}

TEST(ALogLevel, HasOthersAboveIt)
{
    EXPECT_EQ(Tool::levelsFrom('V'), (std::set<char>{'V', 'D', 'I', 'W', 'E', 'F'}));
    EXPECT_EQ(Tool::levelsFrom('W'), (std::set<char>{'W', 'E', 'F'}));
    EXPECT_EQ(Tool::levelsFrom('F'), std::set<char>{'F'});
}

TEST(ALogLineInJson, HasItsPartsOneByOne)
{
    EXPECT_EQ(Tool::logJson(Error), nlohmann::json({{"level", "error"},
                                                    {"tag", "carvoy-service"},
                                                    {"pid", 4711},
                                                    {"thread", 4712},
                                                    {"file", "SearchControl.cpp"},
                                                    {"function", "operator()"},
                                                    {"line", 407},
                                                    {"message", "no products"}}));
}

TEST(ALogLineInJson, HasNullForWhatItDoesNotTell)
{
    EXPECT_EQ(Tool::logJson(Info), nlohmann::json({{"level", "info"},
                                                   {"tag", "carvoy-ui"},
                                                   {"pid", 17},
                                                   {"thread", nullptr},
                                                   {"file", nullptr},
                                                   {"function", nullptr},
                                                   {"line", nullptr},
                                                   {"message", "card \uFFFD[2Jshown"}}));
    const nlohmann::json other = Tool::logJson(Other);
    EXPECT_EQ(other.size(), 8U);
    EXPECT_TRUE(other["level"].is_null());
    EXPECT_TRUE(other["pid"].is_null());
    EXPECT_EQ(other["message"], "starting\uFFFD[2J up");
}

TEST(ALogLineInJson, KeepsAMessageThatOnlyLooksLikeAPlace)
{
    EXPECT_EQ(Tool::logJson("D/carvoy-ui( 1): (a) > b")["message"], "(a) > b");
}

}  // namespace
