// The life of an app: from its name on the bus to its exit status.
#include <gtest/gtest.h>
#include <service_app.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "ChildProcess.h"
#include "PrivateBus.h"
#include "RawPeer.h"

namespace {

using TestSupport::ChildProcess;
using TestSupport::PrivateBus;
using TestSupport::RawPeer;

const char* const AppId = "org.example.test-app";

class AnApp : public testing::Test {
  protected:
    void start(const std::string& mode = "")
    {
        app = std::make_unique<ChildProcess>(std::vector<std::string>{TEST_APP, mode});
    }

    void startOnBus(const std::string& mode = "")
    {
        start(mode);
        ASSERT_TRUE(TestSupport::waitForName(AppId)) << app->errors();
    }

    void expectExit(int status)
    {
        const TestSupport::ProcessEnd end = app->wait();
        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(end.status, status) << "signal " << end.signal << "\n" << app->errors();
    }

    PrivateBus bus;
    std::unique_ptr<ChildProcess> app;
};

bool createNothing(void*)
{
    return true;
}

TEST(ServiceAppMain, RefusesBadArguments)
{
    char name[] = "name";
    char* argv[] = {name, nullptr};
    service_app_lifecycle_callback_s callbacks{createNothing, nullptr, nullptr};
    service_app_lifecycle_callback_s withoutCreate{};
    EXPECT_EQ(service_app_main(0, argv, &callbacks, nullptr), APP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(service_app_main(1, nullptr, &callbacks, nullptr), APP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(service_app_main(1, argv, nullptr, nullptr), APP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(service_app_main(1, argv, &withoutCreate, nullptr), APP_ERROR_INVALID_PARAMETER);
}

TEST(ServiceAppMain, RefusesAProgramThatIsNoApp)
{
    char name[] = "name";
    char* argv[] = {name, nullptr};
    service_app_lifecycle_callback_s callbacks{createNothing, nullptr, nullptr};
    testing::internal::CaptureStderr();
    EXPECT_EQ(service_app_main(1, argv, &callbacks, nullptr), APP_ERROR_INVALID_CONTEXT);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("no app id"), std::string::npos);
}

TEST(ServiceAppExit, DoesNothingWhereNoAppRuns)
{
    service_app_exit();
}

TEST_F(AnApp, EndsWellOnSigterm)
{
    startOnBus();
    app->signal(SIGTERM);
    expectExit(0);
    EXPECT_EQ(app->output(), "create\nterminate\nresult 0\n");
    EXPECT_EQ(app->errors(), "");
}

TEST_F(AnApp, EndsWellOnSigint)
{
    startOnBus();
    app->signal(SIGINT);
    expectExit(0);
    EXPECT_EQ(app->output(), "create\nterminate\nresult 0\n");
}

TEST_F(AnApp, LeavesTheBusWhenItEnds)
{
    startOnBus();
    app->signal(SIGTERM);
    expectExit(0);
    EXPECT_TRUE(TestSupport::waitForName(AppId, false));
}

class AnEndBeforeTheLoop : public AnApp, public testing::WithParamInterface<const char*> {};

TEST_P(AnEndBeforeTheLoop, RunsNoLoopAndStillTerminates)
{
    start(GetParam());
    expectExit(0);
    EXPECT_EQ(app->output(), "create\nterminate\nresult 0\n");
}

INSTANTIATE_TEST_SUITE_P(OfAnApp, AnEndBeforeTheLoop,
                         testing::Values("refuse", "signal in create", "exit in create",
                                         "exit in create from thread"));

TEST_F(AnApp, EndsWhenARequestMakesItExit)
{
    startOnBus();
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "exit"), "");
    expectExit(0);
    EXPECT_EQ(app->output(), "create\nterminate\nresult 0\n");
}

TEST_F(AnApp, EndsWhenAnotherThreadMakesItExit)
{
    startOnBus();
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "exit from thread"), "");
    expectExit(0);
    EXPECT_EQ(app->output(), "create\nterminate\nresult 0\n");
}

TEST_F(AnApp, HandlesNoRequestAfterItAskedToExit)
{
    start("wait in create");
    ASSERT_TRUE(app->waitForOutput("waiting"));
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "exit"), "");
    EXPECT_EQ(peer.launch(AppId, "describe"), "");
    app->signal(SIGUSR1);
    expectExit(0);
    EXPECT_EQ(app->output(), "create\nwaiting\nterminate\nresult 0\n");
}

TEST_F(AnApp, HandlesNoRequestAfterTheSignalThatEndsIt)
{
    start("wait in create");
    ASSERT_TRUE(app->waitForOutput("waiting"));
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "signal"), "");
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(peer.launch(AppId, "describe"), "");
    app->signal(SIGUSR1);
    expectExit(0);
    EXPECT_EQ(app->output(), "create\nwaiting\nterminate\nresult 0\n");
}

