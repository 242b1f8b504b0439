// The replies that the main loop of a program gets.
#include <app_control.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <string>
#include <thread>
#include <vector>

#include "ChildProcess.h"
#include "PrivateBus.h"
#include "RawPeer.h"
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
    Replies& replies = TestSupport::lastingReplies();
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

TEST_F(AReply, IsAllThatAToolTakes)
{
    sendToPeer();
    EXPECT_EQ(peer.launch(sender, "request"), ErrorPrefix + "NotSupported");
}

}  // namespace
