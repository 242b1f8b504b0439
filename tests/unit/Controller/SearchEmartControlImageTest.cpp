// Which pictures are fetched, in what order, and what becomes of those that cannot be had.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "ImageCurlDownloader.h"
#include "Items.h"
#include "SearchEmartControlFixture.h"
#include "Singleton.h"
#include "SiteValues.h"
#include "ThreadStartFault.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

using Util::DownloadImageType;

std::string iconPath(int badge)
{
    return RetailerServer::iconPath(badge);
}

class SearchEmartControlImageTest : public SearchEmartControlFixture {
  protected:
    /** Searches, confirms, and waits until so many pictures have come and no more are to come. */
    void fetch(size_t count)
    {
        search();
        confirm();
        ASSERT_TRUE(waitForImages(count));
    }

    static Util::ImageCurlDownloader* downloader()
    {
        return Util::Singleton<Util::ImageCurlDownloader>::getInstance();
    }
};

}  // namespace

TEST_F(SearchEmartControlImageTest, EachPictureComesBeforeItsIconAndEachProductBeforeTheNext)
{
    addIcon(90, "badge");
    answerWith({Items::pictured("a", addPicture("/a.png", "zero"), 90),
                Items::pictured("b", addPicture("/b.png", "one")),
                Items::pictured("c", addPicture("/c.png", "two"))});
    fetch(4);
    EXPECT_EQ(fetched(), (Texts{"/a.png", iconPath(90), "/b.png", "/c.png"}));
    const std::vector<SentMessage> images = sentImages();
    EXPECT_EQ(placesOf(images), (Texts{"0/0", "0/2", "1/0", "2/0"}));
    const std::vector<std::pair<std::string, std::string>> files = {
        {"10.png", "zero"}, {"12.png", "badge"}, {"20.png", "one"}, {"30.png", "two"}};
    for (size_t i = 0; i < files.size(); ++i) {
        EXPECT_EQ(images[i].text("key_product_image_path"), imageFile(files[i].first));
        EXPECT_EQ(readFile(imageFile(files[i].first)), files[i].second);
    }
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(SearchEmartControlImageTest, SixProductsHaveTwelvePicturesAtMost)
{
    const std::vector<int> badges = {90, 91, 100, 110, 120, 130, 270};
    Texts items;
    Texts expected;
    for (size_t i = 0; i < badges.size(); ++i) {
        const std::string path = "/" + std::to_string(i) + ".jpg";
        addIcon(badges[i], std::to_string(badges[i]));
        items.push_back(Items::pictured("product", addPicture(path, path), badges[i]));
        if (i < 6) {
            expected.push_back(path);
            expected.push_back(iconPath(badges[i]));
        }
    }
    answerWith(items);
    fetch(12);
    EXPECT_EQ(fetched(), expected);
    EXPECT_EQ(placesOf(sentImages()),
              (Texts{"0/0", "0/2", "1/0", "1/2", "2/0", "2/2", "3/0", "3/2", "4/0", "4/2", "5/0", "5/2"}));
    EXPECT_EQ(readFile(imageFile("60.jpg")), "/5.jpg");
    EXPECT_EQ(readFile(imageFile("62.png")), "130");
}

TEST_F(SearchEmartControlImageTest, AnIconIsFetchedFromItsOwnHost)
{
    addIcon(270, "badge");
    answerWith({Items::pictured("a", addPicture("/a.png", "zero"), 270)});
    fetch(2);
    const std::vector<ServerRequest> requests = retailer_.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_NE(requests[1].head.find("\r\nHost: " CARVOY_RETAILER_API_HOST "\r\n"), std::string::npos);
    EXPECT_NE(requests[2].head.find("\r\nHost: " CARVOY_RETAILER_ICON_HOST "\r\n"), std::string::npos);
    EXPECT_EQ(requests[2].target, "/ui/app/6001/icon/270.png");
    EXPECT_EQ(requests[2].head.rfind("GET ", 0), 0u);
}

TEST_F(SearchEmartControlImageTest, AProductWithoutAPictureHasItsIconAllTheSame)
{
    addIcon(91, "badge");
    answerWith({R"({"benefitGrp2": [{"type": "91"}]})", "{}", "null",
                Items::pictured("d", addPicture("/d.png", "three"))});
    fetch(2);
    EXPECT_EQ(fetched(), (Texts{iconPath(91), "/d.png"}));
    EXPECT_EQ(placesOf(sentImages()), (Texts{"0/2", "3/0"}));
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(SearchEmartControlImageTest, APictureIsOnTheDiskBeforeItIsSent)
{
    answerWith({Items::pictured("a", addPicture("/a.png", "picture"))});
    fetch(1);
    Texts order = Calls::order({"fsync", "sync", "app_control_send_launch_request"});
    // The result message may go out at any time before the picture's.
    order.erase(std::find(order.begin(), order.end(), "app_control_send_launch_request"));
    EXPECT_EQ(order, (Texts{"fsync", "sync", "app_control_send_launch_request"}));
}

TEST_F(SearchEmartControlImageTest, APictureThatFailsIsLoggedLeftOutAndNotTriedAgain)
{
    retailer_.answer("/b.png", 404, "no such picture");
    retailer_.answer(iconPath(90), 500, "");
    answerWith({Items::pictured("a", addPicture("/a.png", "zero"), 90), Items::pictured("b", url("/b.png")),
                Items::pictured("c", addPicture("/c.png", "two"))});
    fetch(2);
    EXPECT_EQ(placesOf(sentImages()), (Texts{"0/0", "2/0"}));
    EXPECT_EQ(fetched(), (Texts{"/a.png", iconPath(90), "/b.png", "/c.png"}));
    EXPECT_EQ(loggedErrors(), (Texts{"startDownload: download failed, result: 0HTTP response: 500",
                                     "startDownloadImages: Failed to startDownload for index 0, type: 2",
                                     "startDownload: download failed, result: 0HTTP response: 404",
                                     "startDownloadImages: Failed to startDownload for index 1, type: 0"}));
}

TEST_F(SearchEmartControlImageTest, APictureThatBreaksOffIsLeftOut)
{
    retailer_.handle("/a.png", [](const ServerRequest&, ServerConnection& connection) {
        connection.answerHead(200, 1000);
        connection.send("half");
    });
    answerWith({Items::pictured("a", url("/a.png")), Items::pictured("b", addPicture("/b.png", "one"))});
    fetch(1);
    EXPECT_EQ(placesOf(sentImages()), Texts{"1/0"});
    EXPECT_EQ(loggedErrors(),
              (Texts{"startDownload: curl_easy_perform failed, result: Transferred a partial file",
                     "startDownloadImages: Failed to startDownload for index 0, type: 0"}));
}

TEST_F(SearchEmartControlImageTest, AnAddressThatCannotBeFetchedIsLeftOut)
{
    answerWith(
        {Items::pictured("a", "no such scheme://x"), Items::pictured("b", addPicture("/b.png", "one"))});
    fetch(1);
    EXPECT_EQ(placesOf(sentImages()), Texts{"1/0"});
    ASSERT_EQ(loggedErrors().size(), 2u);
    EXPECT_EQ(loggedErrors()[1], "startDownloadImages: Failed to startDownload for index 0, type: 0");
}

TEST_F(SearchEmartControlImageTest, AFileThatCannotBeOpenedIsLeftOut)
{
    answerWith({Items::pictured("a", addPicture("/a.png", "zero")),
                Items::pictured("b", addPicture("/b.png", "one"))});
    Calls::fail("fopen", EACCES);
    fetch(1);
    EXPECT_EQ(placesOf(sentImages()), Texts{"1/0"});
    EXPECT_EQ(loggedErrors(), (Texts{"startDownload: Failed to open file to image data write",
                                     "startDownloadImages: Failed to startDownload for index 0, type: 0"}));
    EXPECT_EQ(fetched(), Texts{"/b.png"});
}

TEST_F(SearchEmartControlImageTest, AnIdThatCannotBeUsedIsLoggedAndThePictureLeftOut)
{
    addIcon(90, "badge");
    answerWith({Items::pictured("a", addPicture("/a.png", "zero"), 90),
                Items::pictured("b", addPicture("/b.png", "one"))});
    Calls::fail("initDownload", 0, 1);
    Calls::fail("initDownload", -12, 2);
    fetch(1);
    EXPECT_EQ(placesOf(sentImages()), Texts{"1/0"});
    EXPECT_EQ(fetched(), Texts{"/b.png"});
    EXPECT_EQ(loggedErrors(), (Texts{"startDownloadImages: download_id is not used: 0",
                                     "startDownloadImages: download_id is not used: -12"}));
}

TEST_F(SearchEmartControlImageTest, IdsAreMadeOfThePositionFromOneAndTheType)
{
    addIcon(90, "badge");
    answerWith({Items::pictured("a", addPicture("/a.png", "zero"), 90), "{}",
                Items::pictured("c", addPicture("/c.png", "two"))});
    fetch(3);
    Texts ids;
    for (const TestSupport::Call& call : Calls::of("initDownload"))
        ids.push_back(call.arguments[0] + " " + call.arguments[1]);
    EXPECT_EQ(ids, (Texts{"1 0", "1 2", "3 0"}));
}

TEST_F(SearchEmartControlImageTest, APictureOfNoKnownTypeIsLoggedAndNotFetched)
{
    answerWith({Items::pictured("a", addPicture("/a.png", "zero"), 90)});
    search_->searchTerm = "milk";
    ASSERT_EQ(search_->parseResult(search_->searchProduct()), 0);
    Calls::reset();
    for (int type : {1, 3, -1})
        search_->startDownloadImages(downloader(), 0, static_cast<DownloadImageType>(type));
    EXPECT_EQ(logged(), Texts(3, "startDownloadImages: Not define DownloadImageType"));
    EXPECT_EQ(loggedErrors().size(), 3u);
    EXPECT_EQ(Calls::count("initDownload"), 0u);
    EXPECT_EQ(fetched(), Texts());
}

TEST_F(SearchEmartControlImageTest, APositionWithoutAProductHasNoPicture)
{
    answerWith({Items::pictured("a", addPicture("/a.png", "zero"), 90)});
    search_->searchTerm = "milk";
    ASSERT_EQ(search_->parseResult(search_->searchProduct()), 0);
    Calls::reset();
    for (int index : {-1, 1, 6, 1'000'000}) {
        search_->startDownloadImages(downloader(), index, DownloadImageType::PRODUCT_IMAGE);
        search_->startDownloadImages(downloader(), index, DownloadImageType::DISCOUNT_ICON_IMAGE);
    }
    EXPECT_EQ(logged(), Texts());
    EXPECT_EQ(Calls::count("initDownload"), 0u);
}

TEST_F(SearchEmartControlImageTest, OnePictureIsFetchedOnTheThreadOfTheCallerAndItsRecordForgotten)
{
    answerWith({Items::pictured("a", addPicture("/a.png", "zero"))});
    search_->searchTerm = "milk";
    ASSERT_EQ(search_->parseResult(search_->searchProduct()), 0);
    search_->startDownloadImages(downloader(), 0, DownloadImageType::PRODUCT_IMAGE);
    EXPECT_EQ(readFile(imageFile("10.png")), "zero");
    EXPECT_TRUE(downloader()->downloaded.empty());
    EXPECT_EQ(sent().size(), 0u);
    confirm();
    EXPECT_EQ(placesOf(sentImages()), Texts{"0/0"});
    // It is there: nobody fetches it again.
    search_->startDownloadImages(downloader(), 0, DownloadImageType::PRODUCT_IMAGE);
    EXPECT_EQ(fetched(), Texts{"/a.png"});
}

TEST_F(SearchEmartControlImageTest, WithoutProductsNoThreadIsStarted)
{
    const ThreadStartFault fault;
    search_->downloadImages();
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(SearchEmartControlImageTest, WithoutAThreadTheProductsAreThereAllTheSame)
{
    answerWith({Items::pictured("Milk", addPicture("/a.png", "zero"))});
    {
        const ThreadStartFault fault;
        search();
    }
    ASSERT_EQ(loggedErrors().size(), 1u);
    EXPECT_EQ(loggedErrors()[0].rfind("downloadImages: Failed to start the download thread: ", 0), 0u);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 1, {}, {}}));
    EXPECT_EQ(result().list("key_product_names"), Texts{"Milk"});
    EXPECT_EQ(fetched(), Texts());
}

