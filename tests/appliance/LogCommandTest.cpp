// The tool's look at a log, which some other process writes.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "LogText.h"
#include "ScratchRoot.h"
#include "ToolFixture.h"

namespace {

using namespace TestSupport;

// A root with nothing but a log in it.
class ALog : public testing::Test {
  protected:
    ALog() : root_(ScratchRoot::file("log-root")), file_(root_ + "/log/platform.log")
    {
        std::filesystem::remove_all(root_);
        std::filesystem::create_directories(root_ + "/log");
        write(serviceLine('D', 100, "main.cpp: run(1)", "one"));
        write(serviceLine('E', 100, "Search.cpp: operator()(2)", "two"));
        write("I/carvoy-ui( 17): \x1B[2Jthree\n");
        write("four\n");
        write(serviceLine('I', 200, "main.cpp: stop(5)", "five"));
        write(serviceLine('D', 200, "main.cpp: stop(6)", "six"));
    }

    void write(const std::string& text) { std::ofstream(file_, std::ios::app) << text; }

    static std::string serviceLine(char level, int pid, const std::string& place, const std::string& message)
    {
        return std::string(1, level) + "/carvoy-service( " + std::to_string(pid) + "): \x1B[32m[" +
               std::to_string(pid) + "] " + place + " > " + message + "\x1B[0m\n";
    }

    // The last word of each line that is shown.
    Words shown(Words options) const
    {
        options.insert(options.begin(), {"log", "--root", root_});
        const Ended log = tool(options);
        EXPECT_EQ(log.status, 0) << log.errors;
        EXPECT_FALSE(has(log.output, "\x1B")) << log.output;
        Words words;
        for (const std::string& line : LogText::linesOf(log.output)) {
            words.push_back(line.substr(line.find_last_of(" J") + 1));
        }
        return words;
    }

