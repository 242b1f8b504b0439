// Every function of voice control in every state of the client, and with every null argument.
#include <voice_control.h>

#include <array>
#include <string>
#include <tuple>

#include "VoiceTool.h"

namespace {

using TestSupport::Heard;
using TestSupport::VoiceTool;

void onResult(vc_result_event_e, vc_cmd_list_h, const char*, void*) {}
void onState(vc_state_e, vc_state_e, void*) {}
void onServiceState(vc_service_state_e, vc_service_state_e, void*) {}
void onLanguage(const char*, const char*, void*) {}
void onError(vc_error_e, void*) {}

struct List {
    List() { vc_cmd_list_create(&handle); }
    ~List() { vc_cmd_list_destroy(handle, true); }
    vc_cmd_list_h handle = nullptr;
};

enum Situation { None, Initialized, Ready, MovedToNone, MovedElsewhere, SituationCount };
const char* const SituationNames[] = {"None", "Initialized", "Ready", "MovedToNone", "MovedElsewhere"};

struct Function {
    const char* name;
    int (*call)();
    std::array<bool, SituationCount> allowed;
};

constexpr std::array<bool, SituationCount> OnlyInNone{true, false, false, false, false};
constexpr std::array<bool, SituationCount> OnlyInInitialized{false, true, false, false, false};
constexpr std::array<bool, SituationCount> OnlyInReady{false, false, true, false, false};
constexpr std::array<bool, SituationCount> AfterInitialize{false, true, true, true, true};
constexpr std::array<bool, SituationCount> Always{true, true, true, true, true};

int getState()
{
    vc_state_e state;
    return vc_get_state(&state);
}

int getServiceState()
{
    vc_service_state_e state;
    return vc_get_service_state(&state);
}

const Function Functions[] = {
    {"vc_initialize", vc_initialize, OnlyInNone},
    {"vc_deinitialize", vc_deinitialize, AfterInitialize},
    {"vc_prepare", vc_prepare, OnlyInInitialized},
    {"vc_unprepare", vc_unprepare, OnlyInReady},
    {"vc_get_state", getState, Always},
    {"vc_get_service_state", getServiceState, AfterInitialize},
    {"vc_set_invocation_name", [] { return vc_set_invocation_name("Carvoy"); }, OnlyInReady},
    {"vc_set_invocation_name_null", [] { return vc_set_invocation_name(nullptr); }, OnlyInReady},
    {"vc_set_command_list", [] { return vc_set_command_list(List().handle, VC_COMMAND_TYPE_FOREGROUND); },
     OnlyInReady},
    {"vc_unset_command_list", [] { return vc_unset_command_list(VC_COMMAND_TYPE_BACKGROUND); }, OnlyInReady},
    {"vc_set_result_cb", [] { return vc_set_result_cb(onResult, nullptr); }, OnlyInInitialized},
    {"vc_unset_result_cb", vc_unset_result_cb, OnlyInInitialized},
    {"vc_set_state_changed_cb", [] { return vc_set_state_changed_cb(onState, nullptr); }, OnlyInInitialized},
    {"vc_unset_state_changed_cb", vc_unset_state_changed_cb, OnlyInInitialized},
    {"vc_set_service_state_changed_cb",
     [] { return vc_set_service_state_changed_cb(onServiceState, nullptr); }, OnlyInInitialized},
    {"vc_unset_service_state_changed_cb", vc_unset_service_state_changed_cb, OnlyInInitialized},
    {"vc_set_current_language_changed_cb",
     [] { return vc_set_current_language_changed_cb(onLanguage, nullptr); }, OnlyInInitialized},
    {"vc_unset_current_language_changed_cb", vc_unset_current_language_changed_cb, OnlyInInitialized},
    {"vc_set_error_cb", [] { return vc_set_error_cb(onError, nullptr); }, OnlyInInitialized},
    {"vc_unset_error_cb", vc_unset_error_cb, OnlyInInitialized},
};

class TheFunction : public VoiceTool, public testing::WithParamInterface<std::tuple<Function, Situation>> {
  protected:
    void bringAbout(Situation situation)
    {
        if (situation == None)
            return;
        initialize();
        const int states[] = {0, 1, 2, 0, 7};
        if (situation != Initialized) {
            ASSERT_EQ(recogniser->clientState(states[situation]), "");
            ASSERT_EQ(hear(1).size(), 1U);
        }
        ASSERT_EQ(state(), states[situation]);
    }
};

TEST_P(TheFunction, AnswersAsTheStateAsks)
{
    const auto& [function, situation] = GetParam();
    bringAbout(situation);
    const vc_state_e before = state();
    const bool allowed = function.allowed[situation];
    EXPECT_EQ(function.call(), allowed ? VC_ERROR_NONE : VC_ERROR_INVALID_STATE);
    if (!allowed) {
        EXPECT_EQ(state(), before);
    }
}

std::string nameOf(const testing::TestParamInfo<std::tuple<Function, Situation>>& info)
{
    return std::string(std::get<0>(info.param).name) + "_" + SituationNames[std::get<1>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(In, TheFunction,
                         testing::Combine(testing::ValuesIn(Functions),
                                          testing::Values(None, Initialized, Ready, MovedToNone,
                                                          MovedElsewhere)),
                         nameOf);

class AMissingArgument : public VoiceTool {
  protected:
    static void expectRefusals()
    {
        List list;
        EXPECT_EQ(vc_get_state(nullptr), VC_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(vc_get_service_state(nullptr), VC_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(vc_set_command_list(nullptr, VC_COMMAND_TYPE_BACKGROUND), VC_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(vc_set_result_cb(nullptr, &list), VC_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(vc_set_state_changed_cb(nullptr, &list), VC_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(vc_set_service_state_changed_cb(nullptr, &list), VC_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(vc_set_current_language_changed_cb(nullptr, &list), VC_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(vc_set_error_cb(nullptr, &list), VC_ERROR_INVALID_PARAMETER);
        for (const int type : {-1, 0, 3, 4, 5, 6}) {
            EXPECT_EQ(vc_set_command_list(list.handle, type), VC_ERROR_INVALID_PARAMETER) << type;
            EXPECT_EQ(vc_unset_command_list(type), VC_ERROR_INVALID_PARAMETER) << type;
        }
    }
};

TEST_F(AMissingArgument, CountsBeforeTheState)
{
    expectRefusals();
    initialize();
    expectRefusals();
    EXPECT_EQ(vc_prepare(), VC_ERROR_NONE);
    EXPECT_EQ(hear(1), Heard{"state 1 2"});
    expectRefusals();
}

TEST_F(AMissingArgument, LeavesTheCallbackThatIsSet)
{
    initialize();
    EXPECT_EQ(vc_set_error_cb(nullptr, nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(recogniser->error(-5), "");
    EXPECT_EQ(hear(1), Heard{"error -5"});
}

TEST_F(AMissingArgument, LeavesTheOutPointerAlone)
{
    vc_service_state_e service = VC_SERVICE_STATE_RECORDING;
    EXPECT_EQ(vc_get_service_state(&service), VC_ERROR_INVALID_STATE);
    EXPECT_EQ(service, VC_SERVICE_STATE_RECORDING);
}

}  // namespace
