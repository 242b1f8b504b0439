// Where a download's file goes, what it is called, a disk that does not take it, and a lack of memory.
#include <curl/curl.h>
#include <sys/stat.h>
#include <tzplatform_config.h>

#include <atomic>
#include <cerrno>
#include <filesystem>

#include "DownloadFixture.h"

namespace fs = std::filesystem;

extern "C" ssize_t __real_pwrite(int descriptor, const void* bytes, size_t count, off_t offset);
extern "C" ssize_t __wrap_pwrite(int descriptor, const void* bytes, size_t count, off_t offset);
extern "C" CURLMcode __real_curl_multi_add_handle(CURLM* multi, CURL* handle);
extern "C" CURLMcode __wrap_curl_multi_add_handle(CURLM* multi, CURL* handle);

namespace {

std::atomic<bool> isOutOfMemory{false};

// What happens to each write of a file from now on: 0 for nothing, an errno, or a few bytes at a time.
std::atomic<int> writeError{0};
std::atomic<size_t> mostWritten{0};

class DownloadName : public Downloads {
  protected:
    // The name of the file of a download of the path that was given no name.
    std::string nameFor(const std::string& path)
    {
        TestDownload download;
        EXPECT_EQ(download_set_url(download.id, (server.url("") + path).c_str()), DOWNLOAD_ERROR_NONE);
        EXPECT_EQ(download_set_destination(download.id, folder.c_str()), DOWNLOAD_ERROR_NONE);
        EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_NONE);
        EXPECT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
        const std::string name = fs::path(download.path()).filename();
        fs::remove(download.path());
        return name;
    }

    std::string secondNameOf(const std::string& name)
    {
        std::ofstream(folder + "/" + name) << "the first";
        TestDownload download;
        EXPECT_EQ(start(download, "/milk.png", name), DOWNLOAD_ERROR_NONE);
        EXPECT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
        EXPECT_EQ(contentOf(folder + "/" + name), "the first");
        EXPECT_EQ(contentOf(download.path()), picture);
        return fs::path(download.path()).filename();
    }
};

class DownloadDisk : public Downloads {
  protected:
    ~DownloadDisk() override
    {
        writeError = 0;
        mostWritten = 0;
    }

    int errorWith(int code)
    {
        writeError = code;
        TestDownload download;
        EXPECT_EQ(start(download, "/milk.png"), DOWNLOAD_ERROR_NONE);
        EXPECT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_FAILED));
        EXPECT_EQ(files(), std::vector<std::string>());
        return download.error();
    }
};

}  // namespace

ssize_t __wrap_pwrite(int descriptor, const void* bytes, size_t count, off_t offset)
{
    if (writeError != 0) {
        errno = writeError;
        return -1;
    }
    const size_t most = mostWritten;
    return __real_pwrite(descriptor, bytes, most == 0 ? count : std::min(count, most), offset);
}

CURLMcode __wrap_curl_multi_add_handle(CURLM* multi, CURL* handle)
{
    return isOutOfMemory ? CURLM_OUT_OF_MEMORY : __real_curl_multi_add_handle(multi, handle);
}

TEST_F(Downloads, ALackOfMemoryIsAFailureThatLeavesNothing)
{
    isOutOfMemory = true;
    TestDownload download;
    EXPECT_EQ(outcome(download, "/milk.png", DOWNLOAD_STATE_FAILED), kFailed);
    isOutOfMemory = false;

    EXPECT_EQ(download.error(), DOWNLOAD_ERROR_OUT_OF_MEMORY);
    EXPECT_EQ(files(), std::vector<std::string>());
    download.heard.forget();
    EXPECT_EQ(outcome(download, "/milk.png", DOWNLOAD_STATE_COMPLETED), kGood);
}

TEST_F(DownloadName, IsWhatTheAddressEndsWithWhereNoneWasGiven)
{
    EXPECT_EQ(nameFor("/pictures/milk.png?size=3/4#part/2"), "milk.png");
    EXPECT_EQ(nameFor("/pictures/milk"), "milk");
    EXPECT_EQ(nameFor("/pictures/"), "download");
    EXPECT_EQ(nameFor("/"), "download");
    EXPECT_EQ(nameFor(""), "download");
    EXPECT_EQ(nameFor("/" + std::string(256, 'x')), "download");
}

