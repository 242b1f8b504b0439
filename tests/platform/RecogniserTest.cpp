// What the recogniser's side says to a client, and what the client shows of itself.
#include <voice_control.h>
#include <voice_control_command_expand.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string>
#include <thread>

#include "Patience.h"
#include "VoiceTool.h"

namespace {

using TestSupport::ErrorPrefix;
using TestSupport::Heard;
using TestSupport::Recogniser;
using TestSupport::Request;
using TestSupport::Texts;
using TestSupport::VoiceTool;

/** A list with commands of these texts; null: a command without one. */
class List {
  public:
    List(std::initializer_list<const char*> texts)
    {
        vc_cmd_list_create(&handle_);
        for (const char* text : texts) {
            vc_cmd_h command = nullptr;
            vc_cmd_create(&command);
            vc_cmd_set_command(command, text);
            vc_cmd_list_add(handle_, command);
        }
    }
    ~List() { vc_cmd_list_destroy(handle_, true); }
    List(const List&) = delete;
    List& operator=(const List&) = delete;

    operator vc_cmd_list_h() const { return handle_; }

  private:
    vc_cmd_list_h handle_ = nullptr;
};

int setForeground(std::initializer_list<const char*> texts)
{
    return vc_set_command_list(List(texts), VC_COMMAND_TYPE_FOREGROUND);
}

int setBackground(std::initializer_list<const char*> texts)
{
    return vc_set_command_list(List(texts), VC_COMMAND_TYPE_BACKGROUND);
}

bool noteLengthOfAnswer(vc_cmd_h command, void* lines)
{
    char* json = nullptr;
    const int code = vc_cmd_get_nlu_json(command, &json);
    static_cast<Heard*>(lines)->push_back(std::to_string(json ? static_cast<int>(strlen(json)) : code));
    free(json);
    return true;
}

void noteLength(vc_result_event_e, vc_cmd_list_h list, const char*, void* lines)
{
    vc_cmd_list_foreach_commands(list, noteLengthOfAnswer, lines);
}

class TheRecogniser : public VoiceTool {};

TEST_F(TheRecogniser, IsHeardInTheOrderOfArrival)
{
    makeReady();
    EXPECT_EQ(recogniser->serviceState(2), "");
    EXPECT_EQ(recogniser->result(0, {"milk"}, {R"({"a": 1})", "", "no JSON"}), "");
    EXPECT_EQ(recogniser->result(1, {}, {}), "");
    EXPECT_EQ(recogniser->error(VC_ERROR_IO_ERROR), "");
    EXPECT_EQ(recogniser->language("ko_KR"), "");
    EXPECT_EQ(recogniser->clientState(1), "");
    const Heard expected{"service 0 2",
                         "result 0 'milk' | 2 5 null '{\"a\": 1}' | 2 5 null -49610732 | 2 5 null 'no JSON'",
                         "result 1 null -49610729",
                         "error -5",
                         "language 'en_US' 'ko_KR'",
                         "state 2 1"};
    EXPECT_EQ(hear(6), expected);
}

TEST_F(TheRecogniser, IsHeardInOrderHoweverMuchItSays)
{
    initialize();
    Heard expected;
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(recogniser->error(i), "");
        expected.push_back("error " + std::to_string(i));
    }
    EXPECT_EQ(hear(1000), expected);
}

TEST_F(TheRecogniser, IsHeardInEveryStateOfTheClient)
{
    initialize();
    for (const int state : {1, 0, 7, 2}) {
        EXPECT_EQ(recogniser->clientState(state), "");
        EXPECT_EQ(recogniser->result(0, {"milk"}, {}), "");
    }
    const Heard expected{"state 1 1", "result 0 'milk' -49610729", "state 1 0", "result 0 'milk' -49610729",
                         "state 0 7", "result 0 'milk' -49610729", "state 7 2", "result 0 'milk' -49610729"};
    EXPECT_EQ(hear(8), expected);
}

