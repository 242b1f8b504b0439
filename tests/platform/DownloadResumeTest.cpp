// The second stretch of a download that was paused, at servers with minds of their own.
#include <atomic>

#include "DownloadFixture.h"

namespace {

class DownloadResume : public Downloads {
  protected:
    using Answer = std::function<void(httplib::Response&)>;

    // The first request gets half of the picture, those for a part of it the answer.
    void SetUp() override
    {
        server.Get("/changing", [this](const httplib::Request& request, httplib::Response& response) {
            if (request.headers.count("Range") == 0) {
                for (const auto& [name, value] : marks)
                    response.set_header(name, value);
                giveHalves(response, isMeasured);
                return;
            }
            note(request.get_header_value("If-Range"));
            // The answer says itself what part it is, if any.
            const_cast<httplib::Request&>(request).ranges.clear();
            answer(response);
        });
        Downloads::SetUp();
    }

    // Pauses after the first half and resumes; returns the states after that.
    States resume(TestDownload& download, int end)
    {
        start(download, "/changing");
        EXPECT_TRUE(download.heard.waitForProgress(picture.size() / 2));
        EXPECT_EQ(download_pause(download.id), DOWNLOAD_ERROR_NONE);
        EXPECT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_PAUSED));
        download.heard.forget();
        EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_NONE);
        EXPECT_TRUE(download.heard.waitFor(end));
        return download.heard.states();
    }

    // What a rest that says it is that part comes to.
    int errorOfPart(const std::string& contentRange, std::size_t size)
    {
        answer = [=](httplib::Response& response) {
            response.status = 206;
            response.set_header("Content-Range", contentRange);
            response.set_content(std::string(size, 'x'), "image/png");
        };
        TestDownload download;
        EXPECT_EQ(resume(download, DOWNLOAD_STATE_FAILED), kFailed) << contentRange;
        EXPECT_EQ(files(), std::vector<std::string>()) << contentRange;
        return download.error();
    }

    std::vector<std::pair<std::string, std::string>> marks;
    Answer answer;
    bool isMeasured = true;  // the first request is told the picture's size
};

class DownloadPart : public DownloadResume, public testing::WithParamInterface<const char*> {};

}  // namespace

TEST_F(DownloadResume, AServerThatKnowsNoPartsGivesTheWholeAnew)
{
    answer = [](httplib::Response& response) { response.set_content("other", "image/png"); };
    TestDownload download;

    EXPECT_EQ(resume(download, DOWNLOAD_STATE_COMPLETED), kGood);
    EXPECT_EQ(contentOf(download.path()), "other");
    EXPECT_EQ(download.contentSize(), 5U);
    EXPECT_EQ(download.heard.progress().back(), 5U);
    EXPECT_EQ(ranges(), std::vector<std::string>{""});
}

TEST_F(DownloadResume, AServerWithATagIsAskedForTheRestOfThatVersion)
{
    marks = {{"ETag", "\"v1\""}, {"Last-Modified", "Sat, 21 Nov 2026 00:00:00 GMT"}};
    answer = [](httplib::Response& response) { response.set_content("other", "image/png"); };
    TestDownload download;

    resume(download, DOWNLOAD_STATE_COMPLETED);
    EXPECT_EQ(ranges(), std::vector<std::string>{"\"v1\""});
}

TEST_F(DownloadResume, AWeakTagDoesNotTellVersionsApartButTheDateDoes)
{
    marks = {{"ETag", "W/\"v1\""}, {"Last-Modified", "Sat, 21 Nov 2026 00:00:00 GMT"}};
    answer = [](httplib::Response& response) { response.set_content("other", "image/png"); };
    TestDownload download;

    resume(download, DOWNLOAD_STATE_COMPLETED);
    EXPECT_EQ(ranges(), std::vector<std::string>{"Sat, 21 Nov 2026 00:00:00 GMT"});
}

TEST_F(DownloadResume, AnotherPartThanTheOneAskedForCannotBeUsed)
{
    answer = [](httplib::Response& response) {
        response.status = 206;
        response.set_header("Content-Range", "bytes 0-4/300000");
        response.set_content("other", "image/png");
    };
    TestDownload download;

    EXPECT_EQ(resume(download, DOWNLOAD_STATE_FAILED), kFailed);
    EXPECT_EQ(download.error(), DOWNLOAD_ERROR_CANNOT_RESUME);
    EXPECT_EQ(download.httpStatus(), 206);
    EXPECT_EQ(files(), std::vector<std::string>());
}

