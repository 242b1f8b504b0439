// The worker: order, pace, and completions on the main loop.
#include "AsyncThread.h"

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <optional>
#include <thread>
#include <type_traits>

#include "../SignalMask.h"
#include "AsyncFixture.h"
#include "Latch.h"
#include "Singleton.h"

using TestSupport::Call;
using TestSupport::Calls;
using Util::AsyncThread;

namespace {

using Clock = std::chrono::steady_clock;

static_assert(std::has_virtual_destructor_v<AsyncThread>);
static_assert(!std::is_copy_constructible_v<AsyncThread> && !std::is_copy_assignable_v<AsyncThread>);

}  // namespace

TEST_F(Async, TasksRunInTheOrderInWhichTheyWereQueued)
{
    std::vector<int> order;
    AsyncThread worker;
    for (int i = 0; i < 5; ++i)
        worker.asyncCall(
            [&order, i] {
                order.push_back(i);
                return false;
            },
            nullptr);

    ASSERT_TRUE(finish(worker));
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST_F(Async, TasksRunWithoutSignalsButThoseOfTheirOwnFaults)
{
    std::optional<SignalMask> mask;
    AsyncThread worker;
    worker.asyncCall(
        [&mask] {
            mask.emplace();
            return false;
        },
        nullptr);

    ASSERT_TRUE(finish(worker));
    ASSERT_TRUE(mask);
    for (int number : {SIGTERM, SIGINT, SIGCHLD})
        EXPECT_TRUE(mask->has(number)) << number;
    EXPECT_FALSE(mask->has(SIGSEGV));
    EXPECT_FALSE(SignalMask().has(SIGTERM)) << "the thread that makes the worker keeps its signals";
}

TEST_F(Async, TasksRunAtLeastFiftyMillisecondsApart)
{
    std::vector<Clock::time_point> times;
    AsyncThread worker;
    for (int i = 0; i < 3; ++i)
        worker.asyncCall(
            [&times] {
                times.push_back(Clock::now());
                return false;
            },
            nullptr);

    ASSERT_TRUE(finish(worker));
    ASSERT_EQ(times.size(), 3U);
    EXPECT_GE(times[1] - times[0], std::chrono::milliseconds(50));
    EXPECT_GE(times[2] - times[1], std::chrono::milliseconds(50));
}

TEST_F(Async, TheWorkerSleepsFiftyMillisecondsWithAndWithoutTasks)
{
    pid_t thread = 0;
    AsyncThread worker;
    worker.asyncCall(
        [&thread] {
            thread = gettid();
            return true;
        },
        [] { MainLoop::quit(); });
    ASSERT_TRUE(loop.run());
    ASSERT_TRUE(Calls::waitFor("nanosleep", Calls::count("nanosleep") + 3));

    for (const Call& call : Calls::of("nanosleep"))
        if (call.thread == thread) {
            EXPECT_EQ(call.arguments, (List{"0", "50000000"}));
        }
}

TEST_F(Async, TheWorkerTakesOneTaskBetweenTwoSleeps)
{
    pid_t thread = 0;
    AsyncThread worker;
    for (int i = 0; i < 4; ++i)
        worker.asyncCall(
            [&thread] {
                thread = gettid();
                return true;
            },
            nullptr);
    ASSERT_TRUE(finish(worker));

    int handedOver = 0;
    for (const std::string& name : orderOn(thread, {"ecore_main_loop_thread_safe_call_async", "nanosleep"})) {
        handedOver = name == "nanosleep" ? 0 : handedOver + 1;
        EXPECT_LE(handedOver, 1);
    }
    EXPECT_EQ(Calls::count("ecore_main_loop_thread_safe_call_async"), 5U);
}

TEST_F(Async, WorkRunsOnTheWorkersThreadAndItsCompletionOnTheMainLoops)
{
    pid_t workThread = 0;
    pid_t doneThread = 0;
    AsyncThread worker;
    worker.asyncCall(
        [&] {
            workThread = gettid();
            return true;
        },
        [&] {
            doneThread = gettid();
            MainLoop::quit();
        });

    ASSERT_TRUE(loop.run());
    EXPECT_NE(workThread, gettid());
    EXPECT_EQ(doneThread, gettid());
}

TEST_F(Async, EachObjectHasOneWorkerOfItsOwn)
{
    std::vector<pid_t> threads;
    const auto note = [&threads] {
        threads.push_back(gettid());
        return false;
    };
    AsyncThread one;
    one.asyncCall(note, nullptr);
    one.asyncCall(note, nullptr);
    ASSERT_TRUE(finish(one));
    AsyncThread other;
    other.asyncCall(note, nullptr);
    ASSERT_TRUE(finish(other));

    EXPECT_EQ(threads.at(0), threads.at(1));
    EXPECT_NE(threads.at(0), threads.at(2));
}

TEST_F(Async, QueueingDoesNotWaitForTheWorker)
{
    Latch released;
    AsyncThread worker;
    for (int i = 0; i < 2; ++i)
        worker.asyncCall(
            [&released] {
                released.wait();
                return false;
            },
            nullptr);

    released.open();
    EXPECT_TRUE(finish(worker));
}

TEST_F(Async, CompletionsComeInTheOrderOfTheTasks)
{
    std::vector<int> order;
    AsyncThread worker;
    for (int i = 0; i < 3; ++i)
        worker.asyncCall([] { return true; }, [&order, i] { order.push_back(i); });

    ASSERT_TRUE(finish(worker));
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
}

TEST_F(Async, ACompletionWaitsForTheMainLoop)
{
    bool done = false;
    AsyncThread worker;
    worker.asyncCall([] { return true; },
                     [&done] {
                         done = true;
                         MainLoop::quit();
                     });

    ASSERT_TRUE(Calls::waitFor("ecore_main_loop_thread_safe_call_async", 1));
    EXPECT_FALSE(done);
    ASSERT_TRUE(loop.run());
    EXPECT_TRUE(done);
}

TEST_F(Async, WorkThatReturnsFalseIsNeverCompletedAndFreed)
{
    const Held held = std::make_shared<int>();
    bool done = false;
    AsyncThread worker;
    worker.asyncCall([held] { return false; }, [held, &done] { done = true; });

    ASSERT_TRUE(finish(worker));
    EXPECT_FALSE(done);
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(Calls::count("ecore_main_loop_thread_safe_call_async"), 1U);
}

TEST_F(Async, ATaskWithoutCompletionIsHandedToTheMainLoopAndFreedThere)
{
    const Held held = std::make_shared<int>();
    AsyncThread worker;
    worker.asyncCall([held] { return true; }, nullptr);
    ASSERT_TRUE(Calls::waitFor("ecore_main_loop_thread_safe_call_async", 1));
    EXPECT_EQ(held.use_count(), 2);

    ASSERT_TRUE(finish(worker));
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(Async, ACompletedTaskIsFreed)
{
    const Held held = std::make_shared<int>();
    AsyncThread worker;
    worker.asyncCall([held] { return true; }, [held] {});

    ASSERT_TRUE(finish(worker));
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(Async, ATaskHoldsCopiesOfItsFunctions)
{
    int runs = 0;
    AsyncThread worker;
    {
        std::function<bool()> work = [&runs] { return ++runs == 1; };
        std::function<void()> done = [&runs] { ++runs; };
        worker.asyncCall(work, done);
        work = nullptr;
        done = nullptr;
    }

    ASSERT_TRUE(finish(worker));
    EXPECT_EQ(runs, 2);
}

TEST_F(Async, WorkAndCompletionsMayQueueMore)
{
    int runs = 0;
    AsyncThread worker;
    worker.asyncCall(
        [&] {
            ++runs;
            worker.asyncCall([] { return true; }, [] { MainLoop::quit(); });
            return true;
        },
        [&] {
            ++runs;
            worker.asyncCall([] { return false; }, nullptr);
        });

    ASSERT_TRUE(loop.run());
    EXPECT_EQ(runs, 2);
}

TEST_F(Async, TasksOfSeveralThreadsAllRunEachThreadsInOrder)
{
    constexpr int kThreads = 3;
    constexpr int kTasks = 3;
    std::vector<std::vector<int>> order(kThreads);
    AsyncThread worker;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&worker, &order, t] {
            for (int i = 0; i < kTasks; ++i)
                worker.asyncCall(
                    [&order, t, i] {
                        order[static_cast<size_t>(t)].push_back(i);
                        return false;
                    },
                    nullptr);
        });
    for (std::thread& thread : threads)
        thread.join();

    ASSERT_TRUE(finish(worker));
    EXPECT_EQ(order, std::vector<std::vector<int>>(kThreads, {0, 1, 2}));
}

TEST_F(Async, TheProcessHasOneThatIsMadeOnFirstUse)
{
    using Holder = Util::Singleton<AsyncThread>;
    EXPECT_EQ(Holder::mInstance, nullptr);
    AsyncThread* const first = Holder::getInstance();

    EXPECT_EQ(Holder::getInstance(), first);
    EXPECT_EQ(Holder::mInstance, first);
    EXPECT_TRUE(finish(*first));
    delete first;
    Holder::mInstance = nullptr;
}
