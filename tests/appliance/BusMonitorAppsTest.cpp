// Whom a monitor of the bus knows by which name, and how it begins and ends.
#include <memory>
#include <stdexcept>
#include <system_error>

#include "BusMonitorFixture.h"
#include "FdWatch.h"

namespace {

using namespace ApplianceTest;
using Appliance::BusMessage;
using Appliance::BusMonitor;
using TestSupport::PrivateBus;
using TestSupport::RawPeer;

TEST_F(ABusMonitor, BelievesTheBusAboutTheSender)
{
    RawPeer sender(Sender);
    RawPeer nobody;
    RawPeer receiver(Receiver);
    watch();
    sender.launch(Receiver, Operation, 0, {}, "org.example.somebody.else");
    nobody.launch(Receiver, Operation, 0, {}, "org.example.claimed");
    nobody.launch(Receiver, Operation, 0, {}, "");
    nobody.launch(receiver.uniqueName(), Operation, 0, {}, "");
    ASSERT_TRUE(waitForMessages(4));
    EXPECT_EQ(messages_[0].from, Sender);
    EXPECT_EQ(messages_[1].from, "org.example.claimed");
    EXPECT_EQ(messages_[2].from, nobody.uniqueName());
    EXPECT_EQ(messages_[3].to, Receiver);
}

TEST_F(ABusMonitor, TellsWhoASenderWithoutANameClaimedToBeInTheReplyToo)
{
    RawPeer nobody;
    RawPeer receiver(Receiver);
    watch();
    nobody.launch(Receiver, Operation, 7, {}, "org.example.claimed");
    receiver.reply(nobody.uniqueName(), 7);
    ASSERT_TRUE(waitForMessages(2));
    EXPECT_EQ(messages_[1].to, "org.example.claimed");
}

TEST_F(ABusMonitor, KnowsTheAppOfAnotherConnectionOfItsProcess)
{
    const RawPeer app(Sender);
    watch();
    const auto second = sdbus::createSessionBusConnection();
    const auto speak = [&second] {
        callOver(*second, "org.example.nobody", VoicePath, VoiceInterface, "Error", std::int32_t{1});
    };
    speak();
    ASSERT_TRUE(waitUntil([this] { return messages_.size() == 2; }));
    EXPECT_EQ(messages_[0].from, Sender);
    EXPECT_EQ(messages_[1].to, Sender);
    const RawPeer another("org.example.another");
    speak();
    ASSERT_TRUE(waitForMessages(4));
    EXPECT_EQ(messages_[2].from, second->getUniqueName()) << "which of the two cannot be told";
}

TEST_F(ABusMonitor, TellsWhichAppsAreThere)
{
    const RawPeer early("org.example.early");
    const RawPeer nobody;
    watch();
    EXPECT_EQ(apps_, (std::vector<Presence>{{"org.example.early", true}}));
    {
        const RawPeer late("org.example.late");
        EXPECT_TRUE(waitForApp("org.example.late", true));
    }
    EXPECT_TRUE(waitForApp("org.example.late", false));
    EXPECT_EQ(apps_.size(), 3U);
}

TEST_F(ABusMonitor, KnowsAnAppThatCameBackUnderItsNewConnection)
{
    auto receiver = std::make_unique<RawPeer>(Receiver);
    RawPeer sender(Sender);
    watch();
    receiver.reset();
    ASSERT_TRUE(waitForApp(Receiver, false));
    receiver = std::make_unique<RawPeer>(Receiver);
    receiver->launch(Sender, Operation);
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_EQ(messages_[0].from, Receiver);
}

TEST_F(ABusMonitor, TellsOnceThatTheBusHasGone)
{
    watch();
    bus_.kill();
    EXPECT_TRUE(waitUntil([this] { return lost_ > 0; }));
    int turns = 0;
    const Appliance::Ticker turn(std::chrono::milliseconds(0), [&turns] { ++turns; });
    EXPECT_TRUE(waitUntil([&turns] { return turns > 10; }));
    EXPECT_EQ(lost_, 1);
}

TEST_F(ABusMonitor, KeepsWhatAHandlerThrows)
{
    RawPeer sender(Sender);
    RawPeer receiver(Receiver);
    int shown = 0;
    const BusMonitor monitor(
        bus_.address(),
        [&](const BusMessage&) {
            ++shown;
            throw std::runtime_error("no");
        },
        [](const std::string&, bool) {}, [] {});
    sender.launch(Receiver, Operation);
    EXPECT_THROW(loop_.runUntil([] { return false; }, TestSupport::Patience), std::runtime_error);
    sender.launch(Receiver, Operation);
    EXPECT_THROW(loop_.runUntil([] { return false; }, TestSupport::Patience), std::runtime_error);
    EXPECT_EQ(shown, 2);
    EXPECT_EQ(Appliance::takeCallbackError(), nullptr);
}

TEST_F(ABusMonitor, NeedsABus)
{
    bus_.kill();
    EXPECT_THROW(watch(), std::system_error);
}

class ASecretiveBus : public ABusMonitor {
  protected:
    static PrivateBus::Options secretive()
    {
        PrivateBus::Options options;
        options.policy =
            "<deny send_destination=\"org.freedesktop.DBus\""
            " send_interface=\"org.freedesktop.DBus.Monitoring\"/>";
        return options;
    }

    ASecretiveBus() : ABusMonitor(secretive()) {}
};

TEST_F(ASecretiveBus, CannotBeWatched)
{
    try {
        watch();
        ADD_FAILURE();
    } catch (const std::system_error& error) {
        ADD_FAILURE() << error.what();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()).rfind("the bus does not let anybody watch: ", 0), 0U);
    }
    EXPECT_TRUE(apps_.empty());
}

}  // namespace
