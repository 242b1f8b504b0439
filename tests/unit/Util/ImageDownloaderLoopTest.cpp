// What a download tells on the main loop, and everybody who may be gone by then.
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>

#include "ChildProcess.h"
#include "ImageDownloaderFixture.h"

using TestSupport::Calls;
using TestSupport::ChildProcess;
using TestSupport::DownloadStandIn;
using TestSupport::ProcessEnd;
using Util::ImageDownloader;

namespace {

using State = ImageDownloader::State;

void ignoreProgress(int, uint64_t, void*) {}

}  // namespace

TEST_F(PlatformDownload, APictureComesWithItsStatesAndProgressOnTheMainLoop)
{
    const int id = init();
    EXPECT_EQ(start(id, server.url("/milk.png"), this), 0);
    ASSERT_TRUE(loop.run());

    EXPECT_EQ(states, (std::vector<State>{State::QUEUED, State::DOWNLOADING, State::COMPLETED}));
    EXPECT_EQ(idsTold, std::vector<int>(3, id));
    EXPECT_EQ(userDataTold, std::vector<void*>(3, this));
    EXPECT_EQ(threads, std::vector<pid_t>(3, gettid()));
    ASSERT_FALSE(progress.empty());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(progress.back(), picture.size());
    EXPECT_EQ(errors(), List());

    char* path = nullptr;
    EXPECT_EQ(downloader->getDownloadedImagePath(id, &path), 0);
    EXPECT_EQ(path, Util::imageFolder() + "/" + std::to_string(id) + ".png");
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    EXPECT_EQ(content.str(), picture);
    std::free(path);
}

TEST_F(PlatformDownload, AMissingPictureHasFailed)
{
    start(init(), server.url("/missing.png"));
    ASSERT_TRUE(loop.run());

    EXPECT_EQ(states, (std::vector<State>{State::QUEUED, State::FAILED}));
    EXPECT_EQ(progress, std::vector<uint64_t>());
}

TEST_F(PlatformDownload, APortWhereNobodyListensHasFailed)
{
    const DeafPort port;
    start(init(), port.url("/milk.png"));
    ASSERT_TRUE(loop.run());

    EXPECT_EQ(states, (std::vector<State>{State::QUEUED, State::FAILED}));
}

TEST_F(PlatformDownload, OneThatIsStoppedHalfWayIsCanceled)
{
    const int id = init();
    quitAt = State::DOWNLOADING;
    start(id, server.url("/halves.png"));
    ASSERT_TRUE(loop.run());
    quitAt = State::CANCELED;
    EXPECT_EQ(downloader->stopDownload(id), 0);
    ASSERT_TRUE(loop.run());

    EXPECT_EQ(states, (std::vector<State>{State::QUEUED, State::DOWNLOADING, State::CANCELED}));
}

TEST_F(PlatformDownload, OneThatIsPausedGoesOnWhenItIsResumed)
{
    const int id = init();
    quitAt = State::DOWNLOADING;
    start(id, server.url("/halves.png"));
    ASSERT_TRUE(loop.run());
    quitAt = State::PAUSED;
    EXPECT_EQ(downloader->pauseDownload(id), 0);
    ASSERT_TRUE(loop.run());
    quitAt = State::COMPLETED;
    released.open();
    EXPECT_EQ(downloader->resumeDownload(id), 0);
    ASSERT_TRUE(loop.run());

    EXPECT_EQ(states, (std::vector<State>{State::QUEUED, State::DOWNLOADING, State::PAUSED, State::QUEUED,
                                          State::DOWNLOADING, State::COMPLETED}));
    EXPECT_EQ(progress.back(), picture.size());
}

TEST_F(PlatformDownload, NothingIsToldOnThePlatformsThread)
{
    const int id = init();
    start(id, server.url("/halves.png"));
    const size_t before = states.size();
    EXPECT_TRUE(DownloadStandIn::changeState(id, DOWNLOAD_STATE_COMPLETED));
    EXPECT_TRUE(DownloadStandIn::progress(id, 5));

    EXPECT_EQ(states.size(), before);
    EXPECT_TRUE(progress.empty());
}