TEST_F(TheRecogniser, MaySayWhatItSaidBeforeAndWhatNoListKnows)
{
    initialize();
    const std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(recogniser->serviceState(2), "");
    EXPECT_EQ(recogniser->serviceState(2), "");
    EXPECT_EQ(recogniser->serviceState(-1), "");
    EXPECT_EQ(recogniser->clientState(99), "");
    EXPECT_EQ(recogniser->error(0), "");
    EXPECT_EQ(recogniser->error(lowest), "");
    EXPECT_EQ(recogniser->language("en_US"), "");
    EXPECT_EQ(recogniser->language(""), "");
    EXPECT_EQ(recogniser->language("ko_KR"), "");
    EXPECT_EQ(recogniser->result(9, {""}, {}), "");
    const Heard expected{"service 0 2",
                         "service 2 2",
                         "service 2 -1",
                         "state 1 99",
                         "error 0",
                         "error " + std::to_string(lowest),
                         "language 'en_US' 'en_US'",
                         "language 'en_US' ''",
                         "language '' 'ko_KR'",
                         "result 9 '' -49610729"};
    EXPECT_EQ(hear(10), expected);
    EXPECT_EQ(recogniser->state(), 99);
}

TEST_F(TheRecogniser, NeedsNoAnswer)
{
    initialize();
    recogniser->tell("Error", -5);
    recogniser->tell("ServiceState", 1);
    EXPECT_EQ(hear(2), (Heard{"error -5", "service 0 1"}));
}

TEST_F(TheRecogniser, IsRefusedWithMoreThanOneText)
{
    initialize();
    EXPECT_EQ(recogniser->result(0, {"milk", "bread"}, {"{}"}), ErrorPrefix + "InvalidArgs");
    EXPECT_EQ(recogniser->result(0, {"last"}, {}), "");
    settle();
    EXPECT_EQ(heard, Heard{"result 0 'last' -49610729"});
}

TEST_F(TheRecogniser, IsRefusedWithOtherArguments)
{
    initialize();
    const std::string text = "2";
    const std::int32_t number = 2;
    for (const char* method : {"ClientState", "ServiceState", "Error"}) {
        EXPECT_EQ(recogniser->call(method, text), ErrorPrefix + "InvalidArgs") << method;
        EXPECT_EQ(recogniser->call(method), ErrorPrefix + "InvalidArgs") << method;
        EXPECT_EQ(recogniser->call(method, number, number), ErrorPrefix + "InvalidArgs") << method;
    }
    EXPECT_EQ(recogniser->call("Language", number), ErrorPrefix + "InvalidArgs");
    EXPECT_EQ(recogniser->language("\xef\xbf\xbf"), ErrorPrefix + "InvalidArgs");
    EXPECT_EQ(recogniser->call("Result", number, text, Texts{}), ErrorPrefix + "InvalidArgs");
    EXPECT_EQ(recogniser->call("Result", number, Texts{}), ErrorPrefix + "InvalidArgs");
    EXPECT_EQ(recogniser->call("Unknown", number), ErrorPrefix + "UnknownMethod");
    settle();
    EXPECT_EQ(heard, Heard{});
}

TEST_F(TheRecogniser, IsRefusedWhenTooMuchWaits)
{
    initialize();
    constexpr std::size_t most = 16'384;
    for (std::size_t i = 1; i < most; ++i)
        recogniser->tell("Error", -1);
    EXPECT_EQ(recogniser->error(-4), "");
    EXPECT_EQ(recogniser->error(-1), ErrorPrefix + "LimitsExceeded");
    EXPECT_EQ(recogniser->result(0, {}, {}), ErrorPrefix + "LimitsExceeded");
    EXPECT_EQ(hear(most).size(), most);
    EXPECT_EQ(recogniser->error(-5), "");
    EXPECT_EQ(hear(most + 1).back(), "error -5");
}

TEST_F(TheRecogniser, MayGiveAResultOf256CommandsButNoMore)
{
    initialize();
    EXPECT_EQ(recogniser->result(0, {}, Texts(256, "{}")), "");
    EXPECT_EQ(recogniser->result(0, {}, Texts(257, "{}")), ErrorPrefix + "LimitsExceeded");
    EXPECT_EQ(recogniser->error(-5), "");
    EXPECT_EQ(hear(2).size(), 2U) << "nothing came of the one that was refused";
}

TEST_F(TheRecogniser, MayGiveAResultOf16MiBButNoMore)
{
    initialize();
    const std::string half(8 * 1024 * 1024, 'x');
    EXPECT_EQ(recogniser->result(0, {}, {half, half}), "");
    EXPECT_EQ(recogniser->result(0, {}, {half, half + "x"}), ErrorPrefix + "LimitsExceeded");
    EXPECT_EQ(recogniser->result(0, {half + half}, {"x"}), ErrorPrefix + "LimitsExceeded");
    EXPECT_EQ(recogniser->error(-5), "");
    EXPECT_EQ(hear(2).size(), 2U) << "nothing came of those that were refused";
}

