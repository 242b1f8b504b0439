// What a program that is no app sends, and what it is told when that fails.
#include <app_control.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ChildProcess.h"
#include "PrivateBus.h"
#include "RawPeer.h"
#include "ScratchRoot.h"
#include "Tool.h"

namespace {

using TestSupport::AppId;
using TestSupport::ChildProcess;
using TestSupport::ErrorPrefix;
using TestSupport::loopUntil;
using TestSupport::onReply;
using TestSupport::PeerId;
using TestSupport::PrivateBus;
using TestSupport::RawPeer;
using TestSupport::Replies;
using TestSupport::Request;

class ASend : public testing::Test {
  protected:
    PrivateBus bus;
};

TEST_F(ASend, WithoutAnAppIdFindsNoApp)
{
    for (const char* appId : {static_cast<const char*>(nullptr), "", "nodots", ":1.0", "org..example",
                              "org.7up", "org.example.nobody", "\xff"})
        EXPECT_EQ(Request(appId).send(), APP_CONTROL_ERROR_APP_NOT_FOUND) << (appId ? appId : "null");
}

TEST_F(ASend, OfLaunchOnEventIsRejected)
{
    RawPeer peer(PeerId);
    EXPECT_EQ(Request(PeerId, APP_CONTROL_OPERATION_LAUNCH_ON_EVENT).send(),
              APP_CONTROL_ERROR_LAUNCH_REJECTED);
}

TEST_F(ASend, CarriesEverythingThatTravels)
{
    RawPeer peer(PeerId);
    const char* list[] = {"a", nullptr, "ü"};
    const Request request(PeerId, "http://example/op");
    app_control_set_uri(request, "file:///x");
    app_control_set_mime(request, "text/plain");
    app_control_add_extra_data(request, "text", "🥛");
    app_control_add_extra_data_array(request, "list", list, 3);
    ASSERT_EQ(request.send(), APP_CONTROL_ERROR_NONE);

    const auto launch = peer.nextLaunch();
    ASSERT_TRUE(launch);
    EXPECT_EQ(launch->caller, "");
    EXPECT_EQ(launch->id, 0U);
    EXPECT_EQ(launch->operation, "http://example/op");
    EXPECT_EQ(launch->uri, "file:///x");
    ASSERT_EQ(launch->extras.size(), 2U);
    EXPECT_EQ(launch->extras.at("text").get<std::string>(), "🥛");
    EXPECT_EQ(launch->extras.at("list").get<std::vector<std::string>>(),
              (std::vector<std::string>{"a", "", "ü"}));
}

TEST_F(ASend, OfInvalidUtf8IsRefusedAndTheConnectionSurvives)
{
    RawPeer peer(PeerId);
    EXPECT_EQ(Request(PeerId, "first").send(), APP_CONTROL_ERROR_NONE);
    const std::string sender = peer.nextLaunch()->sender;
    for (const char* bad : {"\xff", "\xc3", "a\xc0\xaf", "\xe0\x80\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80",
                            "\xef\xbf\xbf", "\xef\xb7\x90", "\xf0\x9f\xa5", "\x80"}) {
        const char* list[] = {"fine", bad};
        EXPECT_EQ(Request(PeerId, bad).send(), APP_CONTROL_ERROR_INVALID_PARAMETER);
        const Request inUri(PeerId), inKey(PeerId), inValue(PeerId), inList(PeerId);
        app_control_set_uri(inUri, bad);
        app_control_add_extra_data(inKey, bad, "value");
        app_control_add_extra_data(inValue, "key", bad);
        app_control_add_extra_data_array(inList, "key", list, 2);
        EXPECT_EQ(inUri.send(), APP_CONTROL_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(inKey.send(), APP_CONTROL_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(inValue.send(), APP_CONTROL_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(inList.send(), APP_CONTROL_ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(Request(PeerId, "last \xf4\x8f\xbf\xbd").send(), APP_CONTROL_ERROR_NONE);
    const auto last = peer.nextLaunch();
    EXPECT_EQ(last->operation, "last \xf4\x8f\xbf\xbd");
    EXPECT_EQ(last->sender, sender);
}

TEST_F(ASend, OfTooLargeAMessageFailsAndTheConnectionSurvives)
{
    RawPeer peer(PeerId);
    const Request huge(PeerId), large(PeerId);
    app_control_add_extra_data(huge, "text", std::string(17 * 1024 * 1024, 'x').c_str());
    app_control_add_extra_data(large, "text", std::string(8 * 1024 * 1024, 'x').c_str());
    EXPECT_EQ(huge.send(), APP_CONTROL_ERROR_LAUNCH_FAILED);
    EXPECT_EQ(large.send(), APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(peer.nextLaunch()->extras.at("text").get<std::string>().size(), 8U * 1024 * 1024);
}

TEST_F(ASend, TranslatesTheErrorOfTheReceiver)
{
    std::string error;
    RawPeer peer(PeerId, [&](const auto&) { throw sdbus::Error(ErrorPrefix + error, "refused"); });
    const std::vector<std::pair<std::string, int>> codes{
        {"InvalidArgs", APP_CONTROL_ERROR_INVALID_PARAMETER},
        {"AccessDenied", APP_CONTROL_ERROR_PERMISSION_DENIED},
        {"NoReply", APP_CONTROL_ERROR_TIMED_OUT},
        {"Timeout", APP_CONTROL_ERROR_TIMED_OUT},
        {"NameHasNoOwner", APP_CONTROL_ERROR_APP_NOT_FOUND},
        {"Failed", APP_CONTROL_ERROR_LAUNCH_FAILED},
        {"LimitsExceeded", APP_CONTROL_ERROR_LAUNCH_FAILED}};
    Replies replies;
    for (const auto& [name, code] : codes) {
        error = name;
        EXPECT_EQ(Request(PeerId).send(onReply, &replies), code) << name;
    }
    EXPECT_EQ(replies.count, 0);
}

TEST_F(ASend, ToAProgramWithoutTheInterfaceFails)
{
    EXPECT_EQ(Request("org.freedesktop.DBus").send(), APP_CONTROL_ERROR_LAUNCH_FAILED);
}

TEST(ASendOnABusWithALimit, TimesOutWhenTheReceiverDoesNotAnswer)
{
    PrivateBus bus({"", std::chrono::milliseconds(100)});
    std::promise<void> end;
    RawPeer peer(PeerId, [&](const auto&) { end.get_future().wait(); });
    EXPECT_EQ(Request(PeerId).send(), APP_CONTROL_ERROR_TIMED_OUT);
    end.set_value();
}

TEST_F(ASend, TimesOutByItselfWhenTheReceiverDoesNotAnswer)
{
    std::promise<void> end;
    RawPeer peer(PeerId, [&](const auto&) { end.get_future().wait(); });
    EXPECT_EQ(Request(PeerId).send(), APP_CONTROL_ERROR_TIMED_OUT);
    end.set_value();
}

TEST_F(ASend, WithoutABusFails)
{
    bus.kill();
    EXPECT_EQ(Request(PeerId).send(), APP_CONTROL_ERROR_IO_ERROR);
}

TEST_F(ASend, FailsAtOnceWhenTheBusGoesAwayUnderIt)
{
    std::promise<void> arrived;
    std::atomic<int> result{1};
    ChildProcess app({TEST_APP, "wait in create"});
    ASSERT_TRUE(app.waitForOutput("waiting"));
    // A stopped receiver keeps the send waiting.
    app.signal(SIGSTOP);
    std::thread sender([&] {
        arrived.set_value();
        result = Request(AppId).send();
    });
    arrived.get_future().wait();
    bus.kill();
    sender.join();
    EXPECT_EQ(result, APP_CONTROL_ERROR_IO_ERROR);
}

TEST_F(ASend, FindsTheNextBusWhenOneIsGone)
{
    RawPeer* peer = new RawPeer(PeerId);
    Replies replies;
    ASSERT_EQ(Request(PeerId).send(onReply, &replies), APP_CONTROL_ERROR_NONE);
    delete peer;
    ASSERT_TRUE(loopUntil([&] { return replies.count == 1; }));
    Replies lost;
    ChildProcess app({TEST_APP});
    ASSERT_TRUE(TestSupport::waitForName(AppId));
    ASSERT_EQ(Request(AppId, "keep").send(onReply, &lost), APP_CONTROL_ERROR_NONE);
    bus.kill();
    ASSERT_TRUE(loopUntil([&] { return lost.count == 1; }));
    EXPECT_EQ(lost.result, APP_CONTROL_RESULT_FAILED);

    PrivateBus next;
    RawPeer second(PeerId);
    EXPECT_EQ(Request(PeerId).send(), APP_CONTROL_ERROR_NONE);
}

TEST_F(ASend, StartsAnAppThatTheBusKnowsHowToStart)
{
    const std::string folder = TestSupport::ScratchRoot::file("services");
    mkdir(folder.c_str(), 0700);
    PrivateBus::writeActivationFile(folder, AppId, TEST_APP);
    PrivateBus::writeActivationFile(folder, "org.example.broken", "/does/not/exist");
    PrivateBus starter({folder, std::chrono::milliseconds(0)});
    Replies replies;
    const Request request(AppId, "echo");
    app_control_add_extra_data(request, "text", "good morning");
    ASSERT_EQ(request.send(onReply, &replies), APP_CONTROL_ERROR_NONE);
    EXPECT_TRUE(loopUntil([&] { return replies.count == 1; }));
    EXPECT_EQ(replies.replyText, "good morning");
    EXPECT_EQ(Request("org.example.broken").send(), APP_CONTROL_ERROR_LAUNCH_FAILED);
    EXPECT_EQ(Request(AppId, "exit").send(), APP_CONTROL_ERROR_NONE);
    EXPECT_TRUE(TestSupport::waitForName(AppId, false));
}

TEST_F(ASend, LeavesTheSignalsOfTheProgramAlone)
{
    RawPeer peer(PeerId);
    ASSERT_EQ(Request(PeerId).send(onReply, &TestSupport::lastingReplies()), APP_CONTROL_ERROR_NONE);
    for (const int number : {SIGCHLD, SIGINT, SIGTERM, SIGUSR1}) {
        struct sigaction action {};
        sigaction(number, nullptr, &action);
        EXPECT_EQ(action.sa_handler, SIG_DFL) << number;
    }
}

}  // namespace
