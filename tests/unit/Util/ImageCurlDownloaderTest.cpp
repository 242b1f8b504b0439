// Product images: records, files on the disk, and what each failure leaves behind.
#include "ImageCurlDownloader.h"

#include <curl/curl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <limits>

#include "ImageDownloadFixture.h"
#include "ScratchRoot.h"

namespace fs = std::filesystem;
using TestSupport::Call;
using TestSupport::Calls;
using Util::DownloadImageType;
using Util::ImageCurlDownloader;

namespace {

static_assert(static_cast<int>(DownloadImageType::PRODUCT_IMAGE) == 0);
static_assert(static_cast<int>(DownloadImageType::UNDEFINED_IMAGE) == 1);
static_assert(static_cast<int>(DownloadImageType::DISCOUNT_ICON_IMAGE) == 2);

const List kEnd = {"fflush", "fsync", "fclose", "sync", "curl_easy_cleanup"};

bool closedGate(const std::function<void()>&)
{
    return false;
}

}  // namespace

TEST_F(ImageDownload, APictureIsOnTheDiskAndRecordedUnderItsId)
{
    EXPECT_TRUE(start(10, "/milk.png"));
    EXPECT_EQ(downloader.downloaded, (std::map<int, std::string>{{10, fileOf("10.png")}}));
    EXPECT_EQ(contentOf(fileOf("10.png")), picture());
    EXPECT_EQ(errors(), List());
}

TEST_F(ImageDownload, SetsItsOptionsInAFixedOrder)
{
    const std::string url = server.url("/milk.png");
    downloader.startDownload(10, url.c_str(), openGate);

    List names;
    std::map<std::string, std::string> values;
    for (const Call& call : Calls::of("curl_easy_setopt")) {
        names.push_back(call.arguments.at(0));
        values[call.arguments.at(0)] = call.arguments.at(1);
    }
    EXPECT_EQ(names, (List{"URL", "WRITEFUNCTION", "WRITEDATA", "NOPROGRESS", "NOSIGNAL", "FOLLOWLOCATION",
                           "MAXREDIRS", "TIMEOUT"}));
    EXPECT_EQ(values["URL"], url);
    EXPECT_EQ(values["NOPROGRESS"], "1");
    EXPECT_EQ(values["NOSIGNAL"], "1");
    EXPECT_EQ(values["FOLLOWLOCATION"], "1");
    EXPECT_EQ(values["MAXREDIRS"], "20");
    EXPECT_EQ(values["TIMEOUT"], "7");
}

TEST_F(ImageDownload, MakesTheFolderOpensTheFileAndOnlyThenAHandle)
{
    start(10, "/milk.png");

    EXPECT_EQ(Calls::order({"mkdir", "fopen", "curl_easy_init", "curl_easy_perform", "curl_easy_getinfo"}),
              (List{"mkdir", "fopen", "curl_easy_init", "curl_easy_perform", "curl_easy_getinfo"}));
    EXPECT_EQ(Calls::of("mkdir").at(0).arguments, (List{folder(), "493"}));
    EXPECT_EQ(Calls::of("fopen").at(0).arguments, (List{fileOf("10.png"), "w"}));
}

TEST_F(ImageDownload, IsOnTheDiskBeforeItReturns)
{
    EXPECT_TRUE(start(10, "/milk.png"));
    EXPECT_EQ(Calls::order({"fflush", "fsync", "fclose", "sync", "curl_easy_cleanup"}), kEnd);
}

TEST_F(ImageDownload, AFolderThatIsThereOrCannotBeMadeIsNoError)
{
    EXPECT_TRUE(start(10, "/milk.png"));
    Calls::fail("mkdir", EACCES);
    EXPECT_TRUE(start(20, "/milk.png"));
    EXPECT_EQ(files(), (List{"10.png", "20.png"}));
}

TEST_F(ImageDownload, AnEmptyPictureIsAnEmptyFile)
{
    EXPECT_TRUE(start(10, "/empty.png"));
    EXPECT_EQ(fs::file_size(fileOf("10.png")), 0U);
}

TEST_F(ImageDownload, ANewerPictureReplacesFileAndRecordOfTheSameId)
{
    EXPECT_TRUE(start(10, "/milk.png"));
    EXPECT_TRUE(start(10, "/other.png"));
    EXPECT_EQ(contentOf(fileOf("10.png")), "other");

    EXPECT_TRUE(start(10, "/milk.jpg"));
    EXPECT_EQ(downloader.downloaded, (std::map<int, std::string>{{10, fileOf("10.jpg")}}));
    EXPECT_EQ(files(), (List{"10.jpg", "10.png"}));
}

TEST_F(ImageDownload, EachIdHasItsOwnRecord)
{
    start(10, "/milk.png");
    start(20, "/milk.gif");

    EXPECT_EQ(downloader.downloaded,
              (std::map<int, std::string>{{10, fileOf("10.png")}, {20, fileOf("20.gif")}}));
}

