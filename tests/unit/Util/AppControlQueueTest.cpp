// The queue before the sender: order, pace, copies, and what is dropped or refused.
#include <unistd.h>

#include "AppControl.h"
#include "AppControlHandle.h"
#include "ChildProcess.h"
#include "Latch.h"
#include "ObservedTest.h"
#include "Sending.h"

using TestSupport::Call;
using TestSupport::Calls;
using TestSupport::Launch;
using Util::AppControl;
using Util::AppControlData;

namespace {

constexpr int kFailure = APP_CONTROL_ERROR_OUT_OF_MEMORY;

class AppControlQueue : public ObservedTest {
  protected:
    // What was queued before this is sent, and what was not will not be.
    ~AppControlQueue() override { settle(); }

    static void settle()
    {
        Latch settled;
        AppControlData last = messageTo("org.example.last");
        Calls::before("app_control_destroy", [&] {
            const std::vector<Launch> sent = Calls::launches();
            if (!sent.empty() && sent.back().appId == "org.example.last")
                settled.open();
        });
        AppControl::performAppControl(last);
        EXPECT_TRUE(settled.wait());
        Calls::before("app_control_destroy", nullptr);
    }

    static List targets()
    {
        List ids;
        for (const Launch& launch : Calls::launches())
            ids.push_back(launch.appId);
        return ids;
    }
};

}  // namespace

TEST_F(AppControlQueue, SendsOnAThreadOfItsOwn)
{
    AppControlData data = message();
    AppControl::performAppControl(data);

    ASSERT_TRUE(Calls::waitForLaunches(1));
    const pid_t worker = Calls::of("app_control_send_launch_request").at(0).thread;
    EXPECT_NE(worker, gettid());
    settle();
    EXPECT_EQ(namesOf(platformCalls(worker)).front(), "create");
    EXPECT_EQ(platformCalls(), std::vector<List>());
}

TEST_F(AppControlQueue, ReturnsWhileASendIsBlocked)
{
    Latch released;
    Calls::before("app_control_send_launch_request", [&] { released.wait(); });
    AppControlData data = message();
    AppControl::performAppControl(data);
    ASSERT_TRUE(Calls::waitFor("app_control_send_launch_request", 1));
    AppControl::performAppControl(data);

    EXPECT_TRUE(Calls::launches().empty());
    released.open();
    EXPECT_TRUE(Calls::waitForLaunches(2));
    Calls::before("app_control_send_launch_request", nullptr);
}

TEST_F(AppControlQueue, SendsTheMessageAsItWasWhenItWasQueued)
{
    auto data = std::make_unique<AppControlData>(message());
    AppControl::performAppControl(*data);
    data->setPackageName("org.example.changed").clearExtraData().clearExtraVectorData();
    data.reset();

    ASSERT_TRUE(Calls::waitForLaunches(1));
    const Launch launch = Calls::launches().at(0);
    EXPECT_EQ(launch.appId, "org.example.app");
    EXPECT_EQ(launch.extras, message().getExtraDataMap());
    EXPECT_EQ(launch.lists, message().getExtraVectorDataMap());
}

TEST_F(AppControlQueue, LeavesTheCallersMessageAsItIs)
{
    AppControlData data = message();
    AppControl::performAppControl(data);

    EXPECT_EQ(data.getPackageName(), "org.example.app");
    EXPECT_EQ(data.getExtraDataMap(), message().getExtraDataMap());
    EXPECT_EQ(data.getExtraVectorDataMap(), message().getExtraVectorDataMap());
}

TEST_F(AppControlQueue, LaunchesInTheOrderOfTheCalls)
{
    List expected;
    for (int i = 0; i < 5; ++i) {
        expected.push_back("org.example.app" + std::to_string(i));
        AppControlData data = messageTo(expected.back());
        AppControl::performAppControl(data);
    }

    ASSERT_TRUE(Calls::waitForLaunches(5));
    EXPECT_EQ(targets(), expected);
}

TEST_F(AppControlQueue, SleepsFiftyMillisecondsBetweenTwoSends)
{
    AppControlData data = message();
    for (int i = 0; i < 3; ++i)
        AppControl::performAppControl(data);
    ASSERT_TRUE(Calls::waitForLaunches(3));

    const pid_t worker = Calls::of("app_control_send_launch_request").at(0).thread;
    int sleeps = 0;
    int sends = 0;
    for (const Call& call : Calls::all()) {
        if (call.thread != worker)
            continue;
        if (call.name == "nanosleep" && call.arguments == List{"0", "50000000"})
            ++sleeps;
        if (call.name == "app_control_send_launch_request") {
            EXPECT_TRUE(sends++ == 0 || sleeps > 0);
            sleeps = 0;
        }
    }
    EXPECT_EQ(sends, 3);
}

TEST_F(AppControlQueue, AReplyIsRefusedWithALogLineAndNothingElse)
{
    AppControlHandle request;
    Calls::reset();
    AppControlData data = message();
    data.setRequestedAppControl(request.get());
    AppControl::performAppControl(data);
    settle();

    EXPECT_EQ(errors(),
              List{"AppControl.cpp: performAppControl(218) > Reply App Control must be called by sync"});
    EXPECT_TRUE(Calls::replies().empty());
    EXPECT_EQ(targets(), List{"org.example.last"});
    EXPECT_EQ(Calls::count("app_control_create"), 1U);
}

TEST_F(AppControlQueue, AFailedSendIsLoggedOnceAndNotRetried)
{
    Calls::fail("app_control_send_launch_request", kFailure);
    AppControlData data = message();
    AppControl::performAppControl(data);
    settle();

    EXPECT_EQ(errors(), List{"AppControl.cpp: performAppControlSync(299) > Failed to launch request"});
    EXPECT_EQ(targets(), (List{"org.example.app", "org.example.last"}));
}

TEST_F(AppControlQueue, NothingComesBackToTheMainLoop)
{
    AppControlData data = message();
    AppControl::performAppControl(data);
    settle();

    EXPECT_EQ(Calls::count("ecore_main_loop_thread_safe_call_async"), 0U);
    EXPECT_EQ(Calls::count("ecore_main_loop_thread_safe_call_sync"), 0U);
}

TEST_F(AppControlQueue, PassesTheReplyCallbackOn)
{
    static int calls;
    calls = 0;
    AppControlData data = message();
    data.setReplyCallback(
        [](app_control_h, app_control_h, app_control_result_e, void* count) { ++*static_cast<int*>(count); },
        &calls);
    AppControl::performAppControl(data);
    ASSERT_TRUE(Calls::waitForLaunches(1));
    settle();

    Calls::launches().at(0).answer(APP_CONTROL_RESULT_SUCCEEDED);
    EXPECT_EQ(calls, 1);
}

// Five seconds of sends are queued when main returns.
TEST(AppControlAtExit, WhatIsStillQueuedIsDropped)
{
    TestSupport::ChildProcess process({SENDER_EXIT_PROBE});
    const TestSupport::ProcessEnd end = process.wait();

    EXPECT_TRUE(end.inTime);
    EXPECT_EQ(end.status, 0) << process.errors();
    EXPECT_NE(process.output().find("dropped some: yes"), std::string::npos) << process.output();
}
