#include <gtest/gtest.h>

#include "ConversationJson.h"
#include "Grammar.h"
#include "Names.h"
#include "ScreenAppFixture.h"
#include "VoicePeer.h"

namespace {

using namespace Appliance;
using Assistant::ConversationContent;
using Assistant::Fate;
using Assistant::View;
using TestSupport::RawMessage;
using TestSupport::RawPeer;
using TestSupport::VoiceCall;
using TestSupport::VoicePeer;
using Texts = std::vector<std::string>;

constexpr int Initialized = 1;
constexpr int Ready = 2;
const Texts Commands = {"#org.tizen.commerce"};

Texts listIn(const RawMessage& message, const char* key)
{
    const auto found = message.extras.find(key);
    return found == message.extras.end() ? Texts() : found->second.get<Texts>();
}

// The assistant's process, a tool, and a client of voice control in the service's place.
class TheAssistant : public TestSupport::ScreenAppFixture {
  protected:
    void start() { startApp({CARVOY_ASSISTANT}, AssistantAppId); }

    void startWithClient(VoicePeer::Manner manner = VoicePeer::Manner::Polite)
    {
        client_ = std::make_unique<VoicePeer>(Ready, Commands, manner);
        start();
    }

    void say(const std::string& sentence, std::uint32_t id = 1, const Texts& nlu = {})
    {
        TestSupport::Extras extras = {{KeyUtterance, sdbus::Variant(sentence)}};
        if (!nlu.empty()) {
            extras[KeyNlu] = sdbus::Variant(nlu);
        }
        ASSERT_EQ(tool_->launch(AssistantAppId, OperationSay, id, extras), "");
    }

    void fromService(const char* operation)
    {
        ASSERT_EQ(tool_->launch(AssistantAppId, operation, 0, {}, ServiceAppId), "");
    }

    VoiceCall heardByClient()
    {
        const auto call = client_->next();
        EXPECT_TRUE(call);
        return call.value_or(VoiceCall());
    }

    void expectServiceState(int state)
    {
        const VoiceCall call = heardByClient();
        EXPECT_EQ(call.method, "ServiceState");
        EXPECT_EQ(call.number, state);
    }

    // A whole recognition; returns the result in it.
    VoiceCall recognition()
    {
        expectServiceState(2);
        expectServiceState(3);
        const VoiceCall result = heardByClient();
        EXPECT_EQ(result.method, "Result");
        expectServiceState(1);
        return result;
    }

    RawMessage reply()
    {
        const auto message = tool_->nextReply();
        EXPECT_TRUE(message);
        return message.value_or(RawMessage());
    }

    ConversationContent contentWhen(const std::function<bool(const ConversationContent&)>& wanted)
    {
        const auto content = watch_->waitFor("assistant.json", Assistant::conversationFromJson, wanted);
        EXPECT_TRUE(content);
        return content.value_or(ConversationContent());
    }

    ConversationContent contentAfter(int messages)
    {
        return contentWhen(
            [messages](const auto& content) { return lastNumber(content.messages) >= messages; });
    }

