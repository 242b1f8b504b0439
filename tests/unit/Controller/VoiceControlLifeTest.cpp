// The client of voice control from its making to its end, and each step of both failing.
#include <gtest/gtest.h>

#include <ostream>
#include <type_traits>

#include "CallNotes.h"
#include "Singleton.h"
#include "VoiceControlFixture.h"

using TestSupport::Calls;
using TestSupport::VoiceStandIn;

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

constexpr int REFUSED = VC_ERROR_OPERATION_REJECTED;

const Texts START_CALLS = {
    "vc_initialize",    "vc_set_state_changed_cb", "vc_set_service_state_changed_cb",
    "vc_set_result_cb", "vc_set_error_cb",         "vc_set_current_language_changed_cb",
    "vc_prepare"};
const Texts END_CALLS = {"vc_unset_command_list",
                         "vc_unset_state_changed_cb",
                         "vc_unset_service_state_changed_cb",
                         "vc_unset_result_cb",
                         "vc_unset_current_language_changed_cb",
                         "vc_unset_error_cb",
                         "vc_unprepare",
                         "vc_deinitialize"};

const Texts BEFORE_THE_LIST = {"VoiceControl: ", "initVoiceControl: "};
const Texts START_LOG = {
    "VoiceControl: ", "initVoiceControl: ", "_vc_create_command_list: ==== Create Command List ===="};

Texts operator+(Texts one, const Texts& other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

/** A step of the initialisation, and what is logged where it fails. */
struct Step {
    const char* function;
    const char* message;
};

void PrintTo(const Step& step, std::ostream* out)
{
    *out << step.function;
}

std::string nameOf(const testing::TestParamInfo<Step>& info)
{
    return info.param.function;
}

class VoiceControlLifeTest : public VoiceControlFixture {};

class StepOfTheStart : public VoiceControlFixture, public testing::WithParamInterface<Step> {};

class StepOfTheCommandList : public VoiceControlFixture, public testing::WithParamInterface<Step> {};

class StepOfTheEnd : public VoiceControlFixture, public testing::WithParamInterface<Step> {};

/** The other requests of the service still work. */
void expectSearch(SearchControl* search)
{
    EXPECT_EQ(search->processSearch("freshmart", "milk"), 0);
}

}  // namespace

static_assert(std::has_virtual_destructor_v<VoiceControl>);
static_assert(sizeof(VoiceControl) == 2 * sizeof(void*), "the command list is all that it keeps");

TEST_F(VoiceControlLifeTest, TheStartMakesItsStepsInOrder)
{
    EXPECT_EQ(logOfStart(), START_LOG);
    EXPECT_EQ(clientCalls(), START_CALLS);
    EXPECT_EQ(Calls::order({"vc_prepare", "vc_cmd_list_create", "vc_cmd_create", "vc_cmd_set_command",
                            "vc_cmd_set_type", "vc_cmd_set_format", "vc_cmd_list_add", "vc_cmd_destroy"}),
              (Texts{"vc_prepare", "vc_cmd_list_create", "vc_cmd_create", "vc_cmd_set_command",
                     "vc_cmd_set_type", "vc_cmd_set_format", "vc_cmd_list_add"}));
}

TEST_F(VoiceControlLifeTest, TheStartMakesOneCommand)
{
    logOfStart();
    EXPECT_EQ(Calls::of("vc_cmd_set_command").at(0).arguments, Texts{"#org.tizen.commerce"});
    EXPECT_EQ(Calls::of("vc_cmd_set_type").at(0).arguments, Texts{"2"});
    EXPECT_EQ(Calls::of("vc_cmd_set_format").at(0).arguments, Texts{"5"});
    EXPECT_EQ(Calls::count("vc_cmd_create"), 1u);
}

TEST_F(VoiceControlLifeTest, TheCallbacksGetTheObjectExceptForTheLanguage)
{
    logOfStart();
    const std::string self = TestSupport::CallNotes::text(static_cast<const void*>(voice_.get()));
    for (const char* function : {"vc_set_state_changed_cb", "vc_set_service_state_changed_cb",
                                 "vc_set_result_cb", "vc_set_error_cb"})
        EXPECT_EQ(Calls::of(function).at(0).arguments, Texts{self}) << function;
    EXPECT_EQ(Calls::of("vc_set_current_language_changed_cb").at(0).arguments, Texts{"0"});
}