TEST_F(ImageDownload, AnyNumberCanBeAnId)
{
    const int lowest = std::numeric_limits<int>::min();
    for (const int id : {0, -5, lowest, std::numeric_limits<int>::max()}) {
        EXPECT_TRUE(start(id, "/milk.png"));
        EXPECT_EQ(downloader.downloaded[id], fileOf(std::to_string(id) + ".png"));
    }
}

TEST_F(ImageDownload, ARedirectIsFollowed)
{
    EXPECT_TRUE(start(10, "/moved.png"));
    EXPECT_EQ(contentOf(fileOf("10.png")), picture());
}

TEST_F(ImageDownload, ARedirectCountsByWhereItLeads)
{
    EXPECT_FALSE(start(10, "/lost.png"));
    EXPECT_EQ(errorMessages(), List{"download failed, result: 0HTTP response: 404"});
}

TEST_F(ImageDownload, TwentyRedirectsAreFollowedAndNoMore)
{
    EXPECT_TRUE(start(10, "/again/20.png"));
    EXPECT_EQ(errors(), List());

    EXPECT_FALSE(start(20, "/again/21.png"));
    EXPECT_EQ(errorMessages(), List{std::string("curl_easy_perform failed, result: ") +
                                    curl_easy_strerror(CURLE_TOO_MANY_REDIRECTS)});
}

TEST_F(ImageDownload, AMissingPictureIsAnErrorWhosePageStaysOnTheDisk)
{
    EXPECT_FALSE(start(10, "/missing.png"));
    EXPECT_EQ(errorMessages(), List{"download failed, result: 0HTTP response: 404"});
    EXPECT_EQ(contentOf(fileOf("10.png")), "no such picture");
    EXPECT_TRUE(downloader.downloaded.empty());
    EXPECT_EQ(Calls::order({"fflush", "fsync", "fclose", "sync", "curl_easy_cleanup"}), kEnd);
}

TEST_F(ImageDownload, OnlyTwoHundredIsASuccess)
{
    EXPECT_FALSE(start(10, "/created.png"));
    EXPECT_EQ(errorMessages(), List{"download failed, result: 0HTTP response: 201"});
    EXPECT_TRUE(downloader.downloaded.empty());
}

TEST_F(ImageDownload, WithoutAServerThereIsAnEmptyFileAndTheReason)
{
    const DeafPort port;

    EXPECT_FALSE(downloader.startDownload(10, port.url("/milk.png").c_str(), openGate));
    EXPECT_EQ(errorMessages(), List{std::string("curl_easy_perform failed, result: ") +
                                    curl_easy_strerror(CURLE_COULDNT_CONNECT)});
    EXPECT_EQ(fs::file_size(fileOf("10.png")), 0U);
    EXPECT_TRUE(downloader.downloaded.empty());
    EXPECT_EQ(Calls::order({"fflush", "fsync", "fclose", "sync", "curl_easy_cleanup"}), kEnd);
}

TEST_F(ImageDownload, APictureThatBreaksOffStaysAsFarAsItCame)
{
    EXPECT_FALSE(start(10, "/broken.png"));
    EXPECT_EQ(contentOf(fileOf("10.png")), "half of it");
    EXPECT_EQ(errorMessages(), List{std::string("curl_easy_perform failed, result: ") +
                                    curl_easy_strerror(CURLE_PARTIAL_FILE)});
    EXPECT_TRUE(downloader.downloaded.empty());
}

TEST_F(ImageDownload, AFailureKeepsTheRecordOfAnEarlierSuccess)
{
    start(10, "/milk.jpg");
    start(10, "/missing.png");

    EXPECT_EQ(downloader.downloaded, (std::map<int, std::string>{{10, fileOf("10.jpg")}}));
}

TEST_F(ImageDownload, ADiskThatTakesNoMoreEndsTheTransfer)
{
    Calls::failAlways("fwrite", 0);

    EXPECT_FALSE(start(10, "/milk.png"));
    EXPECT_EQ(errorMessages(), List{std::string("curl_easy_perform failed, result: ") +
                                    curl_easy_strerror(CURLE_WRITE_ERROR)});
    EXPECT_TRUE(downloader.downloaded.empty());
}

TEST_F(ImageDownload, EachBlockIsWrittenAtOnce)
{
    start(10, "/milk.png");

    size_t bytes = 0;
    for (const Call& call : Calls::of("fwrite"))
        bytes += std::stoul(call.arguments.at(0)) * std::stoul(call.arguments.at(1));
    EXPECT_EQ(bytes, picture().size());
}