TEST_F(SearchEmartControlImageTest, NoPictureIsFetchedAfterAFailedSearch)
{
    for (int status : {401, 403, 500}) {
        retailer_.answerSearch(status,
                               Items::answer({Items::pictured("a", addPicture("/a.png", "zero"), 90)}));
        search_->processEmartSearch("milk");
    }
    search_.reset();
    EXPECT_EQ(Calls::count("fopen"), 0u);
    EXPECT_EQ(fetched(), Texts());
}

TEST_F(SearchEmartControlImageTest, TheRecordsOfPicturesAreForgottenOnceTheyAreQueued)
{
    addIcon(90, "badge");
    answerWith({Items::pictured("a", addPicture("/a.png", "zero"), 90)});
    fetch(2);
    search_.reset();
    EXPECT_TRUE(downloader()->downloaded.empty());
}

TEST_F(SearchEmartControlImageTest, AFileStaysUntilTheNextSearch)
{
    answerWith({Items::pictured("a", addPicture("/a.png", "zero"))});
    fetch(1);
    confirm();
    EXPECT_EQ(readFile(imageFile("10.png")), "zero");
    retailer_.answerSearch(500, "");
    search_->processEmartSearch("milk");
    EXPECT_FALSE(std::filesystem::exists(imageFile("")));
}

}  // namespace Carvoy
