// Product images: names, records, files on the disk, and what each failure leaves behind.
#include "ImageCurlDownloader.h"

#include <curl/curl.h>
#include <sys/stat.h>
#include <tzplatform_config.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <limits>
#include <ostream>
#include <sstream>

#include "ChildProcess.h"
#include "HttpServer.h"
#include "ObservedTest.h"

namespace fs = std::filesystem;
using TestSupport::Call;
using TestSupport::Calls;
using TestSupport::ChildProcess;
using Util::ImageCurlDownloader;

namespace {

using List = std::vector<std::string>;

const List kEnd = {"fflush", "fsync", "fclose", "sync", "curl_easy_cleanup"};

bool openGate(const std::function<void()>& step)
{
    step();
    return true;
}

bool closedGate(const std::function<void()>&)
{
    return false;
}

const std::string& folder()
{
    static const std::string path = tzplatform_mkpath(TZ_USER_CONTENT, "tmp");
    return path;
}

std::string fileOf(const std::string& name)
{
    return folder() + "/" + name;
}

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The names in the image directory, in byte order.
List files()
{
    List names;
    std::error_code none;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder(), none))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

class ImageDownload : public ObservedTest {
  protected:
    ImageDownload()
    {
        const auto picture = [this](const httplib::Request&, httplib::Response& response) {
            response.set_content(picture_, "image/png");
        };
        server.answer("/missing.png", 404, "no such picture");
        server.answer("/created.png", 201, "new");
        server.answer("/empty.png", 200, "");
        server.answer("/other.png", 200, "other");
        server.breakOff("/broken.png", "half of it");
        server.redirect("/moved.png", "/milk.png");
        server.redirect("/lost.png", "/missing.png");
        redirects();
        server.Get(".*", picture);
        server.start();
        Calls::reset();
    }

    bool start(int id, const std::string& path)
    {
        return downloader.startDownload(id, server.url(path).c_str(), openGate);
    }

    // What ended up on the disk for the path, and nothing else.
    List filesAfter(const std::string& path)
    {
        downloader.clearAllDownloadedImages();
        start(10, path);
        return files();
    }

    const std::string& picture() const { return picture_; }

    HttpServer server;
    ImageCurlDownloader downloader;

  private:
    // "/again/N.png" leads to N-1 and so on to the picture.
    void redirects()
    {
        server.Get(R"(/again/(\d+)\.png)",
                   [this](const httplib::Request& request, httplib::Response& response) {
                       const int left = std::stoi(request.matches[1]);
                       if (left == 0)
                           response.set_content(picture_, "image/png");
                       else
                           response.set_redirect("/again/" + std::to_string(left - 1) + ".png");
                   });
    }

