// What a monitor of the bus shows of the messages that pass.
#include <tuple>

#include "BusMonitorFixture.h"
#include "BusReader.h"
#include "Received.h"

namespace {

using namespace ApplianceTest;
using Appliance::BusMessage;
using Appliance::BusMonitor;
using Appliance::BusReader;
using Appliance::TextList;
using TestSupport::RawMessage;
using TestSupport::RawPeer;
using Kind = BusMessage::Kind;

constexpr char InvalidArgs[] = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr char AppControlPath[] = "/org/tizen/AppControl";
constexpr char AppControlInterface[] = "org.tizen.AppControl1";

TEST_F(ABusMonitor, ShowsALaunchAsItWasSent)
{
    RawPeer sender(Sender);
    RawPeer receiver(Receiver);
    watch();
    const auto before = std::chrono::system_clock::now().time_since_epoch();
    const TextList names = {"Milk", "우유", ""};
    sender.launch(Receiver, Operation, 0,
                  {{"key_one", sdbus::Variant(std::string("1"))}, {"key_names", sdbus::Variant(names)}},
                  Sender, "http://example.org/");
    ASSERT_TRUE(waitForMessages(1));
    const BusMessage& launch = messages_[0];
    EXPECT_EQ(launch.number, 1U);
    EXPECT_GE(launch.at, std::chrono::duration_cast<std::chrono::milliseconds>(before).count());
    EXPECT_EQ(launch.kind, Kind::Launch);
    EXPECT_EQ(launch.from, Sender);
    EXPECT_EQ(launch.to, Receiver);
    EXPECT_EQ(launch.operation, Operation);
    EXPECT_EQ(launch.uri, "http://example.org/");
    EXPECT_EQ(launch.extras.texts, (std::map<std::string, std::string>{{"key_one", "1"}}));
    EXPECT_EQ(launch.extras.lists, (std::map<std::string, TextList>{{"key_names", names}}));
    EXPECT_EQ(launch.result + launch.error, "");
    EXPECT_EQ(launch.answers, 0U);
}

TEST_F(ABusMonitor, PairsAReplyWithItsLaunch)
{
    RawPeer sender(Sender);
    RawPeer receiver(Receiver);
    watch();
    sender.launch(Receiver, "first", 7);
    sender.launch(Receiver, "second", 8);
    receiver.reply(sender.uniqueName(), 8, -1, {{"key", sdbus::Variant(std::string("value"))}});
    receiver.reply(sender.uniqueName(), 7, 0);
    receiver.reply(sender.uniqueName(), 7, -2);
    receiver.reply(sender.uniqueName(), 7, 5);
    ASSERT_TRUE(waitForMessages(6));
    const BusMessage& reply = messages_[2];
    EXPECT_EQ(reply.kind, Kind::Reply);
    EXPECT_EQ(reply.from, Receiver);
    EXPECT_EQ(reply.to, Sender);
    EXPECT_EQ(reply.operation, "second");
    EXPECT_EQ(reply.uri, "");
    EXPECT_EQ(reply.extras.text("key"), "value");
    EXPECT_EQ(reply.result, "failed");
    EXPECT_EQ(reply.answers, 2U);
    const auto whatAndHow = [this](std::size_t i) {
        return std::tuple(messages_[i].answers, messages_[i].operation, messages_[i].result);
    };
    EXPECT_EQ(whatAndHow(3), std::tuple(1U, "first", "succeeded"));
    EXPECT_EQ(whatAndHow(4), std::tuple(1U, "first", "canceled"));
    EXPECT_EQ(whatAndHow(5), std::tuple(1U, "first", ""));
}

TEST_F(ABusMonitor, PairsNoReplyOfAnotherConnectionOrOfAnotherRequest)
{
    RawPeer sender(Sender);
    RawPeer receiver(Receiver);
    RawPeer stranger("org.example.stranger");
    watch();
    sender.launch(Receiver, Operation, 7);
    sender.launch(Receiver, Operation, 0);
    stranger.reply(sender.uniqueName(), 7);
    receiver.reply(sender.uniqueName(), 9);
    receiver.reply(sender.uniqueName(), 0);
    ASSERT_TRUE(waitForMessages(5));
    for (std::size_t i = 2; i < 5; ++i) {
        EXPECT_EQ(messages_[i].kind, Kind::Reply);
        EXPECT_EQ(messages_[i].answers, 0U) << i;
        EXPECT_EQ(messages_[i].operation, "") << i;
        EXPECT_EQ(messages_[i].to, Sender) << i;
    }
}

TEST_F(ABusMonitor, PairsWithTheLatestLaunchOfARequestId)
{
    RawPeer sender(Sender);
    RawPeer receiver(Receiver);
    watch();
    sender.launch(Receiver, "first", 7);
    sender.launch(Receiver, "second", 7);
    receiver.reply(sender.uniqueName(), 7);
    ASSERT_TRUE(waitForMessages(3));
    EXPECT_EQ(messages_[2].answers, 2U);
}

TEST_F(ABusMonitor, ShowsNoReplyOfAReceiverThatLeaves)
{
    RawPeer sender(Sender);
    {
        RawPeer receiver(Receiver);
        watch();
        sender.launch(Receiver, Operation, 7);
    }
    EXPECT_TRUE(waitForApp(Receiver, false));
    EXPECT_TRUE(waitForMessages(1));
}

TEST_F(ABusMonitor, ShowsWhatAReceiverRefuses)
{
    RawPeer sender(Sender);
    RawPeer receiver(Receiver, [](const RawMessage&) { throw sdbus::Error(InvalidArgs, "not like this"); });
    watch();
    EXPECT_EQ(sender.launch(Receiver, Operation, 7), InvalidArgs);
    receiver.reply(sender.uniqueName(), 7);
    ASSERT_TRUE(waitForMessages(3));
    const BusMessage& refusal = messages_[1];
    EXPECT_EQ(refusal.number, 2U);
    EXPECT_EQ(refusal.kind, Kind::Refusal);
    EXPECT_EQ(refusal.from, Receiver);
    EXPECT_EQ(refusal.to, Sender);
    EXPECT_EQ(refusal.operation, Operation);
    EXPECT_EQ(refusal.error, std::string(InvalidArgs) + ": not like this");
    EXPECT_EQ(refusal.answers, 1U);
    EXPECT_EQ(messages_[2].answers, 0U) << "a refused request has no reply";
}

TEST_F(ABusMonitor, ShowsWhatTheBusRefuses)
{
    RawPeer sender(Sender);
    watch();
    EXPECT_NE(sender.launch("org.example.nobody", Operation, 7), "");
    ASSERT_TRUE(waitForMessages(2));
    EXPECT_EQ(messages_[0].to, "org.example.nobody");
    EXPECT_EQ(messages_[1].from, "org.freedesktop.DBus");
    EXPECT_EQ(messages_[1].to, Sender);
    EXPECT_EQ(messages_[1].error.rfind("org.freedesktop.DBus.Error.ServiceUnknown: ", 0), 0U);
    EXPECT_EQ(messages_[1].answers, 1U);
}

TEST_F(ABusMonitor, ShowsARefusedReply)
{
    RawPeer receiver(Receiver);
    watch();
    EXPECT_NE(receiver.reply(":7.7", 7), "");
    ASSERT_TRUE(waitForMessages(2));
    EXPECT_EQ(messages_[0].to, ":7.7");
    EXPECT_EQ(messages_[1].answers, 1U);
    EXPECT_EQ(messages_[1].to, Receiver);
}

TEST_F(ABusMonitor, ShowsVoiceCallsWithTheirArguments)
{
    RawPeer client(Receiver);  // without the object of voice control: whatever is said is refused
    watch();
    const TextList said = {"add to cart"};
    const TextList nlu = {"{}", ""};
    call(Receiver, VoicePath, VoiceInterface, "Result", std::int32_t{1}, said, nlu);
    call(Receiver, VoicePath, VoiceInterface, "ClientState", std::int32_t{2});
    call(Receiver, VoicePath, VoiceInterface, "ServiceState", std::int32_t{3});
    call(Receiver, VoicePath, VoiceInterface, "Error", std::int32_t{-4});
    call(Receiver, VoicePath, VoiceInterface, "Language", std::string("ko_KR"));
    call(Receiver, VoicePath, VoiceInterface, "Language", std::int32_t{1});
    call(Receiver, VoicePath, VoiceInterface, "Nonsense", std::string("x"));
    ASSERT_TRUE(waitForMessages(14));
    EXPECT_EQ(messages_[0].kind, Kind::Voice);
    EXPECT_EQ(messages_[0].to, Receiver);
    EXPECT_EQ(messages_[0].operation, "Result");
    EXPECT_EQ(messages_[0].extras.text("event"), "1");
    EXPECT_EQ(messages_[0].extras.list("text"), said);
    EXPECT_EQ(messages_[0].extras.list("nlu"), nlu);
    EXPECT_EQ(messages_[1].kind, Kind::Refusal);
    EXPECT_EQ(messages_[1].operation, "Result");
    EXPECT_EQ(messages_[1].answers, 1U);
    EXPECT_EQ(messages_[2].extras.text("state"), "2");
    EXPECT_EQ(messages_[4].extras.text("state"), "3");
    EXPECT_EQ(messages_[6].extras.text("reason"), "-4");
    EXPECT_EQ(messages_[8].extras.text("language"), "ko_KR");
    for (const std::size_t unreadable : {10U, 12U}) {
        EXPECT_TRUE(messages_[unreadable].extras.texts.empty());
        EXPECT_EQ(messages_[unreadable + 1].answers, unreadable + 1);
    }
}

TEST_F(ABusMonitor, ShowsNothingButMessagesOfApps)
{
    RawPeer receiver(Receiver);
    watch();
    call(Receiver, AppControlPath, "org.freedesktop.DBus.Introspectable", "Introspect");
    call(Receiver, AppControlPath, "org.example.Unknown", "Launch");
    call(Receiver, AppControlPath, AppControlInterface, "Unknown");
    EXPECT_TRUE(waitForMessages(0));
}

TEST_F(ABusMonitor, ShowsCallsOfAnotherSignatureWithoutTheirArguments)
{
    RawPeer receiver(Receiver);
    watch();
    EXPECT_EQ(call(Receiver, AppControlPath, AppControlInterface, "Launch"), InvalidArgs);
    EXPECT_EQ(call(Receiver, AppControlPath, AppControlInterface, "Launch", std::int32_t{1}), InvalidArgs);
    EXPECT_EQ(call(Receiver, AppControlPath, AppControlInterface, "Reply", std::string("7")), InvalidArgs);
    ASSERT_TRUE(waitForMessages(6));
    EXPECT_EQ(messages_[0].kind, Kind::Launch);
    EXPECT_EQ(messages_[0].operation, "");
    EXPECT_EQ(messages_[4].kind, Kind::Reply);
    EXPECT_EQ(messages_[4].result, "");
    for (const std::size_t refusal : {1U, 3U, 5U}) {
        EXPECT_EQ(messages_[refusal].kind, Kind::Refusal);
        EXPECT_EQ(messages_[refusal].answers, refusal);
    }
}

TEST_F(ABusMonitor, TellsTheTypeOfExtrasThatAreNoTexts)
{
    RawPeer sender(Sender);
    RawPeer receiver(Receiver);
    watch();
    const std::map<std::string, sdbus::Variant> deep = {{"in", sdbus::Variant(std::int32_t{5})}};
    sender.launch(Receiver, Operation, 0,
                  {{"a", sdbus::Variant(std::int32_t{5})},
                   {"b", sdbus::Variant(deep)},
                   {"c", sdbus::Variant(std::string("text"))},
                   {"d", sdbus::Variant(TextList{})}});
    ASSERT_TRUE(waitForMessages(1));
    const Appliance::Extras& extras = messages_[0].extras;
    EXPECT_EQ(extras.text("a"), "(of type i)");
    EXPECT_EQ(extras.text("b"), "(of type a{sv})");
    EXPECT_EQ(extras.text("c"), "text");
    EXPECT_EQ(extras.lists.count("d"), 1U);
}

TEST_F(ABusMonitor, CutsWhatIsTooMuch)
{
    RawPeer sender(Sender);
    RawPeer receiver(Receiver);
    watch();
    const std::string huge(5'000'000, 'x');
    sender.launch(Receiver, huge, 0,
                  {{"list", sdbus::Variant(TextList(1000, "short"))}, {"text", sdbus::Variant(huge)}}, huge);
    TestSupport::Extras many;
    for (int i = 0; i < 1000; ++i) {
        many[std::to_string(1000 + i)] = sdbus::Variant(std::string("short"));
    }
    sender.launch(Receiver, Operation, 0, many);
    sender.launch(Receiver, Operation, 0,
                  {{"a", sdbus::Variant(TextList(90, huge.substr(0, 3000)))},
                   {"b", sdbus::Variant(std::string("no room"))}});
    ASSERT_TRUE(waitForMessages(3));
    const std::string cut = Appliance::shortened(huge);
    EXPECT_EQ(messages_[0].operation, cut);
    EXPECT_EQ(messages_[0].extras.text("text"), cut);
    EXPECT_EQ(messages_[0].extras.list("list").size(), BusReader::MostElements + 1);
    EXPECT_EQ(messages_[0].extras.list("list").back(), "…");
    EXPECT_EQ(messages_[1].extras.texts.size(), BusReader::MostExtras + 1);
    EXPECT_EQ(messages_[1].extras.text("…"), "…");
    std::size_t bytes = 0;
    for (const std::string& text : messages_[2].extras.list("a")) {
        bytes += text.size();
    }
    EXPECT_LE(bytes, BusReader::MostBytes + 10);
    EXPECT_GE(bytes, BusReader::MostBytes - 3000);
    EXPECT_EQ(messages_[2].extras.list("a").back(), "…");
    EXPECT_EQ(messages_[2].extras.texts, (std::map<std::string, std::string>{{"…", "…"}}));
}

TEST_F(ABusMonitor, ShowsABurstInItsOrder)
{
    constexpr std::size_t count = 2000;
    RawPeer sender(Sender);
    RawPeer receiver(Receiver);
    watch();
    for (std::size_t i = 0; i < count; ++i) {
        sender.launchInABurst(Receiver, std::to_string(i));
    }
    EXPECT_EQ(sender.answersToTheBurst(), std::vector<std::string>());
    ASSERT_TRUE(waitForMessages(count));
    for (std::size_t i = 0; i < count; ++i) {
        ASSERT_EQ(messages_[i].number, i + 1);
        ASSERT_EQ(messages_[i].operation, std::to_string(i));
    }
}

TEST_F(ABusMonitor, ForgetsTheOldestOfTooManyLaunches)
{
    RawPeer sender(Sender);
    RawPeer receiver(Receiver);
    watch();
    const std::size_t count = BusMonitor::MostRemembered + 1;
    for (std::size_t i = 1; i <= count; ++i) {
        sender.launch(Receiver, Operation, static_cast<std::uint32_t>(i));
    }
    receiver.reply(sender.uniqueName(), 1);
    receiver.reply(sender.uniqueName(), 2);
    ASSERT_TRUE(waitForMessages(count + 2));
    EXPECT_EQ(messages_[count].answers, 0U);
    EXPECT_EQ(messages_[count + 1].answers, 2U);
}

}  // namespace
