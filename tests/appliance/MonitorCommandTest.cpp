// The tool's look at the messages between apps.
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <nlohmann/json.hpp>

#include "LogText.h"
#include "PrivateBus.h"
#include "RawPeer.h"
#include "ToolFixture.h"

namespace {

using namespace TestSupport;

constexpr char Receiver[] = "org.example.receiver";
constexpr char Other[] = "org.example.other";
constexpr char Operation[] = "http://carvoy-service/appcontrol/operation/look";

std::unique_ptr<ChildProcess> watching(Words options)
{
    options.insert(options.begin(), {APPLIANCE_TOOL, "monitor"});
    auto monitor = std::make_unique<ChildProcess>(options);
    EXPECT_TRUE(monitor->waitForErrors("watching")) << monitor->errors();
    return monitor;
}

// A bus with two apps, and no appliance.
class AMonitor : public testing::Test {
  protected:
    static sdbus::Variant text(const std::string& value) { return sdbus::Variant(value); }

    PrivateBus bus_;
    RawPeer sender_{"org.example.sender"};
    RawPeer receiver_{Receiver};
    RawPeer other_{Other};
};

TEST_F(AMonitor, ShowsMessagesAsTheyPassUntilItIsInterrupted)
{
    const auto monitor = watching({});
    sender_.launch(Receiver, Operation, 7, {{"key", text("value")}});
    receiver_.reply(sender_.uniqueName(), 7);
    ASSERT_TRUE(monitor->waitForOutput("  to #1  succeeded\n")) << monitor->output();
    EXPECT_TRUE(has(monitor->output(),
                    "  #1    launch   org.example.sender → org.example.receiver  "
                    "service:look  key=value\n"))
        << monitor->output();
    monitor->signal(SIGINT);
    EXPECT_EQ(monitor->wait().status, 130) << monitor->errors();
}

TEST_F(AMonitor, EndsAfterSoManyMessages)
{
    const auto monitor = watching({"--count", "2"});
    for (int i = 0; i < 5; ++i) {
        sender_.launch(Receiver, Operation);
    }
    EXPECT_EQ(monitor->wait().status, 0) << monitor->errors();
    EXPECT_EQ(count(monitor->output(), "\n"), 2U) << monitor->output();
}

TEST_F(AMonitor, ShowsOnlyTheAppsThatItIsAskedFor)
{
    const auto monitor = watching({"--count", "2", "--app", Other});
    sender_.launch(Receiver, Operation);
    sender_.launch(Other, Operation);
    other_.launch(Receiver, Operation);
    EXPECT_EQ(monitor->wait().status, 0) << monitor->errors();
    EXPECT_TRUE(has(monitor->output(), "  #2    launch   org.example.sender → org.example.other  "));
    EXPECT_TRUE(has(monitor->output(), "  #3    launch   org.example.other → org.example.receiver  "))
        << monitor->output();
}

TEST_F(AMonitor, ShowsOnlyTheKindsThatItIsAskedFor)
{
    const auto monitor = watching({"--count", "2", "--kind", "reply", "--kind", "refusal"});
    sender_.launch(Receiver, Operation, 7);
    EXPECT_NE(sender_.launch("org.example.nobody", Operation), "");
    receiver_.reply(sender_.uniqueName(), 7, -1);
    EXPECT_EQ(monitor->wait().status, 0) << monitor->errors();
    EXPECT_TRUE(has(monitor->output(),
                    "refusal  org.freedesktop.DBus → org.example.sender  service:look  "
                    "to #2  org.freedesktop.DBus.Error.ServiceUnknown"))
        << monitor->output();
    EXPECT_TRUE(has(monitor->output(),
                    "reply    org.example.receiver → org.example.sender  service:look  "
                    "to #1  failed\n"))
        << monitor->output();
}

TEST_F(AMonitor, ShowsAnObjectOnEachLineInJson)
{
    const auto monitor = watching({"--json", "--count", "1"});
    const std::vector<std::string> names = {"Milk", "우유"};
    const std::string evil = "a\x1B[2J\n\xC2\x9B\x7F";
    sender_.launch(Receiver, Operation, 0, {{"names", sdbus::Variant(names)}, {"evil", text(evil)}});
    EXPECT_EQ(monitor->wait().status, 0) << monitor->errors();
    const std::string output = monitor->output();
    EXPECT_EQ(count(output, "\n"), 1U) << output;
    EXPECT_EQ(output.find_first_of("\x1B\x7F"), std::string::npos);
    EXPECT_FALSE(has(output, "\xC2\x9B"));
    nlohmann::json json = nlohmann::json::parse(output);
    EXPECT_GT(json["at"], 1'600'000'000'000);
    json.erase("at");
    EXPECT_EQ(json, nlohmann::json({{"number", 1},
                                    {"kind", "launch"},
                                    {"from", "org.example.sender"},
                                    {"to", Receiver},
                                    {"operation", Operation},
                                    {"uri", ""},
                                    {"extras", {{"names", names}, {"evil", evil}}},
                                    {"result", ""},
                                    {"error", ""},
                                    {"answers", 0}}));
}

TEST_F(AMonitor, ShowsAllOfItWhereThatIsAskedFor)
{
    const auto monitor = watching({"-v", "--count", "1"});
    sender_.launch(Receiver, Operation, 0, {{"names", sdbus::Variant(std::vector<std::string>{"a", "b"})}});
    EXPECT_EQ(monitor->wait().status, 0) << monitor->errors();
    EXPECT_TRUE(has(monitor->output(), "    names[0] = a\n    names[1] = b\n")) << monitor->output();
}

TEST_F(AMonitor, IsNotDisturbedByWhatAPeerSends)
{
    const auto monitor = watching({"--count", "1"});
    const std::string evil = "\x1B[2J\r\n\x07\xC2\x9B\x7F";
    RawPeer nobody;
    nobody.launch(Receiver, evil, 0, {{evil, text(evil)}}, evil, evil);
    EXPECT_EQ(monitor->wait().status, 0) << monitor->errors();
    const std::string output = monitor->output();
    EXPECT_EQ(count(output, "\n"), 1U) << output;
    EXPECT_EQ(output.find_first_of("\x1B\r\x07\x7F"), std::string::npos);
    EXPECT_FALSE(has(output, "\xC2\x9B"));
}

TEST(AMonitorOfABus, EndsWithIt)
{
    PrivateBus bus;
    const auto monitor = watching({});
    bus.kill();
    EXPECT_EQ(monitor->wait().status, 3);
    EXPECT_TRUE(has(monitor->errors(), "the bus of DBUS_SESSION_BUS_ADDRESS has gone away"))
        << monitor->errors();
}

TEST_F(AMonitor, SaysWhereItsOutputCannotBeWritten)
{
    ChildProcess shell({"sh", "-c", std::string("exec ") + APPLIANCE_TOOL + " monitor >/dev/full"});
    ASSERT_TRUE(shell.waitForErrors("watching"));
    sender_.launch(Receiver, Operation);
    EXPECT_EQ(shell.wait().status, 1);
    EXPECT_TRUE(has(shell.errors(), "standard output cannot be written")) << shell.errors();
}

TEST(AMonitorWithoutABus, SaysSo)
{
    const Ended monitor =
        tool({"monitor"}, {{"DBUS_SESSION_BUS_ADDRESS", "unix:abstract=nobody-listens-here"}});
    EXPECT_EQ(monitor.status, 3);
    EXPECT_TRUE(has(monitor.errors, "cannot reach the bus")) << monitor.errors;
    EXPECT_EQ(tool({"monitor", "--count", "0"}).status, 2);
    EXPECT_EQ(tool({"monitor", "--count", "x"}).status, 2);
    EXPECT_EQ(tool({"monitor", "--kind", "call"}).status, 2);
}

TEST_F(ARunningAppliance, ShowsTheMessagesOfASearchUntilItEnds)
{
    up();
    const auto monitor = watching({"--root", root_});
    EXPECT_EQ(on({"search", "--no-pictures", "milk"}).status, 0);
    EXPECT_TRUE(monitor->waitForOutput("org.tizen.carvoy → org.tizen.carvoy-service  service:search  "))
        << monitor->output();
    EXPECT_TRUE(monitor->waitForOutput("org.tizen.carvoy-service → org.tizen.carvoy  service:result  "))
        << monitor->output();
    EXPECT_TRUE(has(monitor->output(), "  key_product_names[6]  ")) << monitor->output();
    down();
    EXPECT_EQ(monitor->wait().status, 3);
    EXPECT_TRUE(has(monitor->errors(), "the appliance in " + root_ + " has gone away")) << monitor->errors();
}

}  // namespace