TEST_F(VoiceControlLifeTest, TheStartHandsNothingOver)
{
    logOfStart();
    EXPECT_EQ(Calls::count("vc_set_invocation_name"), 0u);
    EXPECT_EQ(Calls::count("vc_set_command_list"), 0u);
    EXPECT_EQ(requests(), Texts{});
}

TEST_F(VoiceControlLifeTest, TheEndTakesEverythingBackInOrder)
{
    startVoice();
    EXPECT_EQ(logOfEnd(), Texts{"deinitVoiceControl: "});
    EXPECT_EQ(clientCalls(), END_CALLS);
    EXPECT_EQ(Calls::order({"vc_unset_error_cb", "vc_cmd_list_destroy", "vc_unprepare"}),
              (Texts{"vc_unset_error_cb", "vc_cmd_list_destroy", "vc_unprepare"}));
    EXPECT_EQ(Calls::of("vc_unset_command_list").at(0).arguments, Texts{"2"});
    EXPECT_EQ(Calls::of("vc_cmd_list_destroy").at(0).arguments, (Texts{"list", "true"}));
}

TEST_P(StepOfTheStart, FailsAndNothingBehindItIsMade)
{
    const Step& step = GetParam();
    Calls::fail(step.function, REFUSED);
    EXPECT_EQ(logOfStart(), BEFORE_THE_LIST + Texts{std::string("initVoiceControl: ") + step.message});

    Texts made;
    for (const std::string& call : START_CALLS) {
        made.push_back(call);
        if (call == step.function)
            break;
    }
    EXPECT_EQ(clientCalls(), made);
    EXPECT_EQ(Calls::count("vc_cmd_list_create"), 0u);
}

TEST_P(StepOfTheStart, FailsAndTheEndStillMakesAllItsSteps)
{
    Calls::fail(GetParam().function, REFUSED);
    logOfStart();
    EXPECT_EQ(logOfEnd(),
              (Texts{"deinitVoiceControl: ", "deinitVoiceControl: vc_cmd_list_destroy: INVALID_PARAMETER"}));
    EXPECT_EQ(clientCalls(), END_CALLS);
    EXPECT_EQ(Calls::of("vc_cmd_list_destroy").at(0).arguments, (Texts{"null", "true"}));
}

TEST_P(StepOfTheStart, FailsAndSearchesWorkAllTheSame)
{
    searchFor({"one"});
    Calls::fail(GetParam().function, REFUSED);
    logOfStart();
    expectSearch(Util::Singleton<SearchControl>::mInstance);
}

INSTANTIATE_TEST_SUITE_P(
    Each, StepOfTheStart,
    testing::Values(Step{"vc_initialize", "[ERROR] Fail to initialize"},
                    Step{"vc_set_state_changed_cb", "[ERROR] Fail to set state changed cb"},
                    Step{"vc_set_service_state_changed_cb", "[ERROR] Fail to set service state changed cb"},
                    Step{"vc_set_result_cb", "[ERROR] Fail to set result cb"},
                    Step{"vc_set_error_cb", "[ERROR] Fail to set error cb"},
                    Step{"vc_set_current_language_changed_cb", "[ERROR] Fail to set language changed cb"},
                    Step{"vc_prepare", "[ERROR] Fail to prepare"}),
    nameOf);

TEST_P(StepOfTheCommandList, FailsAndTheStartSaysSo)
{
    const Step& step = GetParam();
    Calls::fail(step.function, REFUSED);
    const Texts complaints = {std::string("_vc_create_command_list: ") + step.message,
                              "initVoiceControl: [ERROR] Fail to create command list"};
    EXPECT_EQ(logOfStart(), START_LOG + complaints);
    EXPECT_EQ(clientCalls(), START_CALLS);
}

