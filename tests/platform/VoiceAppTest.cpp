// The client of an app: ready once the app's loop runs, and gone with the app however that ends.
#include <gtest/gtest.h>
#include <signal.h>
#include <voice_control_common.h>

#include <memory>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "PrivateBus.h"
#include "Recogniser.h"

namespace {

using TestSupport::ChildProcess;
using TestSupport::PrivateBus;
using TestSupport::ProcessEnd;
using TestSupport::Recogniser;
using TestSupport::Texts;

const char* const AppId = "org.example.voice-app";
constexpr int WaitReason = 77;
const std::string BeforeTheLoop = "initialize 0\nprepare 0\nwaiting\n";
const std::string Ready = "state 1 2\nname 0\ncommands 0\n";

class AnAppWithVoice : public testing::Test {
  protected:
    /** Starts the app; it waits in create, after it has prepared its client. */
    void start(const char* mode)
    {
        app = std::make_unique<ChildProcess>(std::vector<std::string>{VOICE_APP, mode});
        ASSERT_TRUE(app->waitForOutput("waiting")) << app->errors();
        recogniser = std::make_unique<Recogniser>(AppId);
    }

    void startAndMakeReady(const char* mode)
    {
        start(mode);
        app->signal(SIGUSR1);
        ASSERT_TRUE(app->waitForOutput("commands")) << app->output();
    }

    void expectEnd(int status, const std::string& output)
    {
        const ProcessEnd end = app->wait();
        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(end.status, status) << "signal " << end.signal << "\n" << app->errors();
        EXPECT_EQ(app->output(), output);
    }

    PrivateBus bus;
    std::unique_ptr<ChildProcess> app;
    std::unique_ptr<Recogniser> recogniser;
};

TEST_F(AnAppWithVoice, IsReadyOnceItsLoopRuns)
{
    start("in terminate");
    EXPECT_EQ(recogniser->state(), VC_STATE_INITIALIZED);
    app->signal(SIGUSR1);
    ASSERT_TRUE(app->waitForOutput(Ready)) << app->output();
    EXPECT_EQ(recogniser->state(), VC_STATE_READY);
    EXPECT_EQ(recogniser->invocationName(), "Carvoy");
    EXPECT_EQ(recogniser->commands(), Texts{"#org.tizen.commerce"});
    EXPECT_EQ(recogniser->waitForChanges(3), (Texts{"State", "InvocationName", "Commands"}));
    app->signal(SIGTERM);
    expectEnd(0, BeforeTheLoop + Ready + "terminate\nunset 0\nunprepare 0\ndeinitialize 0\nresult 0\n");
}

TEST_F(AnAppWithVoice, HearsWhatCameBeforeItsLoop)
{
    start("in terminate");
    EXPECT_EQ(recogniser->error(-5), "");
    EXPECT_EQ(recogniser->error(-12), "");
    app->signal(SIGUSR1);
    EXPECT_TRUE(app->waitForOutput("error -12")) << app->output();
    EXPECT_EQ(app->output(), BeforeTheLoop + Ready + "error -5\nerror -12\n");
}

TEST_F(AnAppWithVoice, MayEndItsClientWhenTheProcessExits)
{
    startAndMakeReady("at exit");
    app->signal(SIGTERM);
    expectEnd(0,
              BeforeTheLoop + Ready + "terminate\nresult 0\nunset -49610732\nunprepare 0\ndeinitialize 0\n");
}

TEST_F(AnAppWithVoice, MayLeaveItsClientToTheProcess)
{
    startAndMakeReady("never");
    app->signal(SIGTERM);
    expectEnd(0, BeforeTheLoop + Ready + "terminate\nresult 0\n");
    EXPECT_EQ(app->errors(), "");
}

TEST_F(AnAppWithVoice, IsNeverReadyWhereItRefusesToStart)
{
    start("refuse");
    EXPECT_EQ(recogniser->error(-5), "");
    app->signal(SIGUSR1);
    expectEnd(0,
              BeforeTheLoop + "terminate\nunset -49610735\nunprepare -49610735\ndeinitialize 0\nresult 0\n");
}

TEST_F(AnAppWithVoice, HearsNothingAfterASignalThatEndsIt)
{
    startAndMakeReady("in terminate");
    EXPECT_EQ(recogniser->error(WaitReason), "");
    ASSERT_TRUE(app->waitForOutput("commands 0\nwaiting\n")) << app->output();
    EXPECT_EQ(recogniser->error(-5), "");
    app->signal(SIGTERM);
    app->signal(SIGUSR1);
    expectEnd(0, BeforeTheLoop + Ready +
                     "waiting\nerror 77\nterminate\nunset 0\nunprepare 0\ndeinitialize 0\nresult 0\n");
}

TEST_F(AnAppWithVoice, EndsItsClientAlsoWhenTheBusIsGone)
{
    startAndMakeReady("in terminate");
    recogniser.reset();
    bus.kill();
    expectEnd(1,
              BeforeTheLoop + Ready + "terminate\nunset -49610732\nunprepare 0\ndeinitialize 0\nresult -5\n");
}

}  // namespace
