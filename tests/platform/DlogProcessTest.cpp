// Where the log of a process goes: file, journal or standard error; and lines of several processes.
#include <dlog.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "LogText.h"
#include "ScratchRoot.h"

namespace {

using LogText::contentOf;
using LogText::linesOf;
using LogText::pid;
using TestSupport::ChildProcess;
using TestSupport::ScratchRoot;

ChildProcess::Variables logTo(const std::string& file = "")
{
    return {{"APPLIANCE_DLOG", file}};
}

void expectSuccess(ChildProcess& process)
{
    const auto end = process.wait();
    EXPECT_TRUE(end.inTime);
    EXPECT_EQ(end.status, 0) << process.errors();
}

// A datagram socket in the journal's place.
class JournalSocket {
  public:
    JournalSocket() : path(ScratchRoot::file("journal")), descriptor(socket(AF_UNIX, SOCK_DGRAM, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }

    ~JournalSocket()
    {
        close(descriptor);
        unlink(path.c_str());
    }
    JournalSocket(const JournalSocket&) = delete;
    JournalSocket& operator=(const JournalSocket&) = delete;

    std::string receive() const
    {
        char bytes[8192];
        const ssize_t length = recv(descriptor, bytes, sizeof bytes, MSG_DONTWAIT);
        return {bytes, length > 0 ? static_cast<std::size_t>(length) : 0};
    }

    const std::string path;

  private:
    const int descriptor;
};

}  // namespace

TEST(DlogOfAProcess, LinesOfSeveralProcessesStayWhole)
{
    const std::string file = ScratchRoot::file("shared-log");
    std::vector<std::unique_ptr<ChildProcess>> processes;
    std::multiset<std::string> expected;
    for (const char letter : {'a', 'b', 'c'}) {
        const std::string message(3000, letter);
        processes.push_back(std::make_unique<ChildProcess>(
            std::vector<std::string>{LOG_PROBE, "many", message, "100"}, logTo(file)));
        for (int i = 0; i < 100; ++i)
            expected.insert("I/probe   " + pid(processes.back()->pid()) + message);
    }
    for (const auto& process : processes)
        expectSuccess(*process);

    const std::vector<std::string> lines = linesOf(contentOf(file));
    EXPECT_EQ(std::multiset<std::string>(lines.begin(), lines.end()), expected);
}

TEST(DlogOfAProcess, EntriesOfStaticObjectsArrive)
{
    const std::string file = ScratchRoot::file("early-and-late");
    ChildProcess process({LOG_PROBE, "nothing"}, {{"APPLIANCE_DLOG", file}, {"LOG_AT_START_AND_END", "1"}});
    expectSuccess(process);

    const std::string prefix = "I/probe   " + pid(process.pid());
    EXPECT_EQ(contentOf(file), prefix + "early\n" + prefix + "late\n");
}

TEST(DlogOfAProcess, WithoutFileAndJournalTheLogGoesToStandardError)
{
    ChildProcess process({LOG_PROBE, "once", "two\nlines"}, logTo());
    expectSuccess(process);

    const std::string prefix = "W/probe   " + pid(process.pid());
    EXPECT_EQ(process.errors(), prefix + "two\n" + prefix + "lines\n");
    EXPECT_EQ(process.output(), std::to_string(process.errors().size()) + "\n");
}

TEST(DlogOfAProcess, AFileThatCannotBeOpenedIsToldOnceAndStandardErrorUsed)
{
    ChildProcess process({LOG_PROBE, "many", "x", "2"}, logTo("/proc/no/such/file"));
    expectSuccess(process);

    const std::string line = "I/probe   " + pid(process.pid()) + "x\n";
    EXPECT_EQ(process.errors(),
              "dlog: cannot open /proc/no/such/file: No such file or directory; the log goes to standard "
              "error\n" +
                  line + line);
}

TEST(DlogOfAProcess, AReaderThatWentAwayIsAnErrorAndNoSignal)
{
    ChildProcess process({LOG_PROBE, "broken-pipe"}, logTo());
    expectSuccess(process);

    EXPECT_EQ(process.output(), std::to_string(DLOG_ERROR_NOT_PERMITTED) + "\n");
}

TEST(DlogOfAProcess, AFullDiskIsAnError)
{
    ChildProcess process({LOG_PROBE, "once", "x"}, logTo("/dev/full"));
    expectSuccess(process);

    EXPECT_EQ(process.output(), std::to_string(DLOG_ERROR_NOT_PERMITTED) + "\n");
}

TEST(DlogOfAProcess, AJournalThatListensGetsTheEntry)
{
    const JournalSocket journal;
    ChildProcess process({LOG_PROBE, "once", "hello"},
                         {{"APPLIANCE_DLOG", ""}, {"JOURNAL_SOCKET", journal.path}});
    expectSuccess(process);

    EXPECT_EQ(journal.receive(), "MESSAGE=hello\nPRIORITY=4\nSYSLOG_IDENTIFIER=probe\n");
    EXPECT_EQ(process.errors(), "");
    EXPECT_EQ(process.output(), "5\n");
}

TEST(DlogOfAProcess, TheFileGoesBeforeTheJournal)
{
    const JournalSocket journal;
    const std::string file = ScratchRoot::file("not-the-journal");
    ChildProcess process({LOG_PROBE, "once", "hello"},
                         {{"APPLIANCE_DLOG", file}, {"JOURNAL_SOCKET", journal.path}});
    expectSuccess(process);

    EXPECT_EQ(journal.receive(), "");
    EXPECT_EQ(contentOf(file), "W/probe   " + pid(process.pid()) + "hello\n");
}
