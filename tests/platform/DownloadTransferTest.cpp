// What becomes of a download: its file, its progress, pauses, and each way to fail.
#include <sys/stat.h>

#include <filesystem>

#include "DownloadFixture.h"

namespace fs = std::filesystem;

namespace {

struct Trouble {
    std::string path;
    int error;
    int httpStatus;
};

void PrintTo(const Trouble& trouble, std::ostream* out)
{
    *out << trouble.path;
}

class DownloadTrouble : public Downloads, public testing::WithParamInterface<Trouble> {};

}  // namespace

TEST_F(Downloads, AFileIsThereWhenItsDownloadIsCompleted)
{
    TestDownload download;

    EXPECT_EQ(outcome(download, "/milk.png", DOWNLOAD_STATE_COMPLETED), kGood);
    EXPECT_EQ(download.path(), folder + "/milk.png");
    EXPECT_EQ(contentOf(download.path()), picture);
    EXPECT_EQ(download.state(), DOWNLOAD_STATE_COMPLETED);
    EXPECT_EQ(download.error(), DOWNLOAD_ERROR_NONE);
    EXPECT_EQ(download.httpStatus(), 200);
    EXPECT_EQ(download.contentSize(), picture.size());
}

TEST_F(Downloads, ProgressGoesFromNothingOrMoreUpToTheWholeBetweenDownloadingAndCompleted)
{
    TestDownload download;
    outcome(download, "/milk.png", DOWNLOAD_STATE_COMPLETED);

    const auto progress = download.heard.progress();
    ASSERT_FALSE(progress.empty());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(progress.back(), picture.size());
    EXPECT_EQ(download.heard.statesBeforeProgress(), States(progress.size(), DOWNLOAD_STATE_DOWNLOADING));
}

TEST_F(Downloads, AnEmptyFileIsCompletedToo)
{
    TestDownload download;

    EXPECT_EQ(outcome(download, "/empty.png", DOWNLOAD_STATE_COMPLETED), kGood);
    EXPECT_EQ(download.heard.progress(), std::vector<unsigned long long>{0});
    EXPECT_EQ(fs::file_size(download.path()), 0U);
}

TEST_F(Downloads, ARedirectIsFollowed)
{
    TestDownload download;

    EXPECT_EQ(outcome(download, "/moved.png", DOWNLOAD_STATE_COMPLETED), kGood);
    EXPECT_EQ(contentOf(download.path()), picture);
}

TEST_F(Downloads, ASizeThatTheServerDoesNotTellIsKnownAtTheEnd)
{
    TestDownload download;
    start(download, "/unmeasured.png");
    ASSERT_TRUE(download.heard.waitForProgress(1));
    EXPECT_EQ(download.contentSize(), 0U);

    released.open();
    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    EXPECT_EQ(download.contentSize(), picture.size());
    EXPECT_EQ(contentOf(download.path()), picture);
}

TEST_F(Downloads, UntilSomethingComesADownloadIsQueued)
{
    TestDownload download;
    start(download, "/silent.png");
    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_QUEUED));
    EXPECT_EQ(download.state(), DOWNLOAD_STATE_QUEUED);
    EXPECT_EQ(download.httpStatus(), 0);

    released.open();
    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    EXPECT_EQ(download.heard.states(), kGood);
}

TEST_F(Downloads, OneThatIsCanceledHalfWayLeavesNothing)
{
    TestDownload download;
    start(download, "/halves.png");
    ASSERT_TRUE(download.heard.waitForProgress(1));
    EXPECT_EQ(download.contentSize(), picture.size());
    EXPECT_EQ(files(), std::vector<std::string>{"milk.png"});

    EXPECT_EQ(download_cancel(download.id), DOWNLOAD_ERROR_NONE);
    EXPECT_EQ(download.state(), DOWNLOAD_STATE_CANCELED);
    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_CANCELED));
    EXPECT_EQ(files(), std::vector<std::string>());
    EXPECT_EQ(download.heard.states(),
              (States{DOWNLOAD_STATE_QUEUED, DOWNLOAD_STATE_DOWNLOADING, DOWNLOAD_STATE_CANCELED}));
    EXPECT_LE(download.heard.progress().back(), picture.size() / 2);
}