// The address sanitizer's build sees the command that nobody destroys, and the one that is destroyed twice.
TEST_P(StepOfTheCommandList, FailsAndTheCommandIsDestroyedIfThereIsOne)
{
    const std::string function = GetParam().function;
    Calls::fail(function, REFUSED);
    logOfStart();
    const bool hasCommand = function != "vc_cmd_list_create" && function != "vc_cmd_create";
    EXPECT_EQ(Calls::count("vc_cmd_destroy"), hasCommand ? 1u : 0u);
    EXPECT_EQ(Calls::count("vc_cmd_list_destroy"), 0u);
}

TEST_P(StepOfTheCommandList, FailsAndWhatThereIsOfTheListIsHandedOver)
{
    Calls::fail(GetParam().function, REFUSED);
    logOfStart();
    ASSERT_TRUE(VoiceStandIn::changeState(1, 2));
    EXPECT_EQ(Calls::of("vc_set_command_list").at(0).arguments, Texts{"2"});
}

TEST_P(StepOfTheCommandList, FailsAndTheEndDestroysTheListIfThereIsOne)
{
    const std::string function = GetParam().function;
    Calls::fail(function, REFUSED);
    logOfStart();
    const Texts complaint = {"deinitVoiceControl: vc_cmd_list_destroy: INVALID_PARAMETER"};
    EXPECT_EQ(logOfEnd(),
              Texts{"deinitVoiceControl: "} + (function == "vc_cmd_list_create" ? complaint : Texts{}));
    EXPECT_EQ(clientCalls(), END_CALLS);
}

INSTANTIATE_TEST_SUITE_P(Each, StepOfTheCommandList,
                         testing::Values(Step{"vc_cmd_list_create", "[ERROR] Fail to cmd list create"},
                                         Step{"vc_cmd_create", "[ERROR] Fail to cmd create"},
                                         Step{"vc_cmd_set_command", "[ERROR] Fail to set command"},
                                         Step{"vc_cmd_set_type", "[ERROR] Fail to set type"},
                                         Step{"vc_cmd_set_format", "[ERROR] Fail to set format"},
                                         Step{"vc_cmd_list_add", "[ERROR] Fail to list add"}),
                         nameOf);

// No message: the step's failure is nobody's concern.
TEST_P(StepOfTheEnd, FailsAndTheNextOnesAreMade)
{
    const Step& step = GetParam();
    startVoice();
    Calls::fail(step.function, REFUSED);
    voice_.reset();
    const Texts complaint = {std::string("deinitVoiceControl: ") + step.message + ": OPERATION_REJECTED"};
    EXPECT_EQ(logged(), Texts{"deinitVoiceControl: "} + (*step.message ? complaint : Texts{}));
    EXPECT_EQ(clientCalls(), END_CALLS);
    EXPECT_EQ(Calls::count("vc_cmd_list_destroy"), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    Each, StepOfTheEnd,
    testing::Values(Step{"vc_unset_command_list", ""}, Step{"vc_unset_state_changed_cb", ""},
                    Step{"vc_unset_service_state_changed_cb", ""}, Step{"vc_unset_result_cb", ""},
                    Step{"vc_unset_current_language_changed_cb", ""}, Step{"vc_unset_error_cb", ""},
                    Step{"vc_cmd_list_destroy", "vc_cmd_list_destroy"}, Step{"vc_unprepare", "vc_unprepare"},
                    Step{"vc_deinitialize", "vc_deinitialize"}),
    nameOf);

TEST_F(VoiceControlLifeTest, EveryStepOfTheEndMayFailAtOnce)
{
    startVoice();
    for (const std::string& function : END_CALLS)
        Calls::failAlways(function, 1);
    Calls::failAlways("vc_cmd_list_destroy", 1);
    voice_.reset();
    EXPECT_EQ(logged(),
              (Texts{"deinitVoiceControl: ", "deinitVoiceControl: vc_cmd_list_destroy: VC_ERROR_UNKNOWN",
                     "deinitVoiceControl: vc_unprepare: VC_ERROR_UNKNOWN",
                     "deinitVoiceControl: vc_deinitialize: VC_ERROR_UNKNOWN"}));
    EXPECT_EQ(clientCalls(), END_CALLS);
}

}  // namespace Carvoy