TEST_F(TheRecogniser, MaySendAnAnswerOfTenMillionBytesButNoMore)
{
    ASSERT_EQ(vc_initialize(), VC_ERROR_NONE);
    Heard measured;
    ASSERT_EQ(vc_set_result_cb(noteLength, &measured), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->result(0, {}, {std::string(10'000'000, 'x')}), "");
    EXPECT_EQ(recogniser->result(0, {}, {std::string(10'000'001, 'x')}), "");
    EXPECT_TRUE(TestSupport::loopUntil([&] { return measured.size() == 2; }));
    EXPECT_EQ(measured, (Heard{"10000000", std::to_string(VC_ERROR_OPERATION_FAILED)}));
    EXPECT_EQ(vc_deinitialize(), VC_ERROR_NONE);
}

TEST_F(TheRecogniser, MayHaveSeveralConnections)
{
    initialize();
    Recogniser another(name);
    EXPECT_EQ(recogniser->error(1), "");
    EXPECT_EQ(another.error(2), "");
    EXPECT_EQ(recogniser->error(3), "");
    EXPECT_EQ(hear(3), (Heard{"error 1", "error 2", "error 3"}));
}

// The interleaving: calls arrive on the bus thread, and wait on the main loop, while clients come and go.
TEST_F(TheRecogniser, IsNeverHeardByAClientThatIsGone)
{
    // The first client starts Ecore, which interrupts whatever other threads wait for.
    ASSERT_EQ(vc_initialize(), VC_ERROR_NONE);
    ASSERT_EQ(vc_deinitialize(), VC_ERROR_NONE);
    std::atomic<bool> over{false};
    std::thread talker([&] {
        Recogniser peer(name);
        while (!over) {
            peer.error(1);
            peer.clientState(2);
        }
    });
    static bool alive;
    for (int round = 0; round < 100; ++round) {
        alive = true;
        ASSERT_EQ(vc_initialize(), VC_ERROR_NONE);
        vc_set_error_cb([](vc_error_e, void*) { EXPECT_TRUE(alive); }, nullptr);
        vc_prepare();
        ASSERT_TRUE(TestSupport::loopUntil([] { return state() == VC_STATE_READY; }));
        ASSERT_EQ(vc_deinitialize(), VC_ERROR_NONE);
        alive = false;
    }
    over = true;
    talker.join();
    settle();
}

TEST_F(TheRecogniser, MayCallWhileTheClientSendsARequest)
{
    initialize();
    inCallback = [] { EXPECT_EQ(Request("org.example.nobody").send(), APP_CONTROL_ERROR_APP_NOT_FOUND); };
    EXPECT_EQ(recogniser->result(0, {"milk"}, {}), "");
    EXPECT_EQ(recogniser->result(1, {"milk"}, {}), "");
    EXPECT_EQ(hear(2).size(), 2U);
}

class WhatAClientShows : public VoiceTool {};

TEST_F(WhatAClientShows, IsThereWhenTheCallReturns)
{
    makeReady();
    for (const char* text : {"Carvoy", "Fridge", "Süß 🥛"}) {
        ASSERT_EQ(vc_set_invocation_name(text), VC_ERROR_NONE);
        ASSERT_EQ(recogniser->invocationName(), text);
        ASSERT_EQ(setBackground({text}), VC_ERROR_NONE);
        ASSERT_EQ(recogniser->commands(), Texts{text});
    }
    EXPECT_EQ(vc_set_invocation_name(nullptr), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->invocationName(), "");
}

TEST_F(WhatAClientShows, IsTheForegroundsTextsAndThenTheBackgrounds)
{
    makeReady();
    EXPECT_EQ(setBackground({"b1", "b2"}), VC_ERROR_NONE);
    EXPECT_EQ(setForeground({"f1", nullptr, "f2"}), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->commands(), (Texts{"f1", "f2", "b1", "b2"}));
    EXPECT_EQ(setForeground({"f3"}), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->commands(), (Texts{"f3", "b1", "b2"}));
    EXPECT_EQ(vc_unset_command_list(VC_COMMAND_TYPE_BACKGROUND), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->commands(), Texts{"f3"});
    EXPECT_EQ(vc_unset_command_list(VC_COMMAND_TYPE_BACKGROUND), VC_ERROR_NONE);
    EXPECT_EQ(setForeground({}), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->commands(), Texts{});
}

