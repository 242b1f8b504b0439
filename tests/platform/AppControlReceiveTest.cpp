// What reaches an app over the bus, and what it answers.
#include <app_control.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <memory>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "PrivateBus.h"
#include "RawPeer.h"

namespace {

using TestSupport::ChildProcess;
using TestSupport::Extras;
using TestSupport::PrivateBus;
using TestSupport::RawMessage;
using TestSupport::RawPeer;

const char* const AppId = "org.example.test-app";
const char* const OtherAppId = "org.example.other-test-app";
const std::string ErrorPrefix = "org.freedesktop.DBus.Error.";

class ARunningApp : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(TestSupport::waitForName(AppId)) << app.errors(); }

    void expectExit(ChildProcess& process)
    {
        process.signal(SIGTERM);
        const TestSupport::ProcessEnd end = process.wait();
        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(end.status, 0) << "signal " << end.signal << "\n" << process.errors();
    }

    void TearDown() override { expectExit(app); }

    PrivateBus bus;
    ChildProcess app{{TEST_APP}};
};

TEST_F(ARunningApp, GetsAllOfARequest)
{
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "http://example/op", 7, {}, "org.example.me"), "");
    EXPECT_TRUE(app.waitForOutput(
        "request http://example/op uri= caller=org.example.me app_id=org.example.me reply wanted\n"));
}

TEST_F(ARunningApp, GetsTheDefaultOperationWhereARequestHasNone)
{
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "", 0, {}, ""), "");
    EXPECT_TRUE(app.waitForOutput("request " APP_CONTROL_OPERATION_DEFAULT
                                  " uri= caller unknown app_id= no reply wanted\n"));
}

TEST_F(ARunningApp, SendsTextsAndListsBackAsTheyCame)
{
    const std::vector<std::string> list{"eins", "zwei – ü", "三"};
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "echo", 1, {{"text", std::string("Süß 🥛")}, {"list", list}}), "");
    const auto reply = peer.nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->id, 1U);
    EXPECT_EQ(reply->result, APP_CONTROL_RESULT_SUCCEEDED);
    ASSERT_EQ(reply->extras.size(), 2U);
    EXPECT_EQ(reply->extras.at("text").get<std::string>(), "Süß 🥛");
    EXPECT_EQ(reply->extras.at("list").get<std::vector<std::string>>(), list);
}

TEST_F(ARunningApp, RefusesExtrasOfOtherTypesAndDoesNotSeeTheRequest)
{
    const std::vector<sdbus::Variant> wrong{std::int32_t{1},
                                            true,
                                            1.5,
                                            std::vector<std::int32_t>{1},
                                            sdbus::ObjectPath("/"),
                                            std::map<std::string, std::string>{},
                                            sdbus::make_struct(std::string("wrapped"))};
    RawPeer peer;
    for (const sdbus::Variant& value : wrong) {
        const Extras extras{{"a", std::string("fine")}, {"b", value}, {"c", std::string("fine")}};
        EXPECT_EQ(peer.launch(AppId, "wrong type", 0, extras), ErrorPrefix + "InvalidArgs")
            << value.peekValueType();
    }
    EXPECT_EQ(peer.launch(AppId, "last"), "");
    EXPECT_TRUE(app.waitForOutput("request last"));
    EXPECT_EQ(app.output().find("wrong type"), std::string::npos);
}

TEST_F(ARunningApp, GetsWhatItCouldNotAddItself)
{
    const Extras extras{{"", std::string("no key")},
                        {"__AUL_KEY", std::string("hidden")},
                        {"empty", std::string()},
                        {"list", std::vector<std::string>{}}};
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "odd", 0, extras), "");
    EXPECT_EQ(peer.launch(AppId, "last"), "");
    EXPECT_TRUE(app.waitForOutput("request last"));
    EXPECT_NE(
        app.output().find("no reply wanted\n  '' = '' -22\n  'empty' = '' 0\n  'list' has 0\nrequest last"),
        std::string::npos)
        << app.output();
}

TEST_F(ARunningApp, HandlesRequestsInTheOrderOfArrival)
{
    RawPeer peer;
    std::string expected = "create\n";
    for (int i = 0; i < 1000; ++i) {
        const std::string number = std::to_string(i);
        ASSERT_EQ(peer.launch(AppId, "number", 0, {{"number", number}}), "");
        expected += "number " + number + "\n";
    }
    EXPECT_TRUE(app.waitForOutput("number 999\n"));
    EXPECT_EQ(app.output(), expected);
}

TEST_F(ARunningApp, SendsAReplyOnlyWhereOneIsWanted)
{
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "answer twice", 0), "");
    EXPECT_EQ(peer.launch(AppId, "echo", 5), "");
    const auto reply = peer.nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->id, 5U);
    EXPECT_TRUE(app.waitForOutput("answers 0 0\n"));
}