TEST_F(Downloads, OneThatWasCanceledStartsFromTheBeginning)
{
    TestDownload download;
    start(download, "/halves.png");
    ASSERT_TRUE(download.heard.waitForProgress(1));
    EXPECT_EQ(download_cancel(download.id), DOWNLOAD_ERROR_NONE);
    released.open();
    EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_NONE);

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    EXPECT_EQ(ranges(), std::vector<std::string>());
    EXPECT_EQ(contentOf(folder + "/milk.png"), picture);
    EXPECT_EQ(files(), std::vector<std::string>{"milk.png"});
}

TEST_F(Downloads, OneThatFailedCanBeStartedAgain)
{
    TestDownload download;
    EXPECT_EQ(outcome(download, "/missing.png", DOWNLOAD_STATE_FAILED), kFailed);
    download.heard.forget();

    EXPECT_EQ(outcome(download, "/milk.png", DOWNLOAD_STATE_COMPLETED), kGood);
    EXPECT_EQ(download.error(), DOWNLOAD_ERROR_NONE);
    EXPECT_EQ(download.httpStatus(), 200);
}

TEST_F(Downloads, APauseKeepsWhatHasComeAndAsksForTheRestOnly)
{
    TestDownload download;
    start(download, "/halves.png");
    ASSERT_TRUE(download.heard.waitForProgress(picture.size() / 2));
    EXPECT_EQ(download_pause(download.id), DOWNLOAD_ERROR_NONE);
    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_PAUSED));
    EXPECT_EQ(download.state(), DOWNLOAD_STATE_PAUSED);
    EXPECT_EQ(contentOf(folder + "/milk.png"), picture.substr(0, picture.size() / 2));

    released.open();
    EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_NONE);
    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    EXPECT_EQ(ranges(), std::vector<std::string>{"bytes=" + std::to_string(picture.size() / 2) + "-"});
    EXPECT_EQ(contentOf(download.path()), picture);
    EXPECT_EQ(download.contentSize(), picture.size());
    EXPECT_EQ(download.heard.states(),
              (States{DOWNLOAD_STATE_QUEUED, DOWNLOAD_STATE_DOWNLOADING, DOWNLOAD_STATE_PAUSED,
                      DOWNLOAD_STATE_QUEUED, DOWNLOAD_STATE_DOWNLOADING, DOWNLOAD_STATE_COMPLETED}));
    const auto progress = download.heard.progress();
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(progress.back(), picture.size());
}

TEST_F(Downloads, APauseBeforeAnythingCameLosesNothing)
{
    TestDownload download;
    start(download, "/silent.png");
    EXPECT_EQ(download_pause(download.id), DOWNLOAD_ERROR_NONE);
    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_PAUSED));
    released.open();
    EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_NONE);

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    EXPECT_EQ(contentOf(download.path()), picture);
}

TEST_F(Downloads, PausesWhileItComesNeverHarmTheFile)
{
    released.open();
    TestDownload download;
    start(download, "/milk.png");
    for (int i = 0; i < 20; ++i) {
        if (download_pause(download.id) == DOWNLOAD_ERROR_NONE) {
            EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_NONE);
        }
        std::this_thread::yield();
    }

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    EXPECT_EQ(contentOf(download.path()), picture);
    EXPECT_EQ(files(), std::vector<std::string>{"milk.png"});
}

TEST_F(Downloads, OneThatIsPausedCanBeCanceled)
{
    TestDownload download;
    start(download, "/halves.png");
    ASSERT_TRUE(download.heard.waitForProgress(1));
    EXPECT_EQ(download_pause(download.id), DOWNLOAD_ERROR_NONE);
    EXPECT_EQ(download_cancel(download.id), DOWNLOAD_ERROR_NONE);

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_CANCELED));
    EXPECT_EQ(files(), std::vector<std::string>());
}