TEST_F(DownloadResume, APartThatEndsBeforeTheFileDoesIsNotTheRest)
{
    EXPECT_EQ(errorOfPart("bytes 150000-199999/300000", 50'000), DOWNLOAD_ERROR_CANNOT_RESUME);
    isMeasured = false;
    EXPECT_EQ(errorOfPart("bytes 150000-199999/300000", 50'000), DOWNLOAD_ERROR_CANNOT_RESUME);
    EXPECT_EQ(errorOfPart("bytes 150000-199999/*", 50'000), DOWNLOAD_ERROR_CANNOT_RESUME);
}

TEST_F(DownloadResume, TheRestOfAFileOfAnotherSizeIsNotUsed)
{
    EXPECT_EQ(errorOfPart("bytes 150000-299998/299999", 149'999), DOWNLOAD_ERROR_CANNOT_RESUME);
    EXPECT_EQ(errorOfPart("bytes 150000-300000/300001", 150'001), DOWNLOAD_ERROR_CANNOT_RESUME);
    EXPECT_EQ(errorOfPart("bytes 150000-199999/200000", 50'000), DOWNLOAD_ERROR_CANNOT_RESUME);
}

TEST_P(DownloadPart, ThatDoesNotSayWhichItIsIsNotUsed)
{
    EXPECT_EQ(errorOfPart(GetParam(), 150'000), DOWNLOAD_ERROR_CANNOT_RESUME);
}

INSTANTIATE_TEST_SUITE_P(Ranges, DownloadPart,
                         testing::Values("", "bytes", "bytes 150000-", "bytes 150000-299999",
                                         "bytes 150000-299999/", "bytes 150000-/300000",
                                         "bytes 150000-299999/300000 ?", "bytes -1-299999/300000",
                                         "bytes 150000-18446744073709551615/0", "lines 150000-299999/300000",
                                         "bytes 150000-99999999999999999999/300000"));

TEST_F(DownloadResume, ARestThatIsShorterThanItSaysIsNoEnd)
{
    answer = [](httplib::Response& response) {
        response.status = 206;
        response.set_header("Content-Range", "bytes 150000-299999/300000");
        response.set_chunked_content_provider("image/png", [](size_t, httplib::DataSink& sink) {
            sink.write("short", 5);
            sink.done();
            return true;
        });
    };
    TestDownload download;

    EXPECT_EQ(resume(download, DOWNLOAD_STATE_FAILED).back(), DOWNLOAD_STATE_FAILED);
    EXPECT_EQ(download.error(), DOWNLOAD_ERROR_CANNOT_RESUME);
    EXPECT_EQ(files(), std::vector<std::string>());
}

TEST_F(DownloadResume, ARestOfAFileWhoseSizeOnlyTheFirstAnswerToldIsUsed)
{
    answer = [this](httplib::Response& response) {
        response.status = 206;
        response.set_header("Content-Range", "bytes 150000-299999/*");
        response.set_content(picture.substr(150'000), "image/png");
    };
    TestDownload download;

    EXPECT_EQ(resume(download, DOWNLOAD_STATE_COMPLETED), kGood);
    EXPECT_EQ(contentOf(download.path()), picture);
    EXPECT_EQ(download.contentSize(), picture.size());
}

TEST_F(DownloadResume, WhereNothingIsMissingTheFileIsWhole)
{
    isMeasured = false;
    answer = [this](httplib::Response& response) {
        response.status = 416;
        response.set_header("Content-Range", "bytes */" + std::to_string(picture.size() / 2));
    };
    TestDownload download;

    EXPECT_EQ(resume(download, DOWNLOAD_STATE_COMPLETED), kGood);
    EXPECT_EQ(contentOf(download.path()), picture.substr(0, picture.size() / 2));
    EXPECT_EQ(download.contentSize(), picture.size() / 2);
}

TEST_F(DownloadResume, AFileOfWhichOnlyTheEndOfTheAnswerWasMissingIsWhole)
{
    // All bytes come, but not the mark of their end; after another pause there are no more.
    std::atomic<int> asked{0};
    answer = [this, &asked](httplib::Response& response) {
        if (++asked == 2) {
            response.status = 416;
            response.set_header("Content-Range", "bytes */300000");
            return;
        }
        response.status = 206;
        response.set_header("Content-Range", "bytes 150000-299999/300000");
        response.set_chunked_content_provider("image/png", [this](size_t offset, httplib::DataSink& sink) {
            if (offset == 0)
                return sink.write(picture.data() + 150'000, 150'000);
            released.wait();
            return false;
        });
    };
    TestDownload download;
    start(download, "/changing");
    for (const size_t size : {picture.size() / 2, picture.size()}) {
        ASSERT_TRUE(download.heard.waitForProgress(size));
        EXPECT_EQ(download_pause(download.id), DOWNLOAD_ERROR_NONE);
        ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_PAUSED));
        download.heard.forget();
        EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_NONE);
    }

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(contentOf(download.path()), picture);
}

TEST_F(DownloadResume, ASizeThatIsNotTheOneToldBeforeIsNoEnd)
{
    answer = [this](httplib::Response& response) {
        response.status = 416;
        response.set_header("Content-Range", "bytes */" + std::to_string(picture.size() / 2));
    };
    TestDownload download;

    EXPECT_EQ(resume(download, DOWNLOAD_STATE_FAILED), kFailed);
    EXPECT_EQ(download.error(), DOWNLOAD_ERROR_CANNOT_RESUME);
}

TEST_F(DownloadResume, AServerWithoutThatPartCannotBeUsed)
{
    answer = [](httplib::Response& response) { response.status = 416; };
    TestDownload download;

    EXPECT_EQ(resume(download, DOWNLOAD_STATE_FAILED), kFailed);
    EXPECT_EQ(download.error(), DOWNLOAD_ERROR_CANNOT_RESUME);
    EXPECT_EQ(download.httpStatus(), 416);
}

TEST_F(DownloadResume, AfterThatTheDownloadCanBeStartedFromTheBeginning)
{
    answer = [](httplib::Response& response) { response.status = 416; };
    TestDownload download;
    resume(download, DOWNLOAD_STATE_FAILED);
    released.open();

    EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_NONE);
    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    EXPECT_EQ(contentOf(download.path()), picture);
}
