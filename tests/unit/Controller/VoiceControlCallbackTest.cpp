// What the client of voice control does when it is called back, results apart.
#include <gtest/gtest.h>

#include "VoiceControlFixture.h"

using TestSupport::Calls;
using TestSupport::VoiceStandIn;

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

class VoiceControlCallbackTest : public VoiceControlFixture {
  protected:
    void SetUp() override
    {
        VoiceControlFixture::SetUp();
        startVoice();
    }

    /** What a change of state logs, and the calls that it leads to. */
    static Texts stateLog(int from, int to)
    {
        Calls::reset();
        EXPECT_TRUE(VoiceStandIn::changeState(from, to));
        return logged();
    }
};

}  // namespace

TEST_F(VoiceControlCallbackTest, BecomingReadyHandsOverNameAndCommands)
{
    EXPECT_EQ(stateLog(1, 2),
              (Texts{"_vc_state_changed_cb: ==== State is changed ====",
                     "_vc_state_changed_cb: Previous(Initialized) -> Current(Ready)",
                     "_vc_state_changed_cb: set invocation name", "_vc_state_changed_cb: set command list"}));
    EXPECT_EQ(clientCalls(), (Texts{"vc_set_invocation_name", "vc_set_command_list"}));
    EXPECT_EQ(Calls::of("vc_set_invocation_name").at(0).arguments, Texts{"Carvoy"});
    EXPECT_EQ(Calls::of("vc_set_command_list").at(0).arguments, (Texts{"2", "#org.tizen.commerce/2/5"}));
}

TEST_F(VoiceControlCallbackTest, BecomingReadyAgainHandsThemOverAgain)
{
    for (int i = 0; i < 3; ++i) {
        stateLog(1, 2);
        EXPECT_EQ(clientCalls(), (Texts{"vc_set_invocation_name", "vc_set_command_list"}));
        stateLog(2, 1);
        EXPECT_EQ(clientCalls(), Texts{});
    }
}

TEST_F(VoiceControlCallbackTest, EveryOtherChangeOnlyLogs)
{
    const Texts names = {"None", "Initialized", "Ready", "UNKNOWN"};
    for (int from = 0; from < 4; ++from) {
        for (int to = 0; to < 4; ++to) {
            if (from == 1 && to == 2)
                continue;
            const std::string change = "Previous(" + names.at(from) + ") -> Current(" + names.at(to) + ")";
            EXPECT_EQ(stateLog(from, to), (Texts{"_vc_state_changed_cb: ==== State is changed ====",
                                                 "_vc_state_changed_cb: " + change}));
            EXPECT_EQ(clientCalls(), Texts{}) << change;
        }
    }
}

TEST_F(VoiceControlCallbackTest, WhatComesOfHandingOverIsIgnored)
{
    Calls::failAlways("vc_set_invocation_name", VC_ERROR_INVALID_STATE);
    Calls::failAlways("vc_set_command_list", VC_ERROR_OPERATION_FAILED);
    EXPECT_TRUE(VoiceStandIn::changeState(1, 2));
    EXPECT_EQ(loggedErrors(), Texts{});
    EXPECT_EQ(clientCalls(), (Texts{"vc_set_invocation_name", "vc_set_command_list"}));
}

TEST_F(VoiceControlCallbackTest, EveryChangeOfTheServicesStateOnlyLogs)
{
    const Texts names = {"None", "Ready", "Recording", "Processing", "UNKNOWN"};
    for (int from = 0; from < 5; ++from) {
        for (int to = 0; to < 5; ++to) {
            Calls::reset();
            EXPECT_TRUE(VoiceStandIn::changeServiceState(from, to));
            EXPECT_EQ(logged(), (Texts{"_vc_service_state_changed_cb: ==== Service state is changed ====",
                                       "_vc_service_state_changed_cb: Previous(" + names.at(from) +
                                           ") -> Current(" + names.at(to) + ")"}));
            EXPECT_EQ(clientCalls(), Texts{});
        }
    }
}

TEST_F(VoiceControlCallbackTest, AnErrorIsLoggedByItsNameAndNothingElse)
{
    for (const auto& [reason, name] : std::vector<std::pair<int, std::string>>{{-49610730, "ITERATION_END"},
                                                                               {-1073741823, "TIMED_OUT"},
                                                                               {0, "NONE"},
                                                                               {1, "VC_ERROR_UNKNOWN"}}) {
        Calls::reset();
        EXPECT_TRUE(VoiceStandIn::fail(reason));
        EXPECT_EQ(logged(), Texts{"_vc_error_cb: ==== vc error - " + name + " ===="});
        EXPECT_EQ(loggedErrors(), logged());
        EXPECT_EQ(clientCalls(), Texts{});
    }
}

TEST_F(VoiceControlCallbackTest, AChangeOfLanguageIsLogged)
{
    EXPECT_TRUE(VoiceStandIn::changeLanguage("en_US", "ko_KR"));
    EXPECT_EQ(logged(), Texts{"_vc_language_changed_cb: Language is changed (en_US) to (ko_KR)"});
    EXPECT_EQ(loggedErrors(), Texts{});
}

}  // namespace Carvoy
