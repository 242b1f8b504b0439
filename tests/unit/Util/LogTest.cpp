// Log statements: the bytes that each level writes to the platform's log and to standard output.
#include "Log.h"

#include <sys/syscall.h>

#include <sstream>
#include <string_view>
#include <thread>

#include "CapturedOutput.h"
#include "ObservedTest.h"

using TestSupport::Call;
using TestSupport::Calls;
using TestSupport::LogEntry;

namespace {

static_assert(std::string_view(Util::baseName("/a/b/Service.cpp")) == "Service.cpp");
static_assert(std::string_view(Util::baseName("Service.cpp")) == "Service.cpp");
static_assert(std::string_view(Util::baseName("a/")).empty());
static_assert(std::string_view(Util::baseName("")).empty());

int debugLine;
int infoLine;
int errorLine;

void logDebug()
{
    debugLine = __LINE__ + 1;
    LOG_D("progress");
}

void logInfo()
{
    infoLine = __LINE__ + 1;
    LOG_I("_create");
}

void logError()
{
    errorLine = __LINE__ + 1;
    LOG_E("Can't open database: %s, %d", "locked", 5);
}

class Lifecycle {
  public:
    void onCreate() { LOG_I("Service::onCreate"); }
};

std::string entry(const char* colour, const char* function, int line, const std::string& message)
{
    return "\033[" + std::string(colour) + "m[" + std::to_string(gettid()) + "] LogTest.cpp: " + function +
           "(" + std::to_string(line) + ") > " + message + "\033[0m";
}

std::string printed(const char* function, int line, const std::string& message)
{
    return "[" + std::string(function) + ":" + std::to_string(line) + "] " + message + "\n";
}

class Log : public ObservedTest {
  protected:
    // The one entry so far.
    static LogEntry logged()
    {
        EXPECT_EQ(Calls::log().size(), 1U);
        return Calls::log().at(0);
    }

    static std::string message()
    {
        const std::string text = logged().text;
        const size_t start = text.find(" > ") + 3;
        return text.substr(start, text.size() - start - 4);
    }

    CapturedOutput output;
};

}  // namespace

TEST_F(Log, ADebugStatementIsGreenAndOfPriorityThree)
{
    logDebug();

    EXPECT_EQ(logged().priority, 3);
    EXPECT_EQ(logged().tag, "carvoy-service");
    EXPECT_EQ(logged().text, entry("32", "logDebug", debugLine, "progress"));
    EXPECT_EQ(output.text(), printed("logDebug", debugLine, "progress"));
}

TEST_F(Log, AnInfoStatementIsBlueAndOfPriorityFour)
{
    logInfo();

    EXPECT_EQ(logged().priority, 4);
    EXPECT_EQ(logged().tag, "carvoy-service");
    EXPECT_EQ(logged().text, entry("34", "logInfo", infoLine, "_create"));
    EXPECT_EQ(output.text(), printed("logInfo", infoLine, "_create"));
}

TEST_F(Log, AnErrorStatementIsRedAndOfPrioritySix)
{
    logError();

    EXPECT_EQ(logged().priority, 6);
    EXPECT_EQ(logged().tag, "carvoy-service");
    EXPECT_EQ(logged().text, entry("31", "logError", errorLine, "Can't open database: locked, 5"));
    EXPECT_EQ(output.text(), printed("logError", errorLine, "Can't open database: locked, 5"));
}

TEST_F(Log, TheFormatIsOneLiteralWithPrefixAndReset)
{
    LOG_D("two: %s %d", "x", 1);

    EXPECT_EQ(logged().format, "\033[32m[%d] %s: %s(%d) > two: %s %d\033[0m");
}

TEST_F(Log, ArgumentsReachBothOutputsInOrder)
{
    LOG_E("%s %d %c %5.2f %lu %p|", "text", -1, 'c', 2.5, 4UL, nullptr);

    const std::string expected = "text -1 c  2.50 4 (nil)|";
    EXPECT_EQ(message(), expected);
    EXPECT_EQ(output.text().substr(output.text().find("] ") + 2), expected + "\n");
}

TEST_F(Log, ArgumentsAreEvaluatedOnceForEachOutput)
{
    int evaluated = 0;
    LOG_D("%d", ++evaluated);

    EXPECT_EQ(evaluated, 2);
}

TEST_F(Log, AnEmptyMessageIsThePrefixAlone)
{
    const int line = __LINE__ + 1;
    LOG_D("");

    EXPECT_EQ(logged().format, "\033[32m[%d] %s: %s(%d) > \033[0m");
    EXPECT_EQ(logged().text, entry("32", "TestBody", line, ""));
    EXPECT_EQ(output.text(), printed("TestBody", line, ""));
}

