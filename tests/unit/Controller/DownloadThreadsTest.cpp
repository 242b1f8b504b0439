#include "DownloadThreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>

#include "../SignalMask.h"
#include "Latch.h"
#include "ThreadStartFault.h"

namespace Carvoy {

TEST(DownloadThreadsTest, AFunctionRunsOnAThreadOfItsOwn)
{
    std::thread::id id;
    {
        DownloadThreads threads;
        threads.start([&] { id = std::this_thread::get_id(); });
    }
    EXPECT_NE(id, std::thread::id());
    EXPECT_NE(id, std::this_thread::get_id());
}

TEST(DownloadThreadsTest, AFunctionRunsWithoutSignalsButThoseOfItsOwnFaults)
{
    std::optional<SignalMask> mask;
    {
        DownloadThreads threads;
        threads.start([&] { mask.emplace(); });
    }
    ASSERT_TRUE(mask);
    for (int number : {SIGTERM, SIGINT, SIGCHLD})
        EXPECT_TRUE(mask->has(number)) << number;
    EXPECT_FALSE(mask->has(SIGSEGV));
    EXPECT_FALSE(SignalMask().has(SIGTERM)) << "the thread that starts it keeps its signals";
}

TEST(DownloadThreadsTest, AFunctionRunsBesideThoseThatStillRun)
{
    Latch second;
    DownloadThreads threads;
    threads.start([&] { EXPECT_TRUE(second.wait()); });
    threads.start([&] { second.open(); });
    EXPECT_TRUE(second.wait());
}

TEST(DownloadThreadsTest, TheEndWaitsForEveryFunction)
{
    constexpr int COUNT = 8;
    std::atomic<int> ended{0};
    Latch go;
    {
        DownloadThreads threads;
        for (int i = 0; i < COUNT; ++i) {
            threads.start([&] {
                EXPECT_TRUE(go.wait());
                ++ended;
            });
        }
        EXPECT_EQ(ended, 0);
        go.open();
    }
    EXPECT_EQ(ended, COUNT);
}

TEST(DownloadThreadsTest, TheEndOfAnObjectThatNeverStartedAnythingIsImmediate)
{
    const DownloadThreads threads;
}

TEST(DownloadThreadsTest, AFunctionIsReleasedWithItsThread)
{
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = held;
    {
        DownloadThreads threads;
        threads.start([held = std::move(held)] {});
    }
    EXPECT_TRUE(watch.expired());
}

// Each start looks after the threads before it: those that have ended are joined.
TEST(DownloadThreadsTest, ManyShortFunctionsOneAfterTheOtherAllRun)
{
    std::atomic<int> count{0};
    {
        DownloadThreads threads;
        for (int i = 0; i < 500; ++i) {
            Latch ran;
            threads.start([&] {
                ++count;
                ran.open();
            });
            ASSERT_TRUE(ran.wait());
        }
    }
    EXPECT_EQ(count, 500);
}

TEST(DownloadThreadsTest, WithoutAThreadTheStartThrowsAndTheFunctionNeverRuns)
{
    bool hasRun = false;
    {
        DownloadThreads threads;
        const ThreadStartFault fault;
        EXPECT_THROW(threads.start([&] { hasRun = true; }), std::system_error);
    }
    EXPECT_FALSE(hasRun);
}

TEST(DownloadThreadsTest, AfterAFailedStartTheNextOneCounts)
{
    std::atomic<int> count{0};
    {
        DownloadThreads threads;
        threads.start([&] { ++count; });
        {
            const ThreadStartFault fault;
            EXPECT_THROW(threads.start([&] { count += 100; }), std::system_error);
        }
        threads.start([&] { ++count; });
    }
    EXPECT_EQ(count, 2);
}

}  // namespace Carvoy