    std::unique_ptr<VoicePeer> client_;
};

TEST_F(TheAssistant, DeliversWhatASentenceMeans)
{
    startWithClient();
    say("Show me the second one.");
    const VoiceCall result = recognition();
    EXPECT_EQ(result.number, 0);
    EXPECT_EQ(result.text, Texts{"Show me the second one."});
    const std::string nlu = Assistant::nluOf({Assistant::SearchedItem, "2"});
    EXPECT_EQ(result.nlu, Texts{nlu});
    const RawMessage answer = reply();
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(textIn(answer, KeyTurn), "1");
    EXPECT_EQ(listIn(answer, KeyNlu), Texts{nlu});
    EXPECT_EQ(textIn(answer, KeyReason), "");
    EXPECT_EQ(textIn(answer, KeyUnderstood), "yes");
}

TEST_F(TheAssistant, TellsWhatItHeardInItsFile)
{
    startWithClient();
    say("check out");
    const auto content =
        contentWhen([](const auto& now) { return now.fate == Fate::Delivered && !now.messages.empty(); });
    EXPECT_EQ(content.turn, 1);
    EXPECT_EQ(content.sentence, "check out");
    EXPECT_EQ(content.action, "Commerce Check Out");
    EXPECT_EQ(content.view, View::Open);
    EXPECT_EQ(content.messages.back().operation, OperationSay);
    EXPECT_EQ(content.messages.back().outcome, "taken");
}

TEST_F(TheAssistant, DeliversWhatItDoesNotUnderstandAsRejected)
{
    startWithClient();
    say("open the pod bay doors");
    const VoiceCall result = recognition();
    EXPECT_EQ(result.number, 1);
    EXPECT_EQ(result.text, Texts{"open the pod bay doors"});
    EXPECT_TRUE(result.nlu.empty());
    const RawMessage answer = reply();
    EXPECT_EQ(answer.result, -1);
    EXPECT_EQ(textIn(answer, KeyTurn), "1");
    EXPECT_EQ(textIn(answer, KeyUnderstood), "no");
    EXPECT_NE(textIn(answer, KeyReason).find("not understood"), std::string::npos);
}

TEST_F(TheAssistant, DeliversGivenAnswersAsTheyAre)
{
    startWithClient();
    const Texts nlu = {"{broken", " ", R"({"actionName": "Show Cart Success"})"};
    say("whatever", 1, nlu);
    const VoiceCall result = recognition();
    EXPECT_EQ(result.number, 0);
    EXPECT_EQ(result.nlu, nlu);
    EXPECT_EQ(reply().result, 0);
    EXPECT_EQ(contentAfter(1).action, "");
}

TEST_F(TheAssistant, DeliversALargeAnswer)
{
    startWithClient();
    const Texts nlu = {std::string(4'000'000, 'x')};
    say("whatever", 1, nlu);
    EXPECT_EQ(recognition().nlu, nlu);
    EXPECT_EQ(reply().result, 0);
}

TEST_F(TheAssistant, DeliversOneSentenceAfterTheOther)
{
    startWithClient();
    for (int turn = 1; turn <= 3; ++turn) {
        say("check out");
        recognition();
        EXPECT_EQ(textIn(reply(), KeyTurn), std::to_string(turn));
    }
}

TEST_F(TheAssistant, WaitsForAServiceThatIsNotThereYet)
{
    start();
    say("check out");
    contentAfter(1);
    client_ = std::make_unique<VoicePeer>(Ready, Commands);
    EXPECT_EQ(recognition().text, Texts{"check out"});
    EXPECT_EQ(reply().result, 0);
}

TEST_F(TheAssistant, WaitsForAClientThatDoesNotListenYet)
{
    client_ = std::make_unique<VoicePeer>(Initialized, Texts());
    start();
    say("check out");
    ASSERT_TRUE(client_->waitForLook());
    client_->become(Ready, {});
    client_->become(Ready, Commands);
    EXPECT_EQ(recognition().text, Texts{"check out"});
    EXPECT_EQ(reply().result, 0);
}

TEST_F(TheAssistant, SaysThatTheServiceIsNotThere)
{
    start();
    say("check out");
    const RawMessage answer = reply();
    EXPECT_EQ(answer.result, -1);
    EXPECT_EQ(textIn(answer, KeyReason), "not delivered to the service: it is not running");
    EXPECT_EQ(contentWhen([](const auto& now) { return now.fate == Fate::Failed; }).reason,
              "not delivered to the service: it is not running");
}

TEST_F(TheAssistant, SaysThatTheServiceHasNoVoiceControl)
{
    const VoicePeer bare(VoicePeer::Lack::Object);
    start();
    say("check out");
    const RawMessage answer = reply();
    EXPECT_EQ(answer.result, -1);
    EXPECT_NE(textIn(answer, KeyReason).find("it has no client of voice control"), std::string::npos)
        << textIn(answer, KeyReason);
}

TEST_F(TheAssistant, SaysThatTheServiceDoesNotAnswer)
{
    const VoicePeer deaf(VoicePeer::Lack::Hearing);
    start();
    say("check out");
    const RawMessage answer = reply();
    EXPECT_EQ(answer.result, -1);
    EXPECT_EQ(textIn(answer, KeyReason), "not delivered to the service: it does not answer");
}

TEST_F(TheAssistant, SaysThatTheClientDoesNotListen)
{
    client_ = std::make_unique<VoicePeer>(Ready, Texts());
    start();
    say("check out");
    EXPECT_EQ(textIn(reply(), KeyReason),
              "not delivered to the service: its client of voice control is in state 2 with 0 commands");
}

TEST_F(TheAssistant, SaysThatTheResultWasRefused)
{
    startWithClient(VoicePeer::Manner::Refusing);
    say("check out");
    recognition();
    const RawMessage answer = reply();
    EXPECT_EQ(answer.result, -1);
    EXPECT_EQ(textIn(answer, KeyReason), "not delivered to the service: no such event");
    say("check out");
    recognition();
}

TEST_F(TheAssistant, SaysThatTheServiceLeftInTheMiddle)
{
    startWithClient(VoicePeer::Manner::Silent);
    say("check out");
    recognition();
    client_.reset();
    const RawMessage answer = reply();
    EXPECT_EQ(answer.result, -1);
    EXPECT_EQ(textIn(answer, KeyReason).rfind("not delivered to the service: ", 0), 0U);
}

TEST_F(TheAssistant, RefusesASentenceWhileOneIsUnderWay)
{
    start();
    say("check out", 1);
    say("show my cart", 2);
    const RawMessage second = reply();
    EXPECT_EQ(second.id, 2U);
    EXPECT_EQ(second.result, -1);
    EXPECT_EQ(textIn(second, KeyReason), "another sentence is under way");
    client_ = std::make_unique<VoicePeer>(Ready, Commands);
    EXPECT_EQ(recognition().text, Texts{"check out"});
    EXPECT_EQ(reply().id, 1U);
}

TEST_F(TheAssistant, NeedsASentence)
{
    startWithClient();
    ASSERT_EQ(tool_->launch(AssistantAppId, OperationSay, 1), "");
    EXPECT_EQ(textIn(reply(), KeyReason), "there is no sentence");
    EXPECT_EQ(contentAfter(1).turn, 0);
}

TEST_F(TheAssistant, ClosesItsViewForTheServiceOnly)
{
    startWithClient();
    say("check out");
    reply();
    ASSERT_EQ(tool_->launch(AssistantAppId, OperationCloseApp, 0), "");
    const auto before = contentAfter(2);
    EXPECT_EQ(before.view, View::Open);
    EXPECT_EQ(before.messages.back().outcome, "ignored: only the service closes the view");
    fromService(OperationCloseApp);
    EXPECT_EQ(contentAfter(3).view, View::Closed);
}

TEST_F(TheAssistant, NotesWhatElseItReceives)
{
    start();
    fromService(OperationRefreshView);
    fromService("http://nuvex-da/appcontrol/operation/sing");
    const auto content = contentAfter(2);
    EXPECT_EQ(content.messages[0].outcome, "taken");
    EXPECT_EQ(content.messages[1].outcome, "ignored: unknown operation");
    EXPECT_EQ(content.view, View::Closed);
}

TEST_F(TheAssistant, RepliesToWhoeverWantsIt)
{
    start();
    ASSERT_EQ(tool_->launch(AssistantAppId, "http://nuvex-da/appcontrol/operation/sing", 1), "");
    EXPECT_EQ(reply().result, -1);
    ASSERT_EQ(tool_->launch(AssistantAppId, OperationCloseApp, 2), "");
    EXPECT_EQ(reply().result, -1);
    ASSERT_EQ(tool_->launch(AssistantAppId, OperationCloseApp, 3, {}, ServiceAppId), "");
    EXPECT_EQ(reply().result, 0);
}

TEST_F(TheAssistant, EndsWellWithASentenceUnderWay)
{
    start();
    say("check out");
    contentAfter(1);
}

TEST(TheAssistantProgram, EndsWithItsBus)
{
    TestSupport::PrivateBus bus;
    TestSupport::ChildProcess app({CARVOY_ASSISTANT});
    ASSERT_TRUE(TestSupport::waitForName(AssistantAppId));
    {
        RawPeer tool;
        ASSERT_EQ(tool.launch(AssistantAppId, OperationSay, 1, {{KeyUtterance, sdbus::Variant("check out")}}),
                  "");
    }
    bus.kill();
    const TestSupport::ProcessEnd end = app.wait();
    EXPECT_TRUE(end.inTime);
    EXPECT_EQ(end.status, 1) << app.errors();
    EXPECT_NE(app.errors(), "");
}

TEST(TheAssistantProgram, SaysWhyItCannotRun)
{
    TestSupport::ChildProcess lonely({CARVOY_ASSISTANT},
                                     {{"DBUS_SESSION_BUS_ADDRESS", "unix:abstract=nobody-listens-here"}});
    EXPECT_EQ(lonely.wait().status, 1);
    EXPECT_NE(lonely.errors(), "");
    TestSupport::ChildProcess wrong({CARVOY_ASSISTANT, "sentence"});
    EXPECT_EQ(wrong.wait().status, 2);
}

}  // namespace
