// The platform log: format to the byte, limits, refusals, and whole lines of several threads.
#include <dlog.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "LogText.h"
#include "ScratchRoot.h"

namespace {

using LogText::contentOf;
using LogText::linesOf;
using LogText::pid;
using TestSupport::ScratchRoot;

constexpr std::size_t kMessageLimit = 4076;

const std::string& logFile()
{
    static const std::string path = ScratchRoot::file("dlog");
    return path;
}

// The log is opened once per process, at its first entry.
const bool logIsAFile = setenv("APPLIANCE_DLOG", logFile().c_str(), 1) == 0;

// What the log has got since the object was made.
class Recorder {
  public:
    std::string logged() const { return contentOf(logFile()).substr(start); }

    std::string loggedMessage() const
    {
        const std::string text = logged();
        const std::size_t prefix = text.find(": ") + 2;
        return text.substr(prefix, text.size() - prefix - 1);
    }

  private:
    std::size_t start = contentOf(logFile()).size();
};

class Dlog : public testing::Test, protected Recorder {};

}  // namespace

TEST_F(Dlog, AnEntryIsOneLineOfTheBriefFormat)
{
    dlog_print(DLOG_INFO, "carvoy-service", "%s has %d", "milk", 3);

    EXPECT_EQ(logged(), "I/carvoy-service" + pid() + "milk has 3\n");
}

TEST_F(Dlog, AShortTagIsPaddedToEight)
{
    dlog_print(DLOG_DEBUG, "abc", "x");

    EXPECT_EQ(logged(), "D/abc     " + pid() + "x\n");
}

TEST_F(Dlog, EveryPriorityHasItsLetter)
{
    const std::map<log_priority, char> letters = {{DLOG_VERBOSE, 'V'}, {DLOG_DEBUG, 'D'}, {DLOG_INFO, 'I'},
                                                  {DLOG_WARN, 'W'},    {DLOG_ERROR, 'E'}, {DLOG_FATAL, 'F'},
                                                  {DLOG_SILENT, 'S'}};
    std::string expected;
    for (const auto& [priority, letter] : letters) {
        dlog_print(priority, "test", "m");
        expected += letter + ("/test    " + pid() + "m\n");
    }

    EXPECT_EQ(logged(), expected);
}

TEST_F(Dlog, EveryLineOfAMessageHasThePrefix)
{
    dlog_print(DLOG_INFO, "test", "one\n\nthree");

    const std::string prefix = "I/test    " + pid();
    EXPECT_EQ(logged(), prefix + "one\n" + prefix + "\n" + prefix + "three\n");
}

TEST_F(Dlog, AFinalNewlineAddsNoEmptyLine)
{
    dlog_print(DLOG_INFO, "test", "one\n");

    EXPECT_EQ(logged(), "I/test    " + pid() + "one\n");
}

TEST_F(Dlog, AnEmptyMessageIsAPrefixAlone)
{
    dlog_print(DLOG_INFO, "test", "%s", "");

    EXPECT_EQ(logged(), "I/test    " + pid() + "\n");
}

TEST_F(Dlog, ColoursPassAsTheyAre)
{
    dlog_print(DLOG_INFO, "test", "\x1B[34m[%d] x\x1B[0m", 4711);

    EXPECT_EQ(loggedMessage(), "\x1B[34m[4711] x\x1B[0m");
}

TEST_F(Dlog, ReturnsTheNumberOfBytesWritten)
{
    const int result = dlog_print(DLOG_INFO, "test", "one\ntwo");

    EXPECT_EQ(result, static_cast<int>(logged().size()));
}

TEST_F(Dlog, ANullTagIsAnEmptyOne)
{
    dlog_print(DLOG_INFO, nullptr, "x");

    EXPECT_EQ(logged(), "I/        " + pid() + "x\n");
}

TEST_F(Dlog, RefusesPrioritiesThatAreNone)
{
    for (const int priority : {-1, 0, 1, 9, 10})
        EXPECT_EQ(dlog_print(static_cast<log_priority>(priority), "test", "x"), DLOG_ERROR_INVALID_PARAMETER);

    EXPECT_EQ(logged(), "");
}