    std::string root_;
    std::string file_;
};

TEST_F(ALog, IsShownWholeWithoutAFilter)
{
    EXPECT_EQ(shown({}), (Words{"one", "two", "three", "four", "five", "six"}));
    EXPECT_EQ(shown({"-n", "2"}), (Words{"five", "six"}));
}

TEST_F(ALog, IsShownToItsEndAlsoWhereThatHasNoNewline)
{
    write("I/carvoy-ui( 17): seven");
    EXPECT_EQ(shown({"-n", "1"}), Words{"seven"});
    EXPECT_EQ(shown({"-n", "2"}), (Words{"six", "seven"}));
}

TEST_F(ALog, ThatCannotBeReadOrShownIsAFailure)
{
    EXPECT_EQ(tool({"log", "--root", root_, "-n", "-1"}).status, 2);
    ChildProcess full({"sh", "-c", "exec \"$0\" log --root \"$1\" >/dev/full", APPLIANCE_TOOL, root_});
    EXPECT_EQ(full.wait().status, 1);
    EXPECT_TRUE(has(full.errors(), "standard output cannot be written")) << full.errors();
    std::filesystem::remove(file_);
    std::filesystem::create_directory(file_);
    const Ended folder = tool({"log", "--root", root_});
    EXPECT_EQ(folder.status, 1);
    EXPECT_TRUE(has(folder.errors, "cannot read " + file_)) << folder.errors;
}

TEST_F(ALog, IsShownByLevel)
{
    EXPECT_EQ(shown({"--level", "info"}), (Words{"two", "three", "five"}));
    EXPECT_EQ(shown({"--level", "W"}), Words{"two"});
    EXPECT_EQ(shown({"--level", "verbose"}), (Words{"one", "two", "three", "five", "six"}));
    EXPECT_EQ(shown({"--only", "info"}), (Words{"three", "five"}));
    EXPECT_EQ(shown({"--only", "d", "--level", "error"}), (Words{"one", "two", "six"}));
}

TEST_F(ALog, IsShownByWhereItComesFrom)
{
    EXPECT_EQ(shown({"--tag", "carvoy-ui"}), Words{"three"});
    EXPECT_EQ(shown({"--file", "main.cpp"}), (Words{"one", "five", "six"}));
    EXPECT_EQ(shown({"--file", "main.cpp", "--file", "S*"}), (Words{"one", "two", "five", "six"}));
    EXPECT_EQ(shown({"--function", "operator()", "--function", "run"}), (Words{"one", "two"}));
    EXPECT_EQ(shown({"--pid", "17", "--pid", "200"}), (Words{"three", "five", "six"}));
    EXPECT_EQ(shown({"--file", "main.cpp", "--pid", "200", "--level", "I"}), Words{"five"});
    EXPECT_EQ(shown({"--file", "other.cpp"}), Words{});
}

TEST_F(ALog, CountsTheLinesThatItShows)
{
    EXPECT_EQ(shown({"-n", "1", "--only", "error"}), Words{"two"});
    EXPECT_EQ(shown({"-n", "2", "--file", "main.cpp"}), (Words{"five", "six"}));
    EXPECT_EQ(shown({"-n", "0", "--file", "main.cpp"}), Words{});
}

TEST_F(ALog, IsReadAsFarBackAsNeeded)
{
    std::string much;
    for (int i = 0; i < 5000; ++i) {
        much += serviceLine('D', 300, "other.cpp: f(7)", "much");
    }
    write(much);
    EXPECT_EQ(shown({"-n", "1", "--only", "error"}), Words{"two"});
    EXPECT_EQ(shown({"-n", "3", "--file", "main.cpp"}), (Words{"one", "five", "six"}));
}

TEST_F(ALog, IsFollowedThroughAFilter)
{
    ChildProcess log({APPLIANCE_TOOL, "log", "--root", root_, "-f", "-n", "1", "--level", "error"});
    ASSERT_TRUE(log.waitForOutput("two\n")) << log.errors();
    write(serviceLine('D', 300, "a.cpp: f(7)", "seven") + serviceLine('E', 300, "a.cpp: f(8)", "eight"));
    ASSERT_TRUE(log.waitForOutput("eight\n")) << log.errors();
    EXPECT_FALSE(has(log.output(), "seven")) << log.output();
    log.signal(SIGINT);
    EXPECT_EQ(log.wait().status, 0) << log.errors();
}

TEST_F(ALog, IsFollowedIntoTheNextOne)
{
    ChildProcess log({APPLIANCE_TOOL, "log", "--root", root_, "-f", "-n", "1"});
    ASSERT_TRUE(log.waitForOutput("six\n")) << log.errors();
    std::filesystem::rename(file_, file_ + ".1");
    write("seven, a line of the next log\n");
    ASSERT_TRUE(log.waitForOutput("seven, a line of the next log\n")) << log.errors();
    std::filesystem::resize_file(file_, 0);
    write("eight\n");
    ASSERT_TRUE(log.waitForOutput("eight\n")) << log.errors();
    log.signal(SIGINT);
    EXPECT_EQ(log.wait().status, 0) << log.errors();
}

TEST_F(ALog, IsAnObjectOnEachLineInJson)
{
    const Ended log = tool({"log", "--root", root_, "--json", "-n", "5"});
    EXPECT_EQ(log.status, 0) << log.errors;
    const Words lines = LogText::linesOf(log.output);
    ASSERT_EQ(lines.size(), 5U) << log.output;
    const auto error = nlohmann::json::parse(lines[0]);
    EXPECT_EQ(error["file"], "Search.cpp");
    EXPECT_EQ(error["message"], "two");
    EXPECT_EQ(nlohmann::json::parse(lines[1])["message"], "\uFFFD[2Jthree");
    EXPECT_EQ(nlohmann::json::parse(lines[2])["message"], "four");
    EXPECT_EQ(count(tool({"log", "--root", root_, "--json", "--only", "E"}).output, "\n"), 1U);
}

TEST_F(ALog, IsNotShownForAFilterThatIsNone)
{
    for (const Words& wrong : {Words{"--level", "loud"}, Words{"--level", ""}, Words{"--only", "EF"},
                               Words{"--pid", "x"}, Words{"--pid", "-1"}, Words{"--file"}}) {
        Words command = {"log", "--root", root_};
        command.insert(command.end(), wrong.begin(), wrong.end());
        EXPECT_EQ(tool(command).status, 2) << wrong[0];
    }
}

TEST_F(ARunningAppliance, ShowsTheLogOfWhatIsAskedFor)
{
    up();
    EXPECT_EQ(on({"search", "--no-pictures", "milk"}).status, 0);
    const Ended log = on({"log", "--json", "--file", "SearchControl.cpp", "-n", "1"});
    const Words lines = LogText::linesOf(log.output);
    ASSERT_EQ(lines.size(), 1U) << log.output << log.errors;
    for (const std::string& line : lines) {
        const auto json = nlohmann::json::parse(line);
        EXPECT_EQ(json["file"], "SearchControl.cpp");
        EXPECT_EQ(json["tag"], "carvoy-service");
        EXPECT_EQ(json["pid"], processes().at("carvoy-service"));
        EXPECT_GT(json["line"], 0);
    }
    down();
}

}  // namespace