TEST_F(ImageDownload, AFileThatCannotBeOpenedEndsItBeforeThereIsAHandle)
{
    Calls::fail("fopen", EACCES);

    EXPECT_FALSE(start(10, "/milk.png"));
    EXPECT_EQ(errorMessages(), List{"Failed to open file to image data write"});
    EXPECT_EQ(Calls::count("curl_easy_init"), 0U);
    EXPECT_EQ(Calls::count("sync"), 0U);
    EXPECT_TRUE(downloader.downloaded.empty());
}

TEST_F(ImageDownload, WithoutAHandleTheFileStaysEmpty)
{
    Calls::fail("curl_easy_init", 0);

    EXPECT_FALSE(start(10, "/milk.png"));
    EXPECT_EQ(errorMessages(), List{"Failed to create curl handler"});
    EXPECT_EQ(fs::file_size(fileOf("10.png")), 0U);
    EXPECT_EQ(Calls::count("curl_easy_setopt"), 0U);
    EXPECT_EQ(Calls::order({"fflush", "fsync", "fclose", "sync", "curl_easy_cleanup"}), kEnd);
    EXPECT_EQ(Calls::of("curl_easy_cleanup").at(0).arguments, List{"0"});
}

TEST_F(ImageDownload, AHandleThatCouldNotBePreparedFetchesNothing)
{
    for (std::size_t option : {2, 3, 8}) {  // the file, the time limit
        Calls::fail("curl_easy_setopt", CURLE_OUT_OF_MEMORY, option);
        EXPECT_FALSE(start(10, "/milk.png")) << option;
    }

    EXPECT_EQ(Calls::count("curl_easy_perform"), 0U);
    EXPECT_EQ(errorMessages(), List(3, "curl_easy_perform failed, result: Out of memory"));
    EXPECT_EQ(fs::file_size(fileOf("10.png")), 0U);
    EXPECT_TRUE(downloader.downloaded.empty());
}

TEST_F(ImageDownload, WithoutAStatusItFails)
{
    Calls::fail("curl_easy_getinfo", CURLE_UNKNOWN_OPTION);

    EXPECT_FALSE(start(10, "/milk.png"));
    EXPECT_EQ(errorMessages(), List{"download failed, result: 0HTTP response: 0"});
    EXPECT_TRUE(downloader.downloaded.empty());
    EXPECT_EQ(Calls::order({"fflush", "fsync", "fclose", "sync", "curl_easy_cleanup"}), kEnd);
}

TEST_F(ImageDownload, AFailureIsOneLine)
{
    start(10, "/missing.png");

    ASSERT_EQ(errors().size(), 1U);
    EXPECT_EQ(errors()[0].rfind("ImageCurlDownloader.cpp: startDownload(", 0), 0U) << errors()[0];
}

TEST_F(ImageDownload, NothingIsWrittenThroughALinkInTheFoldersPlace)
{
    const fs::path elsewhere = TestSupport::ScratchRoot::file("elsewhere");
    fs::create_directory(elsewhere);
    std::ofstream(elsewhere / "10.png") << "of somebody else";
    fs::create_directory_symlink(elsewhere, folder());

    EXPECT_FALSE(start(10, "/milk.png"));

    EXPECT_EQ(errorMessages(), List{"Failed to open file to image data write"});
    EXPECT_EQ(contentOf(elsewhere / "10.png"), "of somebody else");
    downloader.clearAllDownloadedImages();
    EXPECT_FALSE(fs::is_symlink(folder()));
    EXPECT_EQ(contentOf(elsewhere / "10.png"), "of somebody else");
    EXPECT_TRUE(start(10, "/milk.png"));
}

TEST_F(ImageDownload, AGateThatIsClosedAtFirstTouchesNothing)
{
    EXPECT_FALSE(downloader.startDownload(10, server.url("/milk.png").c_str(), closedGate));

    EXPECT_EQ(Calls::order({"mkdir", "fopen", "curl_easy_init", "sync"}), List());
    EXPECT_FALSE(fs::exists(folder()));
    EXPECT_TRUE(downloader.downloaded.empty());
    EXPECT_EQ(errors(), List());
}

TEST_F(ImageDownload, AGateThatClosesMeanwhileLeavesNoRecord)
{
    int asked = 0;
    const auto once = [&asked](const std::function<void()>& step) { return ++asked == 1 && openGate(step); };

    EXPECT_FALSE(downloader.startDownload(10, server.url("/milk.png").c_str(), once));
    EXPECT_EQ(asked, 2);
    EXPECT_TRUE(downloader.downloaded.empty());
    EXPECT_EQ(errors(), List());
    EXPECT_EQ(contentOf(fileOf("10.png")), picture());
    EXPECT_EQ(Calls::order({"fflush", "fsync", "fclose", "sync", "curl_easy_cleanup"}), kEnd);
}

