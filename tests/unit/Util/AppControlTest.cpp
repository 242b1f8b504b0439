// The sender: how a message becomes a launch, and what each failing step leaves behind.
#include "AppControl.h"

#include <unistd.h>

#include <ostream>

#include "AppControlHandle.h"
#include "ObservedTest.h"
#include "Sending.h"

using TestSupport::Calls;
using TestSupport::Launch;
using TestSupport::Reply;
using Util::AppControl;
using Util::AppControlData;

namespace {

constexpr int kFailure = APP_CONTROL_ERROR_OUT_OF_MEMORY;

class AppControlSync : public ObservedTest {};

// One step of a send, the call that fails in it and what is logged then.
struct Step {
    std::string function;
    std::string error;
    size_t callsBefore;
};

void PrintTo(const Step& step, std::ostream* out)
{
    *out << step.function;
}

class AppControlSyncStep : public ObservedTest, public testing::WithParamInterface<Step> {};

}  // namespace

TEST_F(AppControlSync, MakesOneHandleFillsItInOrderLaunchesAndDestroysIt)
{
    AppControlData data = message();

    EXPECT_EQ(AppControl::performAppControlSync(data), 0);
    EXPECT_EQ(platformCalls(),
              (std::vector<List>{{"create"},
                                 {"set_app_id", "org.example.app"},
                                 {"set_operation", "http://example/op"},
                                 {"set_uri", "file:///uri"},
                                 {"add_extra_data", "a", "1"},
                                 {"add_extra_data", "b", "2"},
                                 {"add_extra_data_array", "c", "3"},
                                 {"add_extra_data_array", "d", "4", ""},
                                 {"send_launch_request", "org.example.app", "http://example/op"},
                                 {"destroy"}}));
    EXPECT_EQ(errors(), List());
}

TEST_F(AppControlSync, TheReceiverGetsWhatTheMessageHolds)
{
    AppControlData data = message();
    AppControl::performAppControlSync(data);

    const Launch launch = Calls::launches().at(0);
    EXPECT_EQ(launch.appId, "org.example.app");
    EXPECT_EQ(launch.operation, "http://example/op");
    EXPECT_EQ(launch.uri, "file:///uri");
    EXPECT_EQ(launch.extras, data.getExtraDataMap());
    EXPECT_EQ(launch.lists, data.getExtraVectorDataMap());
}

TEST_F(AppControlSync, SendsOnTheCallingThread)
{
    AppControlData data = message();
    AppControl::performAppControlSync(data);

    EXPECT_EQ(Calls::of("app_control_send_launch_request").at(0).thread, gettid());
}

TEST_F(AppControlSync, AnEmptyMessageIsLaunchedAsItIs)
{
    AppControlData data;

    EXPECT_EQ(AppControl::performAppControlSync(data), 0);
    EXPECT_EQ(namesOf(platformCalls()), (List{"create", "send_launch_request", "destroy"}));
}

TEST_F(AppControlSync, WithoutAPackageNameNoAppIdIsSet)
{
    AppControlData data = message();
    data.setPackageName("");

    EXPECT_EQ(AppControl::performAppControlSync(data), 0);
    EXPECT_EQ(Calls::count("app_control_set_app_id"), 0U);
    EXPECT_EQ(Calls::launches().at(0).operation, "http://example/op");
}

TEST_F(AppControlSync, EmptyKeysTextsAndListsDoNotReachThePlatform)
{
    AppControlData data = messageTo("org.example.app");
    data.addExtraData("", "value").addExtraData("empty", "").addExtraData("kept", "x");
    data.addExtraVectorData("", {"value"}).addExtraVectorData("empty", {}).addExtraVectorData("list", {""});

    EXPECT_EQ(AppControl::performAppControlSync(data), 0);
    EXPECT_EQ(Calls::launches().at(0).keys, (List{"kept", "list"}));
    EXPECT_EQ(Calls::count("app_control_add_extra_data"), 1U);
    EXPECT_EQ(Calls::count("app_control_add_extra_data_array"), 1U);
    EXPECT_EQ(errors(), List());
}

TEST_F(AppControlSync, ALongListKeepsItsOrder)
{
    List list;
    for (int i = 0; i < 1000; ++i)
        list.push_back(std::to_string(i));
    AppControlData data = messageTo("org.example.app");
    data.addExtraVectorData("list", list);
    AppControl::performAppControlSync(data);

    EXPECT_EQ(Calls::launches().at(0).lists.at("list"), list);
}

TEST_F(AppControlSync, ThePlatformGetsTheReplyCallbackAndItsUserData)
{
    static app_control_result_e answered;
    answered = APP_CONTROL_RESULT_APP_STARTED;
    AppControlData data = message();
    data.setReplyCallback([](app_control_h, app_control_h, app_control_result_e result,
                             void* place) { *static_cast<app_control_result_e*>(place) = result; },
                          &answered);
    AppControl::performAppControlSync(data);

    Calls::launches().at(0).answer(APP_CONTROL_RESULT_CANCELED);
    EXPECT_EQ(answered, APP_CONTROL_RESULT_CANCELED);
}

