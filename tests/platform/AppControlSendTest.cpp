// What a program that is no app sends, and the replies that its main loop gets.
#include <Ecore.h>
#include <app_control.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <deque>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ChildProcess.h"
#include "PrivateBus.h"
#include "RawPeer.h"
#include "ScratchRoot.h"

namespace {

using TestSupport::ChildProcess;
using TestSupport::Extras;
using TestSupport::PrivateBus;
using TestSupport::RawPeer;

const char* const AppId = "org.example.test-app";
const char* const PeerId = "org.example.peer";
const std::string ErrorPrefix = "org.freedesktop.DBus.Error.";

class Request {
  public:
    explicit Request(const char* appId, const char* operation = "operation")
    {
        app_control_create(&handle_);
        app_control_set_app_id(handle_, appId);
        app_control_set_operation(handle_, operation);
    }
    ~Request() { app_control_destroy(handle_); }
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    operator app_control_h() const { return handle_; }

    int send(app_control_reply_cb callback = nullptr, void* data = nullptr) const
    {
        return app_control_send_launch_request(handle_, callback, data);
    }

  private:
    app_control_h handle_ = nullptr;
};

std::string extraOf(app_control_h handle, const char* key)
{
    char* text = nullptr;
    app_control_get_extra_data(handle, key, &text);
    std::string copy = text ? text : "(none)";
    free(text);
    return copy;
}

int countExtras(app_control_h handle)
{
    int count = 0;
    const auto visit = [](app_control_h, const char*, void* data) { return ++*static_cast<int*>(data) > 0; };
    app_control_foreach_extra_data(handle, visit, &count);
    return count;
}

struct Replies {
    int count = 0;
    int extras = -1;
    app_control_result_e result = APP_CONTROL_RESULT_APP_STARTED;
    std::string requestText;
    std::string replyText;
    std::thread::id thread;
};

std::deque<Replies> allReplies;

void onReply(app_control_h request, app_control_h reply, app_control_result_e result, void* data)
{
    auto* replies = static_cast<Replies*>(data);
    ++replies->count;
    replies->result = result;
    replies->requestText = extraOf(request, "text");
    replies->replyText = extraOf(reply, "text");
    replies->extras = countExtras(reply);
    replies->thread = std::this_thread::get_id();
}

Eina_Bool onTimeOut(void* over)
{
    *static_cast<bool*>(over) = true;
    return ECORE_CALLBACK_CANCEL;
}

template <typename Condition>
bool loopUntil(Condition condition)
{
    bool over = false;
    Ecore_Timer* timer =
        ecore_timer_add(std::chrono::seconds(TestSupport::Patience).count(), onTimeOut, &over);
    while (!condition() && !over)
        ecore_main_loop_iterate_may_block(1);
    if (!over)
        ecore_timer_del(timer);
    return condition();
}

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

class AReply : public testing::Test {
  protected:
    std::uint32_t sendToPeer()
    {
        const Request request(PeerId);
        app_control_add_extra_data(request, "text", "question");
        EXPECT_EQ(request.send(onReply, &replies), APP_CONTROL_ERROR_NONE);
        const auto launch = peer.nextLaunch();
        sender = launch->sender;
        EXPECT_NE(launch->id, 0U);
        return launch->id;
    }

    // Lets the loop run everything that came before an answer to another request.
    void letEverythingArrive()
    {
        const Request probe(PeerId, "probe");
        Replies answered;
        EXPECT_EQ(probe.send(onReply, &answered), APP_CONTROL_ERROR_NONE);
        EXPECT_EQ(peer.reply(sender, peer.nextLaunch()->id), "");
        EXPECT_TRUE(loopUntil([&] { return answered.count == 1; }));
    }