TEST_F(WhatAClientShows, IsToldOnceForEachChange)
{
    makeReady();
    EXPECT_EQ(vc_set_invocation_name("Carvoy"), VC_ERROR_NONE);
    EXPECT_EQ(vc_set_invocation_name("Carvoy"), VC_ERROR_NONE);
    EXPECT_EQ(setBackground({"#org.tizen.commerce"}), VC_ERROR_NONE);
    EXPECT_EQ(setBackground({"#org.tizen.commerce"}), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->clientState(2), "");
    EXPECT_EQ(recogniser->clientState(1), "");
    hear(2);
    EXPECT_EQ(recogniser->waitForChanges(4),
              (Texts{"State", "InvocationName", "Commands", "Commands InvocationName State"}));
}

TEST_F(WhatAClientShows, IsEmptyOutsideReady)
{
    for (const int next : {0, 1, 7, -1}) {
        makeReady();
        EXPECT_EQ(vc_set_invocation_name("Carvoy"), VC_ERROR_NONE);
        EXPECT_EQ(setBackground({"b"}), VC_ERROR_NONE);
        if (next < 0)
            EXPECT_EQ(vc_unprepare(), VC_ERROR_NONE);
        else
            EXPECT_EQ(recogniser->clientState(next), "");
        hear(1);
        EXPECT_EQ(recogniser->invocationName(), "");
        EXPECT_EQ(recogniser->commands(), Texts{});
        EXPECT_EQ(recogniser->clientState(2), "");
        hear(2);
        EXPECT_EQ(recogniser->commands(), Texts{});
        EXPECT_EQ(vc_deinitialize(), VC_ERROR_NONE);
        heard.clear();
    }
}

TEST_F(WhatAClientShows, IsTheFirstBackgroundTextInTheCommandsOfAResult)
{
    makeReady();
    EXPECT_EQ(setForeground({"f"}), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->result(0, {}, {"{}"}), "");
    hear(1);
    EXPECT_EQ(setBackground({"b1", "b2"}), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->result(1, {}, {"{}", "{}"}), "");
    EXPECT_EQ(hear(2),
              (Heard{"result 0 null | 2 5 null '{}'", "result 1 null | 2 5 'b1' '{}' | 2 5 'b1' '{}'"}));
}

TEST_F(WhatAClientShows, IsNoTextInTheCommandsOfAResultOnceItIsTakenBack)
{
    makeReady();
    EXPECT_EQ(setBackground({"b1"}), VC_ERROR_NONE);
    EXPECT_EQ(vc_unset_command_list(VC_COMMAND_TYPE_BACKGROUND), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->result(0, {}, {"{}"}), "");
    EXPECT_EQ(hear(1), Heard{"result 0 null | 2 5 null '{}'"});
}

TEST_F(WhatAClientShows, StaysInForceWhereTheNextCannotBeShown)
{
    makeReady();
    EXPECT_EQ(setBackground({"old"}), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->result(0, {}, {"{}"}), "");
    recogniser.reset();
    bus.kill();
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::Patience;
    while (vc_set_invocation_name("Carvoy") == VC_ERROR_NONE)
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
    EXPECT_EQ(setBackground({"new"}), VC_ERROR_OPERATION_FAILED);
    EXPECT_EQ(hear(1), Heard{"result 0 null | 2 5 'old' '{}'"});
}

TEST_F(WhatAClientShows, IsUtf8ThatTheBusTakes)
{
    makeReady();
    EXPECT_EQ(vc_set_invocation_name("Carvoy"), VC_ERROR_NONE);
    EXPECT_EQ(setBackground({"b"}), VC_ERROR_NONE);
    for (const char* bad : {"\xff", "\xc3", "a\xc0\xaf", "\xed\xa0\x80"}) {
        EXPECT_EQ(vc_set_invocation_name(bad), VC_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(setBackground({"fine", bad}), VC_ERROR_INVALID_PARAMETER);
    }
    const std::string large(16 * 1024 * 1024, 'x');
    EXPECT_EQ(vc_set_invocation_name((large + "x").c_str()), VC_ERROR_OPERATION_FAILED);
    EXPECT_EQ(setBackground({large.c_str(), "x"}), VC_ERROR_OPERATION_FAILED);
    EXPECT_EQ(recogniser->invocationName(), "Carvoy");
    EXPECT_EQ(recogniser->commands(), Texts{"b"});
    EXPECT_EQ(vc_set_invocation_name(large.c_str()), VC_ERROR_NONE);
    EXPECT_EQ(recogniser->invocationName(), large);
}

}  // namespace
