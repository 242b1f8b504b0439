// A client of voice control through its life: begun, prepared, given up, and begun again.
#include <voice_control.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "Patience.h"
#include "VoiceTool.h"

namespace {

using TestSupport::Heard;
using TestSupport::Texts;
using TestSupport::VoiceTool;

/** Asks until the answer is this one, without the main loop; false when that does not happen in time. */
bool answersSoon(int expected, int (*function)())
{
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::Patience;
    while (function() != expected) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::yield();
    }
    return true;
}

int initializeAndDeinitialize()
{
    const int code = vc_initialize();
    vc_deinitialize();
    return code;
}

class AVoiceClient : public VoiceTool {
  protected:
    /** The client has not seen it when this returns. */
    void endTheBus()
    {
        recogniser.reset();
        bus.kill();
    }
};

TEST_F(AVoiceClient, BecomesReadyOnTheMainLoopAndSaysSo)
{
    initialize();
    EXPECT_EQ(state(), VC_STATE_INITIALIZED);
    EXPECT_EQ(recogniser->state(), VC_STATE_INITIALIZED);
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    EXPECT_EQ(state(), VC_STATE_INITIALIZED);
    EXPECT_EQ(hear(1), Heard{"state 1 2"});
    EXPECT_EQ(state(), VC_STATE_READY);
    EXPECT_EQ(recogniser->state(), VC_STATE_READY);
    EXPECT_EQ(recogniser->waitForChanges(1), Texts{"State"});
}

TEST_F(AVoiceClient, ShowsItsNewStateBeforeItIsToldOfIt)
{
    initialize();
    std::int32_t shown = -1;
    inCallback = [&] { shown = recogniser->state(); };
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    hear(1);
    EXPECT_EQ(shown, VC_STATE_READY);
    EXPECT_EQ(recogniser->clientState(1), "");
    hear(2);
    EXPECT_EQ(shown, VC_STATE_INITIALIZED);
}

TEST_F(AVoiceClient, BecomesReadyOnceHoweverOftenItIsPrepared)
{
    initialize();
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->error(-5), "");
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    settle();
    EXPECT_EQ(heard, (Heard{"state 1 2", "error -5"}));
}

TEST_F(AVoiceClient, GoesBackToInitializedAtOnceAndHearsOfItLater)
{
    makeReady();
    EXPECT_EQ(vc_unprepare(), VC_ERROR_NONE);
    EXPECT_EQ(state(), VC_STATE_INITIALIZED);
    EXPECT_EQ(recogniser->state(), VC_STATE_INITIALIZED);
    EXPECT_EQ(heard, Heard{});
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    settle();
    EXPECT_EQ(heard, (Heard{"state 2 1", "state 1 2"}));
}

TEST_F(AVoiceClient, HearsNothingOfTheTimeBeforeItsEnd)
{
    initialize();
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->clientState(2), "");
    EXPECT_EQ(recogniser->result(0, {"milk"}, {"{}"}), "");
    EXPECT_EQ(vc_deinitialize(), VC_ERROR_NONE);
    EXPECT_EQ(state(), VC_STATE_NONE);
    initialize();
    settle();
    EXPECT_EQ(heard, Heard{});
    EXPECT_EQ(state(), VC_STATE_INITIALIZED);
}

TEST_F(AVoiceClient, HearsNoStateOfAnUnprepareBeforeItsEnd)
{
    makeReady();
    EXPECT_EQ(vc_unprepare(), VC_ERROR_NONE);
    EXPECT_EQ(vc_deinitialize(), VC_ERROR_NONE);
    initialize();
    settle();
    EXPECT_EQ(heard, Heard{});
}

TEST_F(AVoiceClient, IsOnTheBusFromItsBeginningToItsEnd)
{
    EXPECT_FALSE(recogniser->isOnBus());
    for (int round = 0; round < 50; ++round) {
        ASSERT_EQ(vc_initialize(), VC_ERROR_NONE);
        ASSERT_EQ(recogniser->state(), VC_STATE_INITIALIZED);
        ASSERT_EQ(vc_deinitialize(), VC_ERROR_NONE);
        ASSERT_FALSE(recogniser->isOnBus());
        ASSERT_EQ(recogniser->serviceState(1), TestSupport::ErrorPrefix + "UnknownObject");
    }
}