    PrivateBus bus;
    RawPeer peer{PeerId};
    // Not destroyed with the test: a reply that is still awaited then fails with the bus.
    Replies& replies = allReplies.emplace_back();
    std::string sender;
};

TEST_F(AReply, ComesOnTheMainLoopWithItsRequest)
{
    const std::uint32_t id = sendToPeer();
    EXPECT_EQ(peer.reply(sender, id, APP_CONTROL_RESULT_CANCELED, {{"text", std::string("answer")}}), "");
    EXPECT_EQ(replies.count, 0);
    ASSERT_TRUE(loopUntil([&] { return replies.count == 1; }));
    EXPECT_EQ(replies.result, APP_CONTROL_RESULT_CANCELED);
    EXPECT_EQ(replies.requestText, "question");
    EXPECT_EQ(replies.replyText, "answer");
    EXPECT_EQ(replies.thread, std::this_thread::get_id());
}

TEST_F(AReply, CountsOnlyOnce)
{
    const std::uint32_t id = sendToPeer();
    EXPECT_EQ(peer.reply(sender, id), "");
    EXPECT_EQ(peer.reply(sender, id, APP_CONTROL_RESULT_FAILED), ErrorPrefix + "AccessDenied");
    letEverythingArrive();
    EXPECT_EQ(replies.count, 1);
    EXPECT_EQ(replies.result, APP_CONTROL_RESULT_SUCCEEDED);
}

TEST_F(AReply, OfAForgedIdOrAnotherConnectionIsRefused)
{
    const std::uint32_t id = sendToPeer();
    RawPeer stranger;
    EXPECT_EQ(stranger.reply(sender, id), ErrorPrefix + "AccessDenied");
    EXPECT_EQ(peer.reply(sender, id + 1), ErrorPrefix + "AccessDenied");
    EXPECT_EQ(peer.reply(sender, 0), ErrorPrefix + "AccessDenied");
    letEverythingArrive();
    EXPECT_EQ(replies.count, 0);
    EXPECT_EQ(peer.reply(sender, id), "");
    EXPECT_TRUE(loopUntil([&] { return replies.count == 1; }));
}

TEST_F(AReply, ThatIsMalformedIsRefusedAndMayBeMadeAgain)
{
    const std::uint32_t id = sendToPeer();
    EXPECT_EQ(peer.reply(sender, id, 0, {{"number", std::int32_t{1}}}), ErrorPrefix + "InvalidArgs");
    for (const int result : {APP_CONTROL_RESULT_APP_STARTED + 0, 2, -3})
        EXPECT_EQ(peer.reply(sender, id, result), ErrorPrefix + "InvalidArgs");
    EXPECT_EQ(peer.reply(sender, id), "");
    EXPECT_TRUE(loopUntil([&] { return replies.count == 1; }));
}

TEST_F(AReply, ComesForEachSendOfManyThreads)
{
    ChildProcess app({TEST_APP});
    ASSERT_TRUE(TestSupport::waitForName(AppId));
    Replies all[4];
    // The first send of the main thread opens the loop for the others.
    ASSERT_EQ(Request(AppId, "echo").send(onReply, &all[0]), APP_CONTROL_ERROR_NONE);
    std::vector<std::thread> threads;
    for (Replies& own : all) {
        threads.emplace_back([&own] {
            for (int i = 0; i < 50; ++i)
                EXPECT_EQ(Request(AppId, "echo").send(onReply, &own), APP_CONTROL_ERROR_NONE);
        });
    }
    EXPECT_TRUE(
        loopUntil([&] { return all[0].count + all[1].count + all[2].count + all[3].count == 4 * 50 + 1; }));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(all[3].count, 50);
}

TEST_F(AReply, IsAFailureWhenTheReceiverLeavesTheBus)
{
    ChildProcess app({TEST_APP});
    ASSERT_TRUE(TestSupport::waitForName(AppId));
    ASSERT_EQ(Request(AppId, "keep").send(onReply, &replies), APP_CONTROL_ERROR_NONE);
    app.signal(SIGKILL);
    ASSERT_TRUE(loopUntil([&] { return replies.count == 1; }));
    EXPECT_EQ(replies.result, APP_CONTROL_RESULT_FAILED);
    EXPECT_EQ(replies.extras, 0);
}

TEST_F(AReply, IsAFailureWhenTheReceiverRefusesToStart)
{
    ChildProcess app({TEST_APP, "wait and refuse"});
    ASSERT_TRUE(app.waitForOutput("waiting"));
    ASSERT_EQ(Request(AppId, "echo").send(onReply, &replies), APP_CONTROL_ERROR_NONE);
    app.signal(SIGUSR1);
    ASSERT_TRUE(loopUntil([&] { return replies.count == 1; }));
    EXPECT_EQ(replies.result, APP_CONTROL_RESULT_FAILED);
}

TEST_F(AReply, ComesOnceWhenTheReceiverAnswersAndLeavesAtOnce)
{
    for (int round = 0; round < 20; ++round) {
        ChildProcess app({TEST_APP});
        ASSERT_TRUE(TestSupport::waitForName(AppId));
        Replies own;
        const int code = Request(AppId, "answer and die").send(onReply, &own);
        ASSERT_EQ(code, APP_CONTROL_ERROR_NONE);
        ASSERT_TRUE(loopUntil([&] { return own.count > 0; }));
        EXPECT_EQ(own.result, APP_CONTROL_RESULT_SUCCEEDED);
        app.wait();
        ASSERT_TRUE(TestSupport::waitForName(AppId, false));
        sendToPeer();
        letEverythingArrive();
        EXPECT_EQ(own.count, 1);
    }
}

TEST_F(AReply, CountsOnceWhenTheAppAnswersTwice)
{
    ChildProcess app({TEST_APP});
    ASSERT_TRUE(TestSupport::waitForName(AppId));
    ASSERT_EQ(Request(AppId, "answer twice").send(onReply, &replies), APP_CONTROL_ERROR_NONE);
    ASSERT_TRUE(app.waitForOutput("answers 0 0"));
    sendToPeer();
    letEverythingArrive();
    EXPECT_EQ(replies.count, 1);
    EXPECT_EQ(replies.result, APP_CONTROL_RESULT_SUCCEEDED);
}

TEST_F(AReply, WaitsForTheMainLoopOfAProgramWhoseWorkerSentFirst)
{
    std::thread([this] {
        EXPECT_EQ(Request(PeerId).send(onReply, &replies), APP_CONTROL_ERROR_NONE);
    }).join();
    const auto launch = peer.nextLaunch();
    EXPECT_EQ(peer.reply(launch->sender, launch->id), "");
    EXPECT_EQ(replies.count, 0);
    sendToPeer();
    EXPECT_TRUE(loopUntil([&] { return replies.count == 1; }));
}

}  // namespace