TEST_F(DownloadName, OfAFileThatIsThereAlreadyGetsANumber)
{
    EXPECT_EQ(secondNameOf("milk.png"), "milk_1.png");
    EXPECT_EQ(secondNameOf("milk.tar.gz"), "milk.tar_1.gz");
    EXPECT_EQ(secondNameOf("milk"), "milk_1");
    EXPECT_EQ(secondNameOf(".milk"), ".milk_1");
    EXPECT_EQ(secondNameOf("milk.png"), "milk_2.png");
}

TEST_F(DownloadName, OfTwoAtTheSameTimeIsNotTheSame)
{
    TestDownload one;
    TestDownload other;
    start(one, "/halves.png");
    start(other, "/halves.png");
    ASSERT_TRUE(one.heard.waitForProgress(1));
    ASSERT_TRUE(other.heard.waitForProgress(1));
    released.open();

    ASSERT_TRUE(one.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    ASSERT_TRUE(other.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    EXPECT_EQ(files(), (std::vector<std::string>{"milk.png", "milk_1.png"}));
    EXPECT_EQ(contentOf(one.path()), picture);
    EXPECT_EQ(contentOf(other.path()), picture);
}

TEST_F(DownloadName, NeverLeadsOutOfTheFolder)
{
    TestDownload download;
    for (const std::string& name :
         {std::string(), std::string("."), std::string(".."), std::string("../milk"), std::string("/milk"),
          std::string("a/b"), std::string(256, 'x')})
        EXPECT_EQ(download_set_file_name(download.id, name.c_str()), DOWNLOAD_ERROR_INVALID_PARAMETER)
            << name;
    for (const std::string& name : {std::string("..."), std::string("a b\n"), std::string(255, 'x')})
        EXPECT_EQ(download_set_file_name(download.id, name.c_str()), DOWNLOAD_ERROR_NONE) << name;
}

TEST_F(Downloads, WithoutADestinationAFileGoesToTheUsersDownloads)
{
    TestDownload download;
    EXPECT_EQ(download_set_url(download.id, server.url("/milk.png").c_str()), DOWNLOAD_ERROR_NONE);
    EXPECT_EQ(download_start(download.id), DOWNLOAD_ERROR_NONE);

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    const std::string downloads = tzplatform_mkpath(TZ_USER_CONTENT, "Downloads");
    EXPECT_EQ(download.path(), downloads + "/milk.png");
    fs::remove_all(downloads);
}

TEST_F(Downloads, ADestinationMayEndInASlash)
{
    TestDownload download;
    EXPECT_EQ(download.start(server.url("/milk.png"), folder + "/", "milk.png"), DOWNLOAD_ERROR_NONE);

    ASSERT_TRUE(download.heard.waitFor(DOWNLOAD_STATE_COMPLETED));
    EXPECT_EQ(download.path(), folder + "/milk.png");
}

TEST_F(Downloads, AFileIsReadableByAllAndWritableByItsOwner)
{
    const mode_t before = umask(0);
    TestDownload download;
    outcome(download, "/milk.png", DOWNLOAD_STATE_COMPLETED);
    umask(before);

    EXPECT_EQ(fs::status(download.path()).permissions(), static_cast<fs::perms>(0644));
}

TEST_F(DownloadDisk, ThatIsFullIsToldApart)
{
    EXPECT_EQ(errorWith(ENOSPC), DOWNLOAD_ERROR_NO_SPACE);
    EXPECT_EQ(errorWith(EDQUOT), DOWNLOAD_ERROR_NO_SPACE);
    EXPECT_EQ(errorWith(EACCES), DOWNLOAD_ERROR_PERMISSION_DENIED);
    EXPECT_EQ(errorWith(EIO), DOWNLOAD_ERROR_IO_ERROR);
}

TEST_F(DownloadDisk, ThatTakesAFewBytesAtATimeGetsThemAll)
{
    mostWritten = 1000;
    TestDownload download;
    outcome(download, "/milk.png", DOWNLOAD_STATE_COMPLETED);

    EXPECT_EQ(contentOf(download.path()), picture);
}