TEST_F(AVoiceClient, ForgetsEverythingAtItsEnd)
{
    makeReady();
    EXPECT_EQ(vc_set_invocation_name("Carvoy"), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->serviceState(3), "");
    EXPECT_EQ(recogniser->language("de_DE"), "");
    hear(2);
    EXPECT_EQ(vc_deinitialize(), VC_ERROR_NONE);
    heard.clear();
    EXPECT_EQ(vc_initialize(), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->invocationName(), "");
    vc_service_state_e service = VC_SERVICE_STATE_READY;
    EXPECT_EQ(vc_get_service_state(&service), VC_ERROR_NONE);
    EXPECT_EQ(service, VC_SERVICE_STATE_NONE);
    EXPECT_EQ(recogniser->error(-5), "");
    settle();
    EXPECT_EQ(heard, Heard{});
    EXPECT_EQ(vc_deinitialize(), VC_ERROR_NONE);
    initialize();
    EXPECT_EQ(recogniser->language("ko_KR"), "");
    EXPECT_EQ(hear(1), Heard{"language 'en_US' 'ko_KR'"});
}

TEST_F(AVoiceClient, CannotBeginTwice)
{
    EXPECT_EQ(vc_initialize(), VC_ERROR_NONE);
    EXPECT_EQ(vc_initialize(), VC_ERROR_INVALID_STATE);
    EXPECT_EQ(state(), VC_STATE_INITIALIZED);
}

TEST_F(AVoiceClient, CannotEndInsideAnyCallback)
{
    std::vector<int> codes;
    makeReady();
    inCallback = [&] { codes.push_back(vc_deinitialize()); };
    recogniser->result(0, {"a"}, {});
    recogniser->clientState(1);
    recogniser->serviceState(1);
    recogniser->language("ko_KR");
    recogniser->error(-5);
    EXPECT_EQ(hear(5).size(), 5U);
    EXPECT_EQ(codes, std::vector<int>(5, VC_ERROR_OPERATION_FAILED));
    inCallback = nullptr;
    EXPECT_EQ(vc_deinitialize(), VC_ERROR_NONE);
}

TEST_F(AVoiceClient, MayPrepareAndUnprepareInsideACallback)
{
    initialize();
    int left = 3;
    inCallback = [&] {
        const bool ready = state() == VC_STATE_READY;
        if (left-- > 0) {
            EXPECT_EQ(ready ? vc_unprepare() : vc_prepare(), VC_ERROR_NONE);
        }
    };
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    EXPECT_EQ(hear(4), (Heard{"state 1 2", "state 2 1", "state 1 2", "state 2 1"}));
}

// The interleaving: what the recogniser says arrives first, but is delivered when the preparation is under
// way.
TEST_F(AVoiceClient, GivesUpAPreparationThatAChangeOfStateOvertakes)
{
    for (const int state : {0, 2, 7}) {
        initialize();
        EXPECT_EQ(recogniser->clientState(state), "");
        EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
        settle();
        EXPECT_EQ(heard, Heard{"state 1 " + std::to_string(state)});
        EXPECT_EQ(vc_deinitialize(), VC_ERROR_NONE);
        heard.clear();
    }
}

TEST_F(AVoiceClient, GoesOnWithAPreparationWhereTheStateStays)
{
    initialize();
    EXPECT_EQ(recogniser->clientState(1), "");
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    settle();
    EXPECT_EQ(heard, (Heard{"state 1 1", "state 1 2"}));
}

TEST_F(AVoiceClient, IsMadeReadyByTheNewPreparationNotByTheOneGivenUp)
{
    initialize();
    recogniser->clientState(2);
    recogniser->clientState(1);
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    recogniser->error(-5);
    inCallback = [] {
        if (state() == VC_STATE_INITIALIZED)
            vc_prepare();
    };
    settle();
    settle();
    EXPECT_EQ(heard, (Heard{"state 1 2", "state 2 1", "error -5", "state 1 2"}));
}