TEST_F(AnApp, HandlesARequestThatCameBeforeItWasReady)
{
    start("wait in create");
    ASSERT_TRUE(app->waitForOutput("waiting"));
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "hello"), "");
    app->signal(SIGUSR1);
    EXPECT_TRUE(app->waitForOutput("request hello"));
}

TEST_F(AnApp, RunsOnlyOnce)
{
    startOnBus();
    ChildProcess second({TEST_APP});
    const TestSupport::ProcessEnd end = second.wait();
    EXPECT_EQ(end.status, EXIT_FAILURE);
    EXPECT_EQ(second.output(), "result " + std::to_string(TIZEN_ERROR_RESOURCE_BUSY) + "\n");
    EXPECT_NE(second.errors().find("taken"), std::string::npos) << second.errors();
}

TEST_F(AnApp, DoesNotTakeItsNameFromAnotherProgram)
{
    RawPeer peer(AppId);
    start();
    expectExit(EXIT_FAILURE);
    EXPECT_EQ(peer.launch(AppId, "still me"), "");
    EXPECT_EQ(peer.nextLaunch()->operation, "still me");
}

TEST_F(AnApp, SaysSoWhenThereIsNoBus)
{
    bus.kill();
    start();
    expectExit(EXIT_FAILURE);
    EXPECT_EQ(app->output(), "result " + std::to_string(TIZEN_ERROR_IO_ERROR) + "\n");
    EXPECT_NE(app->errors().find("cannot be reached"), std::string::npos) << app->errors();
}

TEST_F(AnApp, EndsWithAnErrorWhenTheBusGoesAway)
{
    startOnBus();
    bus.kill();
    expectExit(EXIT_FAILURE);
    EXPECT_EQ(app->output(), "create\nterminate\nresult " + std::to_string(TIZEN_ERROR_IO_ERROR) + "\n");
    EXPECT_NE(app->errors().find("went away"), std::string::npos) << app->errors();
}

TEST_F(AnApp, EndsWithAnErrorWhenTheBusGoesAwayDuringCreate)
{
    start("wait in create");
    ASSERT_TRUE(app->waitForOutput("waiting"));
    bus.kill();
    app->signal(SIGUSR1);
    expectExit(EXIT_FAILURE);
    EXPECT_NE(app->output().find("terminate"), std::string::npos);
}

TEST_F(AnApp, RefusesToRunInsideItself)
{
    startOnBus();
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "main again"), "");
    EXPECT_TRUE(app->waitForOutput("main again " + std::to_string(APP_ERROR_ALREADY_RUNNING)));
}

TEST_F(AnApp, NeedsNeitherTerminateNorAppControl)
{
    startOnBus("only create");
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "anything"), "");
    app->signal(SIGTERM);
    expectExit(0);
    EXPECT_EQ(app->output(), "create\nresult 0\n");
}

TEST_F(AnApp, CanStillSendInTerminate)
{
    startOnBus("send in terminate");
    app->signal(SIGTERM);
    expectExit(0);
    EXPECT_TRUE(app->waitForOutput("send " + std::to_string(APP_CONTROL_ERROR_APP_NOT_FOUND)));
}

TEST_F(AnApp, CannotSendAfterItsEnd)
{
    startOnBus("send after main");
    app->signal(SIGTERM);
    expectExit(0);
    EXPECT_TRUE(app->waitForOutput("send " + std::to_string(APP_CONTROL_ERROR_IO_ERROR)));
}

// How often the thread of this name has given the processor away: each wake-up adds one.
long sleeps(pid_t process, const std::string& thread)
{
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream file(task.path() / "status");
        const std::string status(std::istreambuf_iterator<char>(file), {});
        if (status.rfind("Name:\t" + thread + "\n", 0) == 0)
            return std::stol(status.substr(status.find("\nvoluntary_ctxt_switches:") + 25));
    }
    return -1;
}

TEST_F(AnApp, ComesToRestWhenThereIsNothingToDo)
{
    startOnBus();
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "ping"), "");
    std::pair<long, long> before;
    std::pair<long, long> after{-1, -1};
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::Patience;
    // A second without a wake-up must come; an app that polls has none.
    do {
        before = after;
        std::this_thread::sleep_for(std::chrono::seconds(1));
        after = {sleeps(app->pid(), "test-app"), sleeps(app->pid(), "app-bus")};
    } while (before != after && std::chrono::steady_clock::now() < deadline);
    EXPECT_EQ(before, after);
    EXPECT_GT(after.first, 0);
    EXPECT_GT(after.second, 0);
}

}  // namespace