TEST_F(Log, ATextOfTheRunIsPassedAsItIs)
{
    const std::string text = "100% %s %n \033[35m \xC3\xA9";
    LOG_E("%s", text.c_str());

    EXPECT_EQ(message(), text);
}

TEST_F(Log, ALongMessageIsWholeOnStandardOutput)
{
    const std::string text(100'000, 'x');
    LOG_E("%s", text.c_str());

    EXPECT_EQ(output.text().substr(output.text().find("] ") + 2), text + "\n");
}

TEST_F(Log, AMethodGivesItsBareName)
{
    Lifecycle().onCreate();

    EXPECT_NE(logged().text.find("LogTest.cpp: onCreate("), std::string::npos) << logged().text;
    EXPECT_EQ(output.text().rfind("[onCreate:", 0), 0U) << output.text();
}

TEST_F(Log, ALambdaIsCalledOperator)
{
    const auto lambda = [] { LOG_E("failed"); };
    lambda();

    EXPECT_NE(logged().text.find("LogTest.cpp: operator()("), std::string::npos) << logged().text;
    EXPECT_EQ(output.text().rfind("[operator():", 0), 0U) << output.text();
}

TEST_F(Log, TheVersionIsLoggedByTheHeaderItself)
{
    Util::printVersion();

    const std::string text = "Carvoy Version: 0.0.1-5.12";
    EXPECT_EQ(logged().priority, 4);
    EXPECT_EQ(logged().text,
              "\033[34m[" + std::to_string(gettid()) + "] Log.h: printVersion(73) > " + text + "\033[0m");
    EXPECT_EQ(output.text(), printed("printVersion", 73, text));
}

TEST_F(Log, StandardOutputIsPlainAndTheLogEndsEveryLineWithAReset)
{
    logDebug();
    logInfo();
    logError();

    EXPECT_EQ(output.text().find('\033'), std::string::npos);
    for (const LogEntry& one : Calls::log()) {
        EXPECT_EQ(one.text.compare(0, 2, "\033["), 0);
        EXPECT_EQ(one.text.substr(one.text.size() - 4), "\033[0m");
        EXPECT_EQ(one.text.find('\n'), std::string::npos);
    }
}

TEST_F(Log, TheLogIsWrittenBeforeStandardOutput)
{
    std::string before = "not asked";
    Calls::before("dlog_print", [&] { before = output.text(); });
    logInfo();

    EXPECT_EQ(before, "");
    EXPECT_NE(output.text(), "");
}

TEST_F(Log, ALogThatRefusesTheEntryGoesUnnoticed)
{
    Calls::fail("dlog_print", DLOG_ERROR_NOT_PERMITTED);
    logInfo();

    EXPECT_EQ(output.text(), printed("logInfo", infoLine, "_create"));
}

TEST_F(Log, TheThreadIsTheKernelsAndAskedForOnce)
{
    logInfo();

    const std::string number = std::to_string(SYS_gettid);
    EXPECT_EQ(Calls::count("syscall"), 1U);
    EXPECT_EQ(Calls::of("syscall").at(0).arguments, List{number});
}

TEST_F(Log, AnotherThreadGivesItsOwnId)
{
    pid_t other = 0;
    std::thread([&other] {
        other = gettid();
        logInfo();
    }).join();

    EXPECT_NE(other, gettid());
    EXPECT_NE(logged().text.find("[" + std::to_string(other) + "]"), std::string::npos) << logged().text;
}

TEST_F(Log, AStatementIsOneStatement)
{
    const bool quiet = true;
    if (!quiet)
        LOG_E("not said");
    else
        LOG_D("said");

    EXPECT_EQ(message(), "said");
}

TEST_F(Log, LinesOfSeveralThreadsStayWhole)
{
    constexpr int kThreads = 4;
    constexpr int kLines = 100;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([i] {
            const std::string text(200, static_cast<char>('a' + i));
            for (int line = 0; line < kLines; ++line)
                LOG_D("%s", text.c_str());
        });
    for (std::thread& thread : threads)
        thread.join();

    std::istringstream lines(output.text());
    size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const std::string text = line.substr(line.find("] ") + 2);
        EXPECT_EQ(text, std::string(200, text.at(0)));
    }
    EXPECT_EQ(count, static_cast<size_t>(kThreads * kLines));
    EXPECT_EQ(Calls::log().size(), count);
}