TEST_F(ARunningApp, CanReplyToAKeptRequestLater)
{
    RawPeer peer;
    RawPeer other;
    EXPECT_EQ(peer.launch(AppId, "keep", 3, {{"key", std::string("kept")}}), "");
    EXPECT_EQ(other.launch(AppId, "echo", 4), "");
    EXPECT_EQ(other.nextReply()->id, 4U);
    EXPECT_EQ(other.launch(AppId, "answer kept"), "");
    const auto reply = peer.nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->id, 3U);
    EXPECT_EQ(reply->extras.at("key").get<std::string>(), "kept");
}

TEST_F(ARunningApp, DoesNotMindASenderThatLeft)
{
    {
        RawPeer peer;
        EXPECT_EQ(peer.launch(AppId, "keep", 3), "");
    }
    RawPeer other;
    EXPECT_EQ(other.launch(AppId, "answer kept"), "");
    EXPECT_EQ(other.launch(AppId, "last"), "");
    EXPECT_TRUE(app.waitForOutput("request last"));
}

TEST_F(ARunningApp, TakesARequestWhoseSenderWantsNoAnswer)
{
    auto connection = sdbus::createSessionBusConnection();
    auto proxy = sdbus::createProxy(*connection, AppId, "/org/tizen/AppControl");
    proxy->callMethod("Launch")
        .onInterface("org.tizen.AppControl1")
        .withArguments("", std::uint32_t{0}, "unanswered", "", Extras{})
        .dontExpectReply();
    EXPECT_TRUE(app.waitForOutput("request unanswered"));
}

TEST_F(ARunningApp, RefusesAReplyToARequestItDidNotMake)
{
    RawPeer peer;
    EXPECT_EQ(peer.reply(AppId, 0), ErrorPrefix + "AccessDenied");
    EXPECT_EQ(peer.reply(AppId, 1), ErrorPrefix + "AccessDenied");
}

TEST_F(ARunningApp, AndAnotherCanSendToEachOtherAtTheSameTime)
{
    ChildProcess other({OTHER_TEST_APP});
    ASSERT_TRUE(TestSupport::waitForName(OtherAppId));
    RawPeer peer;
    EXPECT_EQ(
        peer.launch(AppId, "send many", 0, {{"to", std::string(OtherAppId)}, {"count", std::string("500")}}),
        "");
    EXPECT_EQ(
        peer.launch(OtherAppId, "send many", 0, {{"to", std::string(AppId)}, {"count", std::string("500")}}),
        "");
    EXPECT_TRUE(app.waitForOutput("sent 500, failed 0\n")) << app.output();
    EXPECT_TRUE(other.waitForOutput("sent 500, failed 0\n")) << other.output();
    expectExit(other);
}

TEST_F(ARunningApp, CanSendToItself)
{
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "send many", 0, {{"to", std::string(AppId)}, {"count", std::string("10")}}),
              "");
    EXPECT_TRUE(app.waitForOutput("sent 10, failed 0\n"));
}

TEST_F(ARunningApp, OutlivesAWorkerThatSendsWhileTheOtherEnds)
{
    // The interleaving: the worker is inside a send, or between two, or has got a reply that waits for the
    // main loop, while service_app_main() takes the connection down; then it sends once more.
    for (int round = 0; round < 50; ++round) {
        ChildProcess sender({OTHER_TEST_APP, "static sender", AppId});
        ASSERT_TRUE(sender.waitForOutput("sending")) << sender.errors();
        ASSERT_TRUE(sender.waitForOutput("create")) << sender.errors();
        expectExit(sender);
        EXPECT_NE(sender.output().find("terminate\nresult 0\nlast send -5\n"), std::string::npos)
            << sender.output();
        EXPECT_EQ(sender.errors(), "");
    }
}

class ABusyApp : public testing::Test {
  protected:
    PrivateBus bus;
};

TEST_F(ABusyApp, RefusesRequestsWhenTooManyWait)
{
    ChildProcess app({TEST_APP, "wait in create"});
    ASSERT_TRUE(app.waitForOutput("waiting"));
    RawPeer peer;
    for (int i = 0; i < 16'384; ++i)
        peer.launchInABurst(AppId, "ping");
    EXPECT_EQ(peer.answersToTheBurst(), std::vector<std::string>());
    EXPECT_EQ(peer.launch(AppId, "too many"), ErrorPrefix + "LimitsExceeded");
    app.signal(SIGUSR1);
    app.signal(SIGTERM);
    EXPECT_EQ(app.wait().status, 0);
}

TEST_F(ABusyApp, ThatRefusesToStartLeavesItsSendersToTheBus)
{
    ChildProcess app({TEST_APP, "wait and refuse"});
    ASSERT_TRUE(app.waitForOutput("waiting"));
    RawPeer peer;
    EXPECT_EQ(peer.launch(AppId, "never seen", 1), "");
    app.signal(SIGUSR1);
    EXPECT_EQ(app.wait().status, 0);
    EXPECT_EQ(app.output(), "create\nwaiting\nterminate\nresult 0\n");
}

}  // namespace
