// The worker's end, calls that wait for the main loop, and what ends the process.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

#include "AsyncFixture.h"
#include "AsyncThread.h"
#include "ChildProcess.h"
#include "Latch.h"

using TestSupport::Calls;
using TestSupport::ChildProcess;
using TestSupport::ProcessEnd;
using Util::AsyncThread;

namespace {

using Clock = std::chrono::steady_clock;

// Work that is in progress when its worker is destroyed, and knows it.
class AsyncEnd : public Async {
  protected:
    void destroy(std::unique_ptr<AsyncThread>& worker)
    {
        ASSERT_TRUE(started_.wait());
        isDestroying_ = true;
        worker.reset();
    }

    // True when the thread that destroys the worker has done all it can and waits for this one.
    bool waitUntilDestroyed()
    {
        started_.open();
        const Clock::time_point deadline = Clock::now() + TestSupport::Patience;
        while (!isDestroying_ || !isAsleep(destroyer_)) {
            if (Clock::now() > deadline)
                return false;
            std::this_thread::yield();
        }
        return true;
    }

  private:
    static bool isAsleep(pid_t thread)
    {
        std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
        std::string text;
        std::getline(file, text);
        const size_t name = text.rfind(") ");
        return name != std::string::npos && text[name + 2] == 'S';
    }

    Latch started_;
    std::atomic<bool> isDestroying_{false};
    const pid_t destroyer_ = gettid();
};

}  // namespace

TEST_F(AsyncEnd, DropsWhatIsQueuedWithoutRunningIt)
{
    const Held held = std::make_shared<int>();
    bool ran = false;
    auto worker = std::make_unique<AsyncThread>();
    worker->asyncCall([this] { return waitUntilDestroyed() && false; }, nullptr);
    for (int i = 0; i < 3; ++i)
        worker->asyncCall(
            [held, &ran] {
                ran = true;
                return true;
            },
            [held, &ran] { ran = true; });
    EXPECT_EQ(held.use_count(), 1 + 3 * 2);
    destroy(worker);

    EXPECT_EQ(held.use_count(), 1);
    EXPECT_FALSE(ran);
    EXPECT_EQ(Calls::count("ecore_main_loop_thread_safe_call_async"), 0U);
}

TEST_F(AsyncEnd, WaitsForTheWorkInProgress)
{
    bool finished = false;
    auto worker = std::make_unique<AsyncThread>();
    worker->asyncCall(
        [&] {
            finished = waitUntilDestroyed();
            return false;
        },
        nullptr);
    destroy(worker);

    EXPECT_TRUE(finished);
}

TEST_F(AsyncEnd, TheWorkInProgressIsStillCompleted)
{
    bool done = false;
    auto worker = std::make_unique<AsyncThread>();
    worker->asyncCall([this] { return waitUntilDestroyed(); },
                      [&done] {
                          done = true;
                          MainLoop::quit();
                      });
    destroy(worker);

    EXPECT_FALSE(done);
    ASSERT_TRUE(loop.run());
    EXPECT_TRUE(done);
}

TEST_F(AsyncEnd, TheWorkerDoesNotSleepAgain)
{
    pid_t thread = 0;
    size_t sleepsBefore = 0;
    auto worker = std::make_unique<AsyncThread>();
    worker->asyncCall(
        [&] {
            thread = gettid();
            sleepsBefore = orderOn(thread, {"nanosleep"}).size();
            return waitUntilDestroyed() && false;
        },
        nullptr);
    destroy(worker);

    EXPECT_EQ(orderOn(thread, {"nanosleep"}).size(), sleepsBefore);
}

TEST_F(Async, ACompletionOnItsWayIsNotRecalled)
{
    bool done = false;
    {
        AsyncThread worker;
        worker.asyncCall([] { return true; },
                         [&done] {
                             done = true;
                             MainLoop::quit();
                         });
        ASSERT_TRUE(Calls::waitFor("ecore_main_loop_thread_safe_call_async", 1));
    }

    ASSERT_TRUE(loop.run());
    EXPECT_TRUE(done);
}

TEST_F(Async, AnUnusedOneEnds)
{
    const AsyncThread worker;
}

TEST_F(Async, ASynchronousCallReturnsWhenTheMainLoopHasRunIt)
{
    AsyncThread worker;
    pid_t calledOn = 0;
    bool calledBeforeReturn = false;
    std::thread caller([&] {
        worker.syncCallEcore([&] { calledOn = gettid(); });
        calledBeforeReturn = calledOn != 0;
        worker.syncCallEcore([] { MainLoop::quit(); });
    });

    EXPECT_TRUE(loop.run());
    caller.join();
    EXPECT_EQ(calledOn, gettid());
    EXPECT_TRUE(calledBeforeReturn);
}

TEST_F(Async, ASynchronousCallIsFreedWhenItReturns)
{
    AsyncThread worker;
    const Held held = std::make_shared<int>();
    long count = 0;
    std::thread caller([&] {
        worker.syncCallEcore([held] {});
        count = held.use_count();
        worker.syncCallEcore([] { MainLoop::quit(); });
    });

    EXPECT_TRUE(loop.run());
    caller.join();
    EXPECT_EQ(count, 1);
}

TEST_F(Async, ASynchronousCallOfNothingReturns)
{
    AsyncThread worker;
    std::thread caller([&] {
        worker.syncCallEcore(nullptr);
        worker.syncCallEcore([] { MainLoop::quit(); });
    });

    EXPECT_TRUE(loop.run());
    caller.join();
    EXPECT_EQ(Calls::count("ecore_main_loop_thread_safe_call_sync"), 2U);
}

TEST_F(Async, ASynchronousCallDoesNotWaitForTheQueue)
{
    Latch released;
    bool called = false;
    AsyncThread worker;
    worker.asyncCall(
        [&released] {
            released.wait();
            return false;
        },
        nullptr);
    // On the main loop's own thread there is nothing to wait for.
    worker.syncCallEcore([&called] { called = true; });

    EXPECT_TRUE(called);
    released.open();
    EXPECT_TRUE(finish(worker));
}

TEST(AsyncProcess, WorkThatIsEmptyEndsTheProcess)
{
    ChildProcess process({ASYNC_PROBE, "empty-work"});
    const ProcessEnd end = process.wait();

    EXPECT_TRUE(end.inTime);
    EXPECT_NE(process.errors().find("bad_function_call"), std::string::npos) << process.errors();
    EXPECT_TRUE(end.signal != 0 || end.status != 0);
}

TEST(AsyncProcess, AQueueThatCannotBeLockedIsASystemErrorForTheCaller)
{
    ChildProcess process({ASYNC_PROBE, "no-lock"});
    const ProcessEnd end = process.wait();

    EXPECT_EQ(process.output(), "system error\n");
    EXPECT_EQ(end.status, 0) << process.errors();
}
