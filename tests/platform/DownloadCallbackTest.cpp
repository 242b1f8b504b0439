// Who calls back, on which thread, and that nobody does once that was taken back.
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

#include "DownloadFixture.h"

namespace {

using Step = std::function<void(int id, int state)>;

void runStep(int id, download_state_e state, void* step)
{
    (*static_cast<Step*>(step))(id, state);
}

void countProgress(int, unsigned long long, void* count)
{
    ++*static_cast<std::atomic<int>*>(count);
}

// Whether a thread of this process waits for something, as the kernel sees it.
bool isAsleep(pid_t thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string stat;
    std::getline(file, stat);
    return stat.find(") S ") != std::string::npos;
}

// A download whose state callback is the step.
class SteppedDownload {
  public:
    explicit SteppedDownload(Step step) : step_(std::move(step))
    {
        EXPECT_EQ(download_create(&id), DOWNLOAD_ERROR_NONE);
        EXPECT_EQ(download_set_state_changed_cb(id, runStep, &step_), DOWNLOAD_ERROR_NONE);
    }
    ~SteppedDownload() { download_destroy(id); }
    SteppedDownload(const SteppedDownload&) = delete;
    SteppedDownload& operator=(const SteppedDownload&) = delete;

    int id = 0;

  private:
    Step step_;
};

class DownloadCallbacks : public Downloads {
  protected:
    int begin(int id, const std::string& path)
    {
        EXPECT_EQ(download_set_url(id, server.url(path).c_str()), DOWNLOAD_ERROR_NONE);
        EXPECT_EQ(download_set_destination(id, folder.c_str()), DOWNLOAD_ERROR_NONE);
        return download_start(id);
    }

    // Runs another download from start to end: by then all that was told before it has been delivered.
    void letEverythingBeDelivered()
    {
        TestDownload other;
        outcome(other, "/empty.png", DOWNLOAD_STATE_COMPLETED);
    }

