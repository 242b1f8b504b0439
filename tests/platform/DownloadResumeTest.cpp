// The second stretch of a download that was paused, at servers with minds of their own.
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

    std::vector<std::pair<std::string, std::string>> marks;
    Answer answer;
    bool isMeasured = true;  // the first request is told the picture's size
};

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