TEST_F(AVoiceClient, NeedsABus)
{
    endTheBus();
    EXPECT_TRUE(answersSoon(VC_ERROR_OPERATION_FAILED, initializeAndDeinitialize));
    EXPECT_EQ(vc_initialize(), VC_ERROR_OPERATION_FAILED);
    EXPECT_EQ(state(), VC_STATE_NONE);
    EXPECT_EQ(vc_deinitialize(), VC_ERROR_INVALID_STATE);
    TestSupport::PrivateBus another;
    EXPECT_EQ(vc_initialize(), VC_ERROR_NONE);
    EXPECT_EQ(vc_deinitialize(), VC_ERROR_NONE);
}

TEST_F(AVoiceClient, SurvivesTheLossOfTheBus)
{
    makeReady();
    EXPECT_EQ(recogniser->serviceState(2), "");
    endTheBus();
    EXPECT_TRUE(answersSoon(VC_ERROR_OPERATION_FAILED, [] { return vc_set_invocation_name("Carvoy"); }));
    EXPECT_EQ(hear(1), Heard{"service 0 2"});
    vc_cmd_list_h list = nullptr;
    vc_cmd_list_create(&list);
    EXPECT_EQ(vc_set_invocation_name("Carvoy"), VC_ERROR_OPERATION_FAILED);
    EXPECT_EQ(vc_set_command_list(list, VC_COMMAND_TYPE_BACKGROUND), VC_ERROR_OPERATION_FAILED);
    EXPECT_EQ(vc_unset_command_list(VC_COMMAND_TYPE_BACKGROUND), VC_ERROR_OPERATION_FAILED);
    vc_cmd_list_destroy(list, false);
    EXPECT_EQ(state(), VC_STATE_READY);
    EXPECT_EQ(vc_unprepare(), VC_ERROR_NONE);
    EXPECT_EQ(vc_prepare(), VC_ERROR_OPERATION_FAILED);
    EXPECT_EQ(hear(2), (Heard{"service 0 2", "state 2 1"}));
    EXPECT_EQ(vc_deinitialize(), VC_ERROR_NONE);
    EXPECT_EQ(state(), VC_STATE_NONE);
}

TEST_F(AVoiceClient, IsToldWhereItsPreparationFindsNoBus)
{
    initialize();
    // The callback holds up the preparation until the bus is gone.
    inCallback = [&] {
        inCallback = nullptr;
        EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
        endTheBus();
        EXPECT_TRUE(answersSoon(VC_ERROR_OPERATION_FAILED, vc_prepare));
    };
    EXPECT_EQ(recogniser->error(-5), "");
    EXPECT_EQ(hear(2), (Heard{"error -5", "error " + std::to_string(VC_ERROR_ENGINE_NOT_FOUND)}));
    EXPECT_EQ(state(), VC_STATE_INITIALIZED);
}

TEST_F(AVoiceClient, HasTheLastCallbackThatWasSet)
{
    initialize();
    int calls = 0;
    EXPECT_EQ(vc_set_error_cb([](vc_error_e, void* count) { ++*static_cast<int*>(count); }, &calls),
              VC_ERROR_NONE);
    EXPECT_EQ(recogniser->error(-5), "");
    settle();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(heard, Heard{});
}

TEST_F(AVoiceClient, HearsNothingWithoutCallbacks)
{
    initialize();
    EXPECT_EQ(vc_unset_result_cb(), VC_ERROR_NONE);
    EXPECT_EQ(vc_unset_state_changed_cb(), VC_ERROR_NONE);
    EXPECT_EQ(vc_unset_service_state_changed_cb(), VC_ERROR_NONE);
    EXPECT_EQ(vc_unset_current_language_changed_cb(), VC_ERROR_NONE);
    EXPECT_EQ(vc_unset_error_cb(), VC_ERROR_NONE);
    EXPECT_EQ(vc_unset_error_cb(), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->result(0, {"milk"}, {"{}"}), "");
    EXPECT_EQ(recogniser->serviceState(2), "");
    EXPECT_EQ(recogniser->error(-5), "");
    EXPECT_EQ(recogniser->language("ko_KR"), "");
    EXPECT_EQ(recogniser->clientState(2), "");
    settle();
    EXPECT_EQ(heard, Heard{});
    EXPECT_EQ(state(), VC_STATE_READY);
}

}  // namespace