TEST_F(Dlog, RefusesANullFormat)
{
    // Through a pointer without the printf attribute: the compiler would refuse it first.
    int (*const print)(log_priority, const char*, const char*, ...) = dlog_print;

    EXPECT_EQ(print(DLOG_INFO, "test", nullptr), DLOG_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(logged(), "");
}

TEST_F(Dlog, RefusesAMessageThatCannotBeFormatted)
{
    const wchar_t beyondUnicode[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};

    EXPECT_EQ(dlog_print(DLOG_INFO, "test", "%ls", beyondUnicode), DLOG_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(logged(), "");
}

TEST_F(Dlog, AMessageAtTheLimitIsWhole)
{
    const std::string message(kMessageLimit, 'm');
    dlog_print(DLOG_INFO, "test", "%s", message.c_str());

    EXPECT_EQ(loggedMessage(), message);
}

TEST_F(Dlog, ALongerMessageIsCutToTheLimit)
{
    dlog_print(DLOG_INFO, "test", "%s", std::string(100'000, 'm').c_str());

    EXPECT_EQ(loggedMessage(), std::string(kMessageLimit, 'm'));
}

TEST_F(Dlog, TheCutSplitsNoCharacter)
{
    for (const std::string character : {"é", "€", "😀"}) {
        for (std::size_t before = kMessageLimit - 4; before <= kMessageLimit; ++before) {
            SCOPED_TRACE(character + " after " + std::to_string(before));
            const bool fits = before + character.size() <= kMessageLimit;
            const std::string kept = std::string(before, 'm') + (fits ? character : "");
            const Recorder entry;
            dlog_print(DLOG_INFO, "test", "%s%s%s", std::string(before, 'm').c_str(), character.c_str(),
                       "€€€€");
            EXPECT_EQ(entry.loggedMessage().substr(0, kept.size()), kept);
            EXPECT_LE(entry.loggedMessage().size(), kMessageLimit);
            EXPECT_EQ((entry.loggedMessage().size() - kept.size()) % 3, 0U);
        }
    }
}

TEST_F(Dlog, BytesThatAreNoUtf8AreCutAtTheLimit)
{
    dlog_print(DLOG_INFO, "test", "%s", std::string(kMessageLimit + 10, '\x80').c_str());

    EXPECT_EQ(loggedMessage(), std::string(kMessageLimit, '\x80'));
}

TEST_F(Dlog, ALongTagIsCut)
{
    dlog_print(DLOG_INFO, std::string(1000, 't').c_str(), "x");

    EXPECT_EQ(logged(), "I/" + std::string(128, 't') + pid() + "x\n");
}

TEST_F(Dlog, LinesThatNoLongerFitAreLeftOutWhole)
{
    dlog_print(DLOG_INFO, "test", "%s", std::string(3000, '\n').c_str());

    const std::string line = "I/test    " + pid() + "\n";
    const std::string text = logged();
    EXPECT_EQ(text.size(), 16 * 1024 / line.size() * line.size());
    EXPECT_EQ(text.substr(text.size() - line.size()), line);
}

TEST_F(Dlog, LeavesErrnoAlone)
{
    errno = ENOTTY;
    dlog_print(DLOG_INFO, "test", "x");
    EXPECT_EQ(errno, ENOTTY);

    dlog_print(DLOG_UNKNOWN, "test", "x");
    EXPECT_EQ(errno, ENOTTY);
}

TEST_F(Dlog, LinesOfSeveralThreadsStayWhole)
{
    constexpr int kThreads = 8;
    constexpr int kEntries = 200;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([i] {
            const std::string message(1000, static_cast<char>('a' + i));
            for (int entry = 0; entry < kEntries; ++entry)
                dlog_print(DLOG_INFO, "test", "%s", message.c_str());
        });
    for (std::thread& thread : threads)
        thread.join();

    std::multiset<std::string> expected;
    for (int i = 0; i < kThreads * kEntries; ++i)
        expected.insert("I/test    " + pid() + std::string(1000, static_cast<char>('a' + i / kEntries)));
    const std::vector<std::string> lines = linesOf(logged());
    EXPECT_EQ(std::multiset<std::string>(lines.begin(), lines.end()), expected);
}