TEST_F(PlatformDownload, ThePlatformsStatesOutsideOfTheListAreNone)
{
    const int id = init();
    Calls::fail("download_start", DOWNLOAD_ERROR_NO_DATA);
    start(id, server.url("/milk.png"));
    for (int number = 0; number <= 8; ++number)
        EXPECT_TRUE(DownloadStandIn::changeState(id, number));
    std::vector<State> expected = {State::NONE};
    for (int number = 1; number <= 7; ++number)
        expected.push_back(static_cast<State>(number));
    expected.push_back(State::NONE);
    // Those that end the loop end it early.
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::Patience;
    while (states.size() < expected.size() && std::chrono::steady_clock::now() < deadline)
        letEverythingComplete();

    EXPECT_EQ(states, expected);
}

TEST_F(PlatformDownload, ReceivedBytesMayNeed64Bits)
{
    const int id = init();
    Calls::fail("download_start", DOWNLOAD_ERROR_NO_DATA);
    start(id, server.url("/milk.png"));
    EXPECT_TRUE(DownloadStandIn::progress(id, 0xFFFFFFFFFFFFFFFFULL));
    letEverythingComplete();

    EXPECT_EQ(progress, std::vector<uint64_t>{0xFFFFFFFFFFFFFFFFULL});
}

TEST_F(PlatformDownload, TheProcesssWorkerBringsItToTheMainLoop)
{
    EXPECT_EQ(Holder::mInstance, nullptr);
    start(init(), server.url("/milk.png"));
    ASSERT_TRUE(loop.run());

    ASSERT_NE(Holder::mInstance, nullptr);
    EXPECT_EQ(Calls::count("ecore_main_loop_thread_safe_call_async"), states.size() + progress.size());
}

TEST_F(PlatformDownload, AFunctionMayGiveUpItsOwnId)
{
    const int id = init();
    auto held = std::make_shared<std::string>("still here");
    std::string told;
    downloader->startDownload(
        id, server.url("/halves.png").c_str(),
        [this, held, &told](int of, State, void*) {
            EXPECT_EQ(downloader->deinitDownload(of), 0);
            told += *held;
            MainLoop::quit();
        },
        ignoreProgress, nullptr);
    held.reset();
    ASSERT_TRUE(loop.run());
    letEverythingComplete();

    EXPECT_EQ(told, "still here");
    EXPECT_EQ(downloader->getStateCallback(id), nullptr);
}

TEST_F(PlatformDownload, WhatComesForAnIdThatWasGivenUpIsLoggedAndNothingElse)
{
    const int id = init();
    Calls::fail("download_start", DOWNLOAD_ERROR_NO_DATA);
    start(id, server.url("/milk.png"));
    Calls::reset();
    EXPECT_TRUE(DownloadStandIn::changeState(id, DOWNLOAD_STATE_QUEUED));
    EXPECT_TRUE(DownloadStandIn::progress(id, 5));
    EXPECT_EQ(downloader->deinitDownload(id), 0);
    letEverythingComplete();

    EXPECT_EQ(states, std::vector<State>());
    EXPECT_EQ(progress, std::vector<uint64_t>());
    const std::string line = "Download " + std::to_string(id) + ": bad_function_call";
    EXPECT_EQ(errorMessages(), (List{line, line}));
}

TEST_F(PlatformDownload, EmptyFunctionsAreLoggedToo)
{
    const int id = init();
    Calls::fail("download_start", DOWNLOAD_ERROR_NO_DATA);
    downloader->startDownload(id, server.url("/milk.png").c_str(), nullptr, nullptr, nullptr);
    Calls::reset();
    EXPECT_TRUE(DownloadStandIn::changeState(id, DOWNLOAD_STATE_QUEUED));
    letEverythingComplete();

    EXPECT_EQ(errorMessages(), List{"Download " + std::to_string(id) + ": bad_function_call"});
}

TEST_F(PlatformDownload, AnObjectMayBeDestroyedWhileItsTasksWait)
{
    const int id = init();
    Calls::fail("download_start", DOWNLOAD_ERROR_NO_DATA);
    start(id, server.url("/milk.png"));
    Calls::reset();
    EXPECT_TRUE(DownloadStandIn::changeState(id, DOWNLOAD_STATE_QUEUED));
    EXPECT_TRUE(DownloadStandIn::progress(id, 5));
    downloader.reset();
    letEverythingComplete();

    EXPECT_EQ(states, std::vector<State>());
    EXPECT_EQ(progress, std::vector<uint64_t>());
    EXPECT_EQ(errors(), List());
}