TEST_F(Downloads, AFolderThatWasWipedMeanwhileIsAFailure)
{
    TestDownload download;
    start(download, "/halves.png");
    ASSERT_TRUE(download.heard.waitForProgress(1));
    fs::remove_all(folder);
    released.open();

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_FAILED));
    EXPECT_EQ(download.error(), DOWNLOAD_ERROR_IO_ERROR);
}

TEST_F(Downloads, AFileThatTookTheWipedOnesPlaceIsLeftAlone)
{
    TestDownload download;
    start(download, "/halves.png");
    ASSERT_TRUE(download.heard.waitForProgress(1));
    fs::remove(folder + "/milk.png");
    std::ofstream(folder + "/milk.png") << "somebody else's";
    EXPECT_EQ(download_cancel(download.id), DOWNLOAD_ERROR_NONE);

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_CANCELED));
    EXPECT_EQ(contentOf(folder + "/milk.png"), "somebody else's");
}

TEST_F(Downloads, AFolderThatIsGoneAtTheStartIsNoDestination)
{
    TestDownload download;
    EXPECT_EQ(download_set_destination(download.id, folder.c_str()), DOWNLOAD_ERROR_NONE);
    EXPECT_EQ(download_set_url(download.id, server.url("/milk.png").c_str()), DOWNLOAD_ERROR_NONE);
    fs::remove_all(folder);
    EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_NONE);

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_FAILED));
    EXPECT_EQ(download.error(), DOWNLOAD_ERROR_INVALID_DESTINATION);
}

TEST_F(Downloads, APortWhereNobodyListensIsATimeOut)
{
    const DeafPort port;
    TestDownload download;
    EXPECT_EQ(download.start(port.url("/milk.png"), folder, "milk.png"), DOWNLOAD_ERROR_NONE);

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_FAILED));
    EXPECT_EQ(download.heard.states(), kFailed);
    EXPECT_EQ(download.error(), DOWNLOAD_ERROR_CONNECTION_TIMED_OUT);
    EXPECT_EQ(download.httpStatus(), 0);
    EXPECT_EQ(files(), std::vector<std::string>());
}

TEST_F(Downloads, ManyRunSideBySide)
{
    std::vector<std::unique_ptr<TestDownload>> downloads;
    for (int i = 0; i < 5; ++i) {
        downloads.push_back(std::make_unique<TestDownload>());
        start(*downloads.back(), "/halves.png", std::to_string(i) + ".png");
    }
    for (const auto& download : downloads)
        ASSERT_TRUE(download->heard.waitForProgress(1));
    released.open();

    for (const auto& download : downloads) {
        ASSERT_TRUE(download->heard.waitFor(DOWNLOAD_STATE_COMPLETED));
        EXPECT_EQ(contentOf(download->path()), picture);
    }
}

TEST_P(DownloadTrouble, IsAFailureWithItsCodeAndLeavesNothing)
{
    TestDownload download;
    outcome(download, GetParam().path, DOWNLOAD_STATE_FAILED);

    EXPECT_EQ(download.state(), DOWNLOAD_STATE_FAILED);
    EXPECT_EQ(download.error(), GetParam().error);
    EXPECT_EQ(download.httpStatus(), GetParam().httpStatus);
    EXPECT_EQ(download.path(), "");
    EXPECT_EQ(files(), std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(Answers, DownloadTrouble,
                         testing::Values(Trouble{"/missing.png", DOWNLOAD_ERROR_UNHANDLED_HTTP_CODE, 404},
                                         Trouble{"/part.png", DOWNLOAD_ERROR_UNHANDLED_HTTP_CODE, 206},
                                         Trouble{"/unmoved.png", DOWNLOAD_ERROR_UNHANDLED_HTTP_CODE, 300},
                                         Trouble{"/broken.png", DOWNLOAD_ERROR_CONNECTION_FAILED, 200},
                                         Trouble{"/round.png", DOWNLOAD_ERROR_TOO_MANY_REDIRECTS, 302},
                                         Trouble{"/elsewhere.png", DOWNLOAD_ERROR_INVALID_URL, 302}));