TEST_F(AppControlSync, WithoutAReplyCallbackNoReplyIsWanted)
{
    AppControlData data = message();
    AppControl::performAppControlSync(data);

    EXPECT_EQ(Calls::launches().at(0).callback, nullptr);
    EXPECT_EQ(Calls::launches().at(0).userData, nullptr);
}

TEST_F(AppControlSync, AMessageWithARequestIsAReplyToIt)
{
    AppControlHandle request;
    AppControlData data = message();
    data.setRequestedAppControl(request.get());
    data.setResultCode(APP_CONTROL_RESULT_FAILED);

    EXPECT_EQ(AppControl::performAppControlSync(data), 0);
    const Reply reply = Calls::replies().at(0);
    EXPECT_EQ(reply.request, request.get());
    EXPECT_EQ(reply.result, APP_CONTROL_RESULT_FAILED);
    EXPECT_EQ(reply.message.extras, data.getExtraDataMap());
    EXPECT_EQ(reply.message.lists, data.getExtraVectorDataMap());
    EXPECT_TRUE(Calls::launches().empty());
    EXPECT_EQ(Calls::order({"app_control_reply_to_launch_request", "app_control_destroy"}),
              (List{"app_control_reply_to_launch_request", "app_control_destroy"}));
}

TEST_F(AppControlSync, AReplyThatFailsIsLoggedLikeALaunch)
{
    AppControlHandle request;
    AppControlData data;
    data.setRequestedAppControl(request.get());
    Calls::fail("app_control_reply_to_launch_request", kFailure);

    EXPECT_EQ(AppControl::performAppControlSync(data), kFailure);
    EXPECT_EQ(errors(), List{"AppControl.cpp: performAppControlSync(299) > Failed to launch request"});
    EXPECT_EQ(Calls::count("app_control_destroy"), 0U);
}

TEST_F(AppControlSync, WithoutAHandleTheCodeOfTheCreateCallIsReturned)
{
    AppControlData data = message();
    Calls::fail("app_control_create", 0);

    EXPECT_EQ(AppControl::performAppControlSync(data), 0);
    EXPECT_EQ(errors(),
              List{"AppControl.cpp: performAppControlSync(238) > Failed to create app_control handle"});
    EXPECT_TRUE(Calls::launches().empty());
}

TEST_F(AppControlSync, TheFirstExtraThatFailsEndsTheSend)
{
    AppControlData data = message();
    data.addExtraData("bb", "not tried");
    Calls::fail("app_control_add_extra_data", kFailure, 2);

    EXPECT_EQ(AppControl::performAppControlSync(data), kFailure);
    EXPECT_EQ(Calls::count("app_control_add_extra_data"), 2U);
    EXPECT_EQ(errors(), List{"AppControl.cpp: performAppControlSync(270) > Failed to add extra data"});
}

TEST_F(AppControlSync, TheFirstListThatFailsEndsTheSend)
{
    AppControlData data = message();
    data.addExtraVectorData("e", {"not tried"});
    Calls::fail("app_control_add_extra_data_array", kFailure, 2);

    EXPECT_EQ(AppControl::performAppControlSync(data), kFailure);
    EXPECT_EQ(Calls::count("app_control_add_extra_data_array"), 2U);
    EXPECT_EQ(errors(), List{"AppControl.cpp: performAppControlSync(286) > Failed to add extra vector data"});
}

TEST_F(AppControlSync, WhatThePlatformRefusesIsReportedWithItsCode)
{
    AppControlData data = messageTo("org.example.app");
    data.addExtraData("__AUL_key", "value");

    EXPECT_EQ(AppControl::performAppControlSync(data), APP_CONTROL_ERROR_KEY_REJECTED);
    EXPECT_EQ(errors(), List{"AppControl.cpp: performAppControlSync(270) > Failed to add extra data"});
}

TEST_P(AppControlSyncStep, AFailureIsLoggedAndReturnedAndNothingMoreIsCalled)
{
    AppControlData data = message();
    Calls::fail("app_control_" + GetParam().function, kFailure);

    EXPECT_EQ(AppControl::performAppControlSync(data), kFailure);
    EXPECT_EQ(errors(), List{"AppControl.cpp: performAppControlSync" + GetParam().error});
    const List called = namesOf(platformCalls());
    EXPECT_EQ(called.size(), GetParam().callsBefore + 1);
    EXPECT_EQ(called.back(), GetParam().function);
}

INSTANTIATE_TEST_SUITE_P(Steps, AppControlSyncStep,
                         testing::Values(Step{"create", "(238) > Failed to create app_control handle", 0},
                                         Step{"set_app_id", "(245) > Failed to set app id", 1},
                                         Step{"set_operation", "(253) > Failed to set operation", 2},
                                         Step{"set_uri", "(261) > Failed to set uri", 3},
                                         Step{"add_extra_data", "(270) > Failed to add extra data", 4},
                                         Step{"add_extra_data_array",
                                              "(286) > Failed to add extra vector data", 6},
                                         Step{"send_launch_request", "(299) > Failed to launch request", 8},
                                         Step{"destroy", "(305) > Failed to destroy app_control handle", 9}),
                         [](const auto& step) { return step.param.function; });