TEST_F(ImageDownload, TheGateIsFreeDuringTheTransferAndTheSync)
{
    bool isInside = false;
    const auto gate = [&isInside](const std::function<void()>& step) {
        isInside = true;
        step();
        isInside = false;
        return true;
    };
    for (const char* slow : {"curl_easy_perform", "fsync", "sync"})
        Calls::before(slow, [&isInside] { EXPECT_FALSE(isInside); });
    for (const char* quick : {"mkdir", "fopen"})
        Calls::before(quick, [&isInside] { EXPECT_TRUE(isInside); });

    EXPECT_TRUE(downloader.startDownload(10, server.url("/milk.png").c_str(), gate));
}

TEST_F(ImageDownload, AFailedTransferDoesNotAskTheGateAgain)
{
    int asked = 0;
    const auto counting = [&asked](const std::function<void()>& step) {
        ++asked;
        return openGate(step);
    };
    downloader.startDownload(10, server.url("/missing.png").c_str(), counting);

    EXPECT_EQ(asked, 1);
}

TEST_F(ImageDownload, ForgettingAnIdLeavesItsFile)
{
    start(10, "/milk.png");
    start(20, "/milk.png");
    downloader.deinitDownload(10);

    EXPECT_EQ(downloader.downloaded, (std::map<int, std::string>{{20, fileOf("20.png")}}));
    EXPECT_TRUE(fs::exists(fileOf("10.png")));
}

TEST_F(ImageDownload, ForgettingAnUnknownIdChangesNothing)
{
    start(10, "/milk.png");
    downloader.deinitDownload(11);

    EXPECT_EQ(downloader.downloaded.size(), 1U);
}

TEST_F(ImageDownload, AnIdIsBothNumbersInDecimalOneBehindTheOther)
{
    EXPECT_EQ(downloader.initDownload(1, 0), 10);
    EXPECT_EQ(downloader.initDownload(1, 2), 12);
    EXPECT_EQ(downloader.initDownload(12, 0), 120);
    EXPECT_EQ(downloader.initDownload(12, 2), 122);
    EXPECT_EQ(downloader.initDownload(0, 7), 7);
    EXPECT_EQ(downloader.initDownload(0, 0), 0);
    EXPECT_EQ(downloader.initDownload(-1, 2), -12);
    EXPECT_EQ(downloader.initDownload(1, -2), 1);  // reading stops at the second sign
    EXPECT_TRUE(downloader.downloaded.empty());
}

TEST_F(ImageDownload, ClearingRemovesTheFolderAndKeepsTheRecords)
{
    start(10, "/milk.png");
    fs::create_directories(fileOf("deep/folder"));
    Calls::reset();

    EXPECT_EQ(downloader.clearAllDownloadedImages(), 0);
    EXPECT_FALSE(fs::exists(folder()));
    EXPECT_EQ(Calls::of("system").at(0).arguments, List{"rm -rf " + folder()});
    EXPECT_EQ(downloader.downloaded.size(), 1U);
}

TEST_F(ImageDownload, ClearingTwiceIsNoError)
{
    EXPECT_EQ(downloader.clearAllDownloadedImages(), 0);
    EXPECT_EQ(downloader.clearAllDownloadedImages(), 0);
}

TEST_F(ImageDownload, ClearingReturnsTheShellsStatus)
{
    Calls::fail("system", 256);

    EXPECT_EQ(downloader.clearAllDownloadedImages(), 256);
}

TEST_F(ImageDownload, AfterClearingTheNextPictureMakesTheFolderAgain)
{
    downloader.clearAllDownloadedImages();

    EXPECT_TRUE(start(10, "/milk.png"));
    struct stat status {};
    ASSERT_EQ(stat(folder().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0700, 0700U);
}

TEST_F(ImageDownload, MakingADownloaderWipesTheImagesOfAnEarlierRun)
{
    fs::create_directories(folder());
    std::ofstream(fileOf("10.png")) << "old";
    const ImageCurlDownloader another;

    EXPECT_FALSE(fs::exists(folder()));
    EXPECT_TRUE(another.downloaded.empty());
}

TEST_F(ImageDownload, DestroyingADownloaderWipesItsImages)
{
    {
        ImageCurlDownloader another;
        another.startDownload(10, server.url("/milk.png").c_str(), openGate);
        EXPECT_EQ(files(), List{"10.png"});
    }

    EXPECT_FALSE(fs::exists(folder()));
}

TEST_F(ImageDownload, LibcurlStaysInitialisedAsLongAsThereIsADownloader)
{
    {
        const ImageCurlDownloader another;
        EXPECT_EQ(Calls::count("curl_global_init"), 1U);
        EXPECT_EQ(Calls::count("curl_global_cleanup"), 0U);
    }

    EXPECT_EQ(Calls::count("curl_global_cleanup"), 1U);
}
