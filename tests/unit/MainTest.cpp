// The process entry, in a process of its own.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "ScratchRoot.h"
#include "SearchControlFixture.h"

using TestSupport::ChildProcess;
using TestSupport::ProcessEnd;

namespace {

using Texts = std::vector<std::string>;

const Texts START = {"[main:29] main", "[printVersion:73] Carvoy Version: 0.0.1-5.12", "[main:38] main----2",
                     "callbacks set, user data null"};

// There is no bus here, and so no voice control; the service does without.
const Texts CREATED = {"[_create:10] _create",
                       "[onCreate:25] Service::onCreate",
                       "[VoiceControl:52] ",
                       "[initVoiceControl:82] ",
                       "[initVoiceControl:86] [ERROR] Fail to initialize",
                       "create returned true"};
const Texts REQUESTED = {"[_app_control:23] app_control", "[onAppControl:34] Service::onAppControl"};
const Texts TERMINATED = {"[_terminate:16] _terminate", "[onTerminate:68] Service::onTerminate"};
const Texts VOICE_ENDED = {"[deinitVoiceControl:129] ",
                           "[deinitVoiceControl:142] vc_cmd_list_destroy: INVALID_PARAMETER",
                           "[deinitVoiceControl:145] vc_unprepare: INVALID_STATE",
                           "[deinitVoiceControl:147] vc_deinitialize: INVALID_STATE"};

struct ServiceRun {
    ProcessEnd end;
    Texts lines;  // of standard output
    std::string errors;
};

class MainTest : public SearchControlFixture {
  protected:
    static ServiceRun runMain(const Texts& arguments)
    {
        Texts command = {MAIN_PROBE};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const std::string noBus = "unix:path=" + TestSupport::ScratchRoot::file("no-bus");
        ChildProcess child(command, {{"DBUS_SESSION_BUS_ADDRESS", noBus}});
        ServiceRun run{child.wait(), {}, child.errors()};
        std::istringstream output(child.output());
        for (std::string line; std::getline(output, line);)
            run.lines.push_back(line);
        return run;
    }

    /** The start's lines and these behind them. */
    static Texts behindStart(const std::vector<Texts>& parts)
    {
        Texts all = START;
        for (const Texts& lines : parts)
            all.insert(all.end(), lines.begin(), lines.end());
        return all;
    }
};

}  // namespace

TEST_F(MainTest, TheStartLogsTheVersionAndEntersTheLoopWithThreeCallbacks)
{
    const ServiceRun run = runMain({"0"});
    EXPECT_TRUE(run.end.inTime);
    EXPECT_EQ(run.end.status, 0);
    EXPECT_EQ(run.lines, START);
    EXPECT_EQ(run.errors, "");
}

TEST_F(MainTest, TheResultOfTheLoopIsTheExitStatus)
{
    for (int status : {0, 1, 77, 234}) {
        const ServiceRun run = runMain({std::to_string(status)});
        EXPECT_EQ(run.end.status, status);
        EXPECT_EQ(run.lines, START);
        EXPECT_EQ(run.errors, "");
    }
}

TEST_F(MainTest, ALifeWithoutRequestsIsCreateAndTerminate)
{
    const ServiceRun run = runMain({"0", "create", "terminate"});
    EXPECT_EQ(run.end.status, 0);
    EXPECT_EQ(run.lines, behindStart({CREATED, TERMINATED, VOICE_ENDED}));
    EXPECT_EQ(statusRecord(), (StatusRecord{{}, {}, 0, {}, {}}));
    EXPECT_EQ(run.errors, "");
}

TEST_F(MainTest, ARequestFindsTheServiceThatCreateMade)
{
    const ServiceRun run = runMain({"0", "create", "show", "terminate"});
    EXPECT_EQ(run.lines, behindStart({CREATED, REQUESTED, TERMINATED, VOICE_ENDED}));
}

TEST_F(MainTest, ARequestBeforeCreateFindsAServiceToo)
{
    const ServiceRun run = runMain({"0", "show", "create", "terminate"});
    EXPECT_EQ(run.end.status, 0);
    EXPECT_EQ(run.lines, behindStart({REQUESTED, CREATED, TERMINATED, VOICE_ENDED}));
}

TEST_F(MainTest, TerminateWithoutCreateFindsAServiceToo)
{
    const ServiceRun run = runMain({"3", "terminate"});
    EXPECT_EQ(run.end.status, 3);
    EXPECT_EQ(run.lines, behindStart({TERMINATED}));
}

TEST_F(MainTest, CreateSucceedsWhereTheStatusStoreIsDamaged)
{
    writeFile(TestSupport::ScratchRoot::file("data-store.sqlite"), std::string(4096, 'x'));
    const ServiceRun run = runMain({"0", "create", "terminate"});
    EXPECT_EQ(run.end.status, 0);
    EXPECT_TRUE(holds(run.lines, "create returned true"));
    EXPECT_EQ(run.errors, "");
}

TEST_F(MainTest, MessagesStillQueuedAtTheEndDoNotKeepTheProcess)
{
    const ServiceRun run = runMain({"0", "create", "result", "result", "result", "terminate"});
    EXPECT_TRUE(run.end.inTime);
    EXPECT_EQ(run.end.status, 0);
    EXPECT_TRUE(holds(run.lines, "[onTerminate:68] Service::onTerminate"));
}