    bool waitUntilTheFolderIsEmpty() const
    {
        const auto deadline = std::chrono::steady_clock::now() + TestSupport::Patience;
        while (!files().empty() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        return files().empty();
    }
};

}  // namespace

TEST_F(DownloadCallbacks, ComeOnOneThreadThatIsNotTheCallers)
{
    TestDownload one;
    TestDownload other;
    outcome(one, "/milk.png", DOWNLOAD_STATE_COMPLETED);
    outcome(other, "/missing.png", DOWNLOAD_STATE_FAILED);

    std::vector<pid_t> threads = one.heard.threads();
    const std::vector<pid_t> more = other.heard.threads();
    threads.insert(threads.end(), more.begin(), more.end());
    for (const pid_t thread : threads)
        EXPECT_EQ(thread, threads.front());
    EXPECT_NE(threads.front(), gettid());
    EXPECT_EQ(one.heard.ids(), std::vector<int>(one.heard.states().size(), one.id));
}

TEST_F(DownloadCallbacks, ComeOnAThreadWithoutSignals)
{
    Latch completed;
    std::atomic<bool> isBlocked{false};
    SteppedDownload download([&](int, int state) {
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        isBlocked = sigismember(&mask, SIGTERM) && sigismember(&mask, SIGPIPE) && sigismember(&mask, SIGCHLD);
        if (state == DOWNLOAD_STATE_COMPLETED)
            completed.open();
    });
    begin(download.id, "/milk.png");

    ASSERT_TRUE(completed.wait());
    EXPECT_TRUE(isBlocked);
}

TEST_F(DownloadCallbacks, AreNotNeeded)
{
    int id = 0;
    EXPECT_EQ(download_create(&id), DOWNLOAD_ERROR_NONE);
    EXPECT_EQ(begin(id, "/milk.png"), DOWNLOAD_ERROR_NONE);
    download_state_e state = DOWNLOAD_STATE_NONE;
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::Patience;
    while (state != DOWNLOAD_STATE_COMPLETED && std::chrono::steady_clock::now() < deadline) {
        EXPECT_EQ(download_get_state(id, &state), DOWNLOAD_ERROR_NONE);
        std::this_thread::yield();
    }

    EXPECT_EQ(state, DOWNLOAD_STATE_COMPLETED);
    EXPECT_EQ(contentOf(folder + "/milk.png"), picture);
    EXPECT_EQ(download_destroy(id), DOWNLOAD_ERROR_NONE);
}

TEST_F(DownloadCallbacks, OneMayBeWithoutTheOther)
{
    std::atomic<int> progress{0};
    TestDownload download;
    EXPECT_EQ(download_unset_progress_cb(download.id), DOWNLOAD_ERROR_NONE);
    EXPECT_EQ(outcome(download, "/milk.png", DOWNLOAD_STATE_COMPLETED), kGood);
    EXPECT_EQ(download.heard.progress(), std::vector<unsigned long long>());

    Latch completed;
    SteppedDownload other([&](int, int state) {
        if (state == DOWNLOAD_STATE_COMPLETED)
            completed.open();
    });
    EXPECT_EQ(download_set_progress_cb(other.id, countProgress, &progress), DOWNLOAD_ERROR_NONE);
    begin(other.id, "/milk.png");
    ASSERT_TRUE(completed.wait());
    EXPECT_GT(progress, 0);
}

TEST_F(DownloadCallbacks, UnsettingWaitsForTheOneThatIsRunning)
{
    Latch entered;
    Latch goesOn;
    std::atomic<bool> isOver{false};
    SteppedDownload download([&](int, int) {
        entered.open();
        goesOn.wait();
        isOver = true;
    });
    begin(download.id, "/silent.png");
    ASSERT_TRUE(entered.wait());
    std::atomic<bool> isUnsetting{false};
    std::thread other([&, unsetter = gettid()] {
        const auto deadline = std::chrono::steady_clock::now() + TestSupport::Patience;
        while (!(isUnsetting && isAsleep(unsetter)) && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        goesOn.open();
    });

    isUnsetting = true;
    EXPECT_EQ(download_unset_state_changed_cb(download.id), DOWNLOAD_ERROR_NONE);
    EXPECT_TRUE(isOver) << "the callback goes on only once this thread waits for it";
    other.join();
}

TEST_F(DownloadCallbacks, AfterItsDestructionADownloadIsSilentWhateverWasGoingOn)
{
    std::vector<std::atomic<int>> counts(20);
    std::vector<int> countsAtTheEnd;
    for (std::atomic<int>& count : counts) {
        int id = 0;
        EXPECT_EQ(download_create(&id), DOWNLOAD_ERROR_NONE);
        EXPECT_EQ(download_set_progress_cb(id, countProgress, &count), DOWNLOAD_ERROR_NONE);
        begin(id, "/milk.png");
        const auto deadline = std::chrono::steady_clock::now() + TestSupport::Patience;
        while (countsAtTheEnd.size() % 2 == 0 && count == 0 && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        EXPECT_EQ(download_destroy(id), DOWNLOAD_ERROR_NONE);
        countsAtTheEnd.push_back(count);
    }
    letEverythingBeDelivered();

    EXPECT_EQ(std::vector<int>(counts.begin(), counts.end()), countsAtTheEnd);
}

TEST_F(DownloadCallbacks, ThatWereUnsetStayAway)
{
    TestDownload download;
    start(download, "/halves.png");
    ASSERT_TRUE(download.heard.waitForProgress(1));
    EXPECT_EQ(download_unset_state_changed_cb(download.id), DOWNLOAD_ERROR_NONE);
    EXPECT_EQ(download_unset_progress_cb(download.id), DOWNLOAD_ERROR_NONE);
    download.heard.forget();
    EXPECT_EQ(download_cancel(download.id), DOWNLOAD_ERROR_NONE);
    letEverythingBeDelivered();

    EXPECT_EQ(download.heard.states(), States());
    EXPECT_EQ(download.heard.progress(), std::vector<unsigned long long>());
}

TEST_F(DownloadCallbacks, DestroyingHalfWayIsSilentAndLeavesNothing)
{
    TestDownload download;
    start(download, "/halves.png");
    ASSERT_TRUE(download.heard.waitForProgress(1));
    EXPECT_EQ(download_destroy(download.id), DOWNLOAD_ERROR_NONE);
    download.heard.forget();
    EXPECT_TRUE(waitUntilTheFolderIsEmpty());
    letEverythingBeDelivered();

    EXPECT_EQ(download.heard.states(), States());
    EXPECT_EQ(download.heard.progress(), std::vector<unsigned long long>());
    EXPECT_EQ(download_destroy(download.id), DOWNLOAD_ERROR_ID_NOT_FOUND);
}

TEST_F(DownloadCallbacks, DestroyingACompletedOneLeavesItsFile)
{
    {
        TestDownload download;
        outcome(download, "/milk.png", DOWNLOAD_STATE_COMPLETED);
    }
    letEverythingBeDelivered();
    EXPECT_EQ(contentOf(folder + "/milk.png"), picture);
}

TEST_F(DownloadCallbacks, MayDestroyTheirOwnDownload)
{
    Latch destroyed;
    std::atomic<int> calls{0};
    SteppedDownload download([&](int id, int) {
        ++calls;
        EXPECT_EQ(download_unset_state_changed_cb(id), DOWNLOAD_ERROR_NONE);
        EXPECT_EQ(download_destroy(id), DOWNLOAD_ERROR_NONE);
        destroyed.open();
    });
    begin(download.id, "/milk.png");

    ASSERT_TRUE(destroyed.wait());
    letEverythingBeDelivered();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(download_destroy(download.id), DOWNLOAD_ERROR_ID_NOT_FOUND);
}

TEST_F(DownloadCallbacks, OfAProgressMayDestroyItsDownloadHalfWay)
{
    Latch destroyed;
    SteppedDownload download([](int, int) {});
    static int result;
    result = -1;
    const auto destroy = [](int id, unsigned long long, void* latch) {
        result = download_destroy(id);
        static_cast<Latch*>(latch)->open();
    };
    EXPECT_EQ(download_set_progress_cb(download.id, destroy, &destroyed), DOWNLOAD_ERROR_NONE);
    begin(download.id, "/halves.png");

    ASSERT_TRUE(destroyed.wait());
    EXPECT_EQ(result, DOWNLOAD_ERROR_NONE);
    EXPECT_TRUE(waitUntilTheFolderIsEmpty());
    EXPECT_EQ(download_destroy(download.id), DOWNLOAD_ERROR_ID_NOT_FOUND);
}

TEST_F(DownloadCallbacks, OfTheEndMayDestroyTheDownloadAndItsFileStays)
{
    Latch destroyed;
    SteppedDownload download([&](int id, int state) {
        if (state != DOWNLOAD_STATE_COMPLETED)
            return;
        EXPECT_EQ(download_destroy(id), DOWNLOAD_ERROR_NONE);
        destroyed.open();
    });
    begin(download.id, "/milk.png");

    ASSERT_TRUE(destroyed.wait());
    letEverythingBeDelivered();
    EXPECT_EQ(contentOf(folder + "/milk.png"), picture);
}

TEST_F(DownloadCallbacks, MayPauseResumeCancelAndStartAgain)
{
    Latch completed;
    std::vector<int> states;
    SteppedDownload download([&](int id, int state) {
        states.push_back(state);
        if (states.size() == 1) {
            EXPECT_EQ(download_pause(id), DOWNLOAD_ERROR_NONE);
        } else if (states.size() == 2) {
            EXPECT_EQ(download_start(id), DOWNLOAD_ERROR_NONE);
        } else if (states.size() == 3) {
            EXPECT_EQ(download_cancel(id), DOWNLOAD_ERROR_NONE);
        } else if (states.size() == 4) {
            EXPECT_EQ(download_start(id), DOWNLOAD_ERROR_NONE);
        } else if (state == DOWNLOAD_STATE_DOWNLOADING) {
            released.open();
        } else if (state == DOWNLOAD_STATE_COMPLETED) {
            completed.open();
        }
    });
    begin(download.id, "/halves.png");

    ASSERT_TRUE(completed.wait());
    EXPECT_EQ(download_destroy(download.id), DOWNLOAD_ERROR_NONE);
    EXPECT_EQ(states, (std::vector<int>{DOWNLOAD_STATE_QUEUED, DOWNLOAD_STATE_PAUSED, DOWNLOAD_STATE_QUEUED,
                                        DOWNLOAD_STATE_CANCELED, DOWNLOAD_STATE_QUEUED,
                                        DOWNLOAD_STATE_DOWNLOADING, DOWNLOAD_STATE_COMPLETED}));
}

TEST_F(DownloadCallbacks, ThreadsThatDoAsTheyLikeHarmNothing)
{
    released.open();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 10; ++i) {
                TestDownload download;
                start(download, t % 2 == 0 ? "/milk.png" : "/missing.png");
                if (i % 3 == 0)
                    download_pause(download.id);
                if (i % 3 == 1)
                    download_cancel(download.id);
                if (i % 2 == 0)
                    download_start(download.id);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    letEverythingBeDelivered();
}