TEST_F(PlatformDownload, AnObjectMayBeDestroyedWhileItsDownloadsAreUnderWay)
{
    const int id = init();
    quitAt = State::DOWNLOADING;
    start(id, server.url("/halves.png"));
    ASSERT_TRUE(loop.run());
    Calls::reset();
    downloader.reset();
    const size_t told = states.size() + progress.size();
    EXPECT_EQ(callsOf("download_unset_state_changed_cb"), List{std::to_string(id)});
    EXPECT_EQ(callsOf("download_unset_progress_cb"), List{std::to_string(id)});
    EXPECT_EQ(Calls::count("download_destroy"), 0U);
    released.open();
    letEverythingComplete();

    EXPECT_EQ(states.size() + progress.size(), told);
    downloader = std::make_unique<ImageDownloader>();
    EXPECT_EQ(downloader->deinitDownload(id), 0);
}

TEST_F(PlatformDownload, EvenAStartThatFailedHalfWayLeavesNobodyBehind)
{
    const int id = init();
    Calls::fail("download_set_progress_cb", DOWNLOAD_ERROR_NO_DATA);
    start(id, server.url("/milk.png"));
    downloader.reset();

    EXPECT_EQ(callsOf("download_unset_state_changed_cb"), List{std::to_string(id)});
}

TEST_F(PlatformDownload, AFunctionMayDestroyTheObject)
{
    const int id = init();
    downloader->startDownload(
        id, server.url("/halves.png").c_str(),
        [this](int, State, void*) {
            downloader.reset();
            MainLoop::quit();
        },
        ignoreProgress, nullptr);
    ASSERT_TRUE(loop.run());
    letEverythingComplete();

    EXPECT_EQ(downloader, nullptr);
}

TEST_F(PlatformDownload, SeveralIdsAreToldApart)
{
    const int one = init();
    const int other = init();
    std::vector<int> told;
    int ofOne = 0;
    int ofOther = 0;
    const auto note = [&](int id, State state, void* userData) {
        if (state != State::COMPLETED)
            return;
        told.push_back(id);
        EXPECT_EQ(userData, id == one ? &ofOne : &ofOther);
        if (told.size() == 2)
            MainLoop::quit();
    };
    downloader->startDownload(one, server.url("/milk.png").c_str(), note, ignoreProgress, &ofOne);
    downloader->startDownload(other, server.url("/milk.gif").c_str(), note, ignoreProgress, &ofOther);
    ASSERT_TRUE(loop.run());

    std::sort(told.begin(), told.end());
    EXPECT_EQ(told, (std::vector<int>{one, other}));
}

TEST_F(PlatformDownload, AProcessMayEndWhileOneIsUnderWayAndTheWorkerHasMoreToBring)
{
    for (int round = 0; round < 30; ++round) {
        Latch ended;
        HttpServer own;
        halves(own, ended);
        own.start();
        ChildProcess process({IMAGE_DOWNLOAD_PROBE, own.url("/halves.png"), std::to_string(round % 4)});
        const ProcessEnd end = process.wait();
        ended.open();

        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(end.signal, 0) << process.errors();
        EXPECT_EQ(end.status, 0) << process.errors();
        EXPECT_NE(process.output().find("under way\n"), std::string::npos) << process.output();
    }
}

TEST_F(PlatformDownload, WithoutEcoreNothingStarts)
{
    const int id = init();
    Calls::fail("ecore_init", 0);

    EXPECT_EQ(start(id, server.url("/milk.png")), DOWNLOAD_ERROR_SYSTEM_DOWN);
    EXPECT_EQ(Calls::count("download_set_state_changed_cb"), 0U);
    EXPECT_EQ(Calls::count("download_start"), 0U);
    EXPECT_EQ(Holder::mInstance, nullptr);
    EXPECT_EQ(errorMessages(), List{""});
    EXPECT_EQ(start(id, server.url("/milk.png")), 0);
}

TEST_F(PlatformDownload, TheWorkerComesWithOneReferenceToEcore)
{
    const int id = init();
    Calls::reset();
    start(id, server.url("/milk.png"));
    ASSERT_TRUE(loop.run());
    start(init(), server.url("/milk.gif"));
    ASSERT_TRUE(loop.run());

    EXPECT_EQ(Calls::count("ecore_init"), 1U);
}