    const std::string picture_ = std::string("\x89PNG\r\n\x1A\n\0\0", 10) + std::string(100'000, '\xA5');
};

struct Name {
    std::string path;
    std::string file;
};

void PrintTo(const Name& name, std::ostream* out)
{
    *out << name.path;
}

class ImageName : public ImageDownload, public testing::WithParamInterface<Name> {};

// A download, and what the probe said it asked of the shell and the file system.
List probe(const std::string& imageFolder)
{
    ChildProcess process({IMAGE_PROBE, imageFolder}, {{"IMAGE_FOLDER", imageFolder}});
    const TestSupport::ProcessEnd end = process.wait();
    EXPECT_EQ(end.status, 0) << process.errors();
    std::istringstream text(process.output());
    List lines;
    for (std::string line; std::getline(text, line);)
        if (line.rfind("asked: ", 0) == 0)
            lines.push_back(line.substr(7));
    return lines;
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

TEST_F(ImageDownload, AnAddressWithoutADotIsItselfTheExtensionAndCannotBeOpened)
{
    EXPECT_FALSE(start(10, "/milk"));
    EXPECT_EQ(Calls::of("fopen").at(0).arguments.at(0),
              (folder() + "/10." + server.url("/milk")).substr(0, 127));
    EXPECT_EQ(errorMessages(), List{"Failed to open file to image data write"});
    EXPECT_EQ(files(), List());
}

TEST_F(ImageDownload, AnEmptyAddressHasAnEmptyExtension)
{
    EXPECT_FALSE(downloader.startDownload(10, "", openGate));
    EXPECT_EQ(files(), List{"10."});
    EXPECT_EQ(errorMessages(), List{std::string("curl_easy_perform failed, result: ") +
                                    curl_easy_strerror(CURLE_URL_MALFORMAT)});
}

TEST_F(ImageDownload, ASlashBehindTheLastDotCannotBeOpened)
{
    EXPECT_FALSE(start(10, "/v1.2/milk"));
    EXPECT_EQ(Calls::of("fopen").at(0).arguments.at(0), fileOf("10.2/milk"));
    EXPECT_EQ(errorMessages(), List{"Failed to open file to image data write"});
    EXPECT_EQ(files(), List());
}

TEST_F(ImageDownload, NoAddressLeadsOutOfTheFolder)
{
    const fs::path parent = fs::path(folder()).parent_path();
    start(10, "/a.b");  // the file "10.b", which is no folder
    for (const std::string path : {"/x/../../../evil", "/x.b/../../evil", "/..", "/x./../evil"})
        start(10, path);

    for (const Call& call : Calls::of("fopen")) {
        EXPECT_EQ(call.arguments.at(0).rfind(folder() + "/10.", 0), 0U);
        EXPECT_EQ(call.arguments.at(0).find("/../"), std::string::npos);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(parent), fs::directory_iterator()), 1);
}

TEST_F(ImageDownload, ALongExtensionIsCutSoThatThePathHas127Bytes)
{
    const std::string extension(300, 'x');
    const std::string path = fileOf("10." + extension).substr(0, 127);

    EXPECT_TRUE(start(10, "/milk." + extension));
    EXPECT_EQ(downloader.downloaded[10], path);
    EXPECT_EQ(contentOf(path), picture());
    EXPECT_EQ(files().size(), 1U);
}

TEST_F(ImageDownload, ALongAddressOfAKnownKindHasAShortName)
{
    const std::string longPath = "/" + std::string(5000, 'x') + ".png";

    EXPECT_TRUE(start(10, longPath));
    EXPECT_EQ(files(), List{"10.png"});
}

TEST_P(ImageName, IsTheIdAndWhatTheAddressSuggests)
{
    EXPECT_EQ(filesAfter(GetParam().path), List{GetParam().file});
}

INSTANTIATE_TEST_SUITE_P(
    Extensions, ImageName,
    testing::Values(Name{"/milk.gif", "10.gif"}, Name{"/milk.png", "10.png"}, Name{"/milk.jpg", "10.jpg"},
                    Name{"/milk.jpeg", "10.jpg"}, Name{"/milk.JPEG", "10.jpg"}, Name{"/milk.JpG", "10.jpg"},
                    Name{"/milk.PNG", "10.png"}, Name{"/milk.GIF", "10.gif"}, Name{"/milk.webp", "10.webp"},
                    Name{"/milk.WEBP", "10.WEBP"}, Name{"/png/milk.jpg", "10.png"},
                    Name{"/jpg/milk.gif", "10.gif"}, Name{"/jpeg.png", "10.png"},
                    Name{"/gif/milk.png", "10.gif"}, Name{"/milk?format=PNG", "10.png"},
                    Name{"/milk.webp#jpeg", "10.jpg"}, Name{"/ungifted.webp", "10.gif"},
                    Name{"/milk.jpx", "10.jpx"}, Name{"/milk.jp2", "10.jp2"}, Name{"/milk.", "10."},
                    Name{"/milk.webp?size=3&x=y", "10.webp?size=3&x=y"}, Name{"/milk.tar.bz", "10.bz"},
                    Name{"/milk.a b", "10.a b"}, Name{"/milk.$(id)", "10.$(id)"}));

TEST(ImageFolder, AShortPlainOneIsGivenToTheShell)
{
    const List asked = probe("/nowhere/tmp");

    ASSERT_FALSE(asked.empty());
    EXPECT_EQ(asked.front(), "system rm -rf /nowhere/tmp");
    EXPECT_EQ(asked.back(), "system rm -rf /nowhere/tmp");
}

TEST(ImageFolder, OneThatAShellReadsAsSomethingElseIsNeverGivenToIt)
{
    for (const std::string path :
         {"/tmp/a b",  "/tmp/a;id",    "/tmp/$HOME", "/tmp/`id`", "/tmp/*",   "/tmp/a'b",
          "/tmp/a\"b", "/tmp/a\\b",    "/tmp/a\nb",  "/tmp/a|b",  "/tmp/a&b", "/tmp/~",
          "/tmp/#",    "/tmp/(a)",     "/tmp/?",     "/tmp/[a]",  "/tmp/{a}", "/tmp/<a",
          "/tmp/!",    "relative/tmp", "-rf",        "/",         ""}) {
        for (const std::string& line : probe(path))
            EXPECT_EQ(line.find("system"), std::string::npos) << path << ": " << line;
    }
}

TEST(ImageFolder, OneWhoseCommandWouldBeCutIsNeverGivenToAShell)
{
    const std::string longest = "/" + std::string(127 - 7 - 1, 'x');

    EXPECT_EQ(probe(longest).front(), "system rm -rf " + longest);
    for (const std::string& line : probe(longest + "x"))
        EXPECT_EQ(line.find("system"), std::string::npos) << line;
}

TEST(ImageFolder, OneThatLeavesNoRoomForANameIsNeverWrittenTo)
{
    for (const size_t size : {126U, 127U, 128U, 300U})
        for (const std::string& line : probe("/" + std::string(size - 1, 'x')))
            EXPECT_EQ(line.find("fopen"), std::string::npos) << size << ": " << line;
}

TEST(ImageFolder, OneThatLeavesRoomForOneByteIsStillNotLeft)
{
    const std::string path = "/" + std::string(124, 'x');

    List opened;
    for (const std::string& line : probe(path))
        if (line.rfind("fopen ", 0) == 0)
            opened.push_back(line.substr(6));
    EXPECT_EQ(opened, List{path + "/1"});
}
