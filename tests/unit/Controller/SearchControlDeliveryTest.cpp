// What the UI app is told, and when.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "ImageCurlDownloader.h"
#include "LockStep.h"
#include "Products.h"
#include "SearchControlFixture.h"
#include "Singleton.h"
#include "ThreadStartFault.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

class SearchControlDeliveryTest : public SearchControlFixture {
  protected:
    /** A search whose pictures are all there but for the last, which the merchant holds until release(). */
    void searchWithLastPictureHeld(const Texts& contents)
    {
        Texts urls;
        for (size_t i = 0; i + 1 < contents.size(); ++i)
            urls.push_back(addPicture("/" + std::to_string(i) + ".png", contents[i]));
        urls.push_back(addHeldPicture("/held.png", contents.back(), reached_, release_));
        answerWithPictures(urls);
        ASSERT_EQ(search_->processSearch("freshmart", "milk"), 0);
        // The pictures before the held one are done with when that one is asked for.
        ASSERT_TRUE(reached_->wait());
    }

    void search() { ASSERT_EQ(search_->processSearch("freshmart", "milk"), 0); }

    std::shared_ptr<Latch> reached_ = newLatch();
    std::shared_ptr<Latch> release_ = newLatch();
};

Texts indices(const std::vector<SentMessage>& images)
{
    Texts texts;
    for (const SentMessage& image : images)
        texts.push_back(image.text("key_product_image_num"));
    return texts;
}

}  // namespace

TEST_F(SearchControlDeliveryTest, TheResultMessageHoldsTheListsOfTheLastSearch)
{
    merchant_.answerSearch(
        200, Products::answer(
                 {R"({"name": "Milk", "productOptionGroups": [{"productOptions": [{"label": "1 gal"}]}],
                                   "mbVariants": [{"amountMinorUnits": 750, "formerPriceAmountMinorUnits": 1000,
                                                   "productVariantRef": "ref"}]})",
                  R"({"name": "Oat Milk"})"}));
    search();
    const SentMessage message = result();

    EXPECT_EQ(message.appId, "org.tizen.carvoy");
    EXPECT_EQ(message.operation, "http://carvoy-service/appcontrol/operation/result");
    EXPECT_EQ(message.uri, "");
    EXPECT_NE(message.callback, nullptr);
    EXPECT_EQ(message.userData, search_.get());
    EXPECT_EQ(message.keys,
              (Texts{"key_merchant", "key_search_by", "key_search_term", "key_total_num_of_products",
                     "key_product_discount_percents", "key_product_names", "key_product_prices",
                     "key_product_prices_before_discount", "key_product_size_or_weights",
                     "key_product_variant_refs"}));
    EXPECT_EQ(message.text("key_merchant"), "freshmart");
    EXPECT_EQ(message.text("key_search_term"), "milk");
    EXPECT_EQ(message.text("key_search_by"), "full");
    EXPECT_EQ(message.text("key_total_num_of_products"), "2");
    EXPECT_EQ(message.list("key_product_names"), (Texts{"Milk", "Oat Milk"}));
    EXPECT_EQ(message.list("key_product_size_or_weights"), (Texts{"1 gal", ""}));
    EXPECT_EQ(message.list("key_product_discount_percents"), (Texts{"Save 25%", ""}));
    EXPECT_EQ(message.list("key_product_prices_before_discount"), (Texts{"$10.0", ""}));
    EXPECT_EQ(message.list("key_product_prices"), (Texts{"$7.50", ""}));
    EXPECT_EQ(message.list("key_product_variant_refs"), (Texts{"ref", ""}));
}

// What is empty does not travel.
TEST_F(SearchControlDeliveryTest, BeforeAnySearchTheResultIsEmpty)
{
    const SentMessage message = result();
    EXPECT_EQ(message.keys, Texts{"key_total_num_of_products"});
    EXPECT_EQ(message.text("key_total_num_of_products"), "0");
    EXPECT_EQ(logged(), Texts{"sendResultToUI: "});
}

TEST_F(SearchControlDeliveryTest, AfterAFailedSearchTheResultHasNoProducts)
{
    merchant_.answerSearch(503, "");
    ASSERT_EQ(search_->processSearch("freshmart", "milk"), 3);
    const SentMessage message = result();
    EXPECT_EQ(message.keys,
              (Texts{"key_merchant", "key_search_by", "key_search_term", "key_total_num_of_products"}));
    EXPECT_EQ(message.text("key_search_term"), "milk");
    EXPECT_EQ(message.text("key_total_num_of_products"), "0");
}

TEST_F(SearchControlDeliveryTest, TheResultCanBeAskedForAgain)
{
    merchant_.answerSearch(200, Products::answer({R"({"name": "Milk"})"}));
    search();
    const SentMessage first = result();
    const SentMessage second = result();
    EXPECT_EQ(second.keys, first.keys);
    EXPECT_EQ(second.list("key_product_names"), Texts{"Milk"});
}

TEST_F(SearchControlDeliveryTest, TheAnswerToAnOlderQuestionIsGoneFromTheNextMessage)
{
    merchant_.answerSearch(200, Products::answer({R"({"name": "Milk"})"}));
    search();
    EXPECT_EQ(result().lists.size(), 6u);
    merchant_.answerSearch(500, "");
    EXPECT_EQ(search_->processSearch("freshmart", "tea"), 3);
    EXPECT_EQ(result().lists.size(), 0u);
}

TEST_F(SearchControlDeliveryTest, PicturesWaitForTheUiAppAndLeaveInProductOrder)
{
    searchWithLastPictureHeld({"zero", "one", "two", "three"});
    EXPECT_EQ(sent().size(), 0u);

    confirm();
    const std::vector<SentMessage> images = sentImages();
    ASSERT_EQ(indices(images), (Texts{"0", "1", "2"}));
    const Texts contents = {"zero", "one", "two"};
    for (size_t i = 0; i < images.size(); ++i) {
        EXPECT_EQ(images[i].text("key_product_image_path"), imageFile(std::to_string(i + 1) + ".png"));
        EXPECT_EQ(readFile(images[i].text("key_product_image_path")), contents[i]);
    }

    release_->open();
    EXPECT_TRUE(waitForImages(4));
    EXPECT_EQ(indices(sentImages()), (Texts{"0", "1", "2", "3"}));
}

// The download thread may find the UI app ready before the main loop has sent what waits.
TEST_F(SearchControlDeliveryTest, APictureThatEndsWhileTheOthersAreBeingSentLeavesBehindThem)
{
    searchWithLastPictureHeld({"zero", "one", "two"});
    const SentMessage message = result();
    bool hasComeBetween = false;
    {
        // The main loop marks the UI app as ready, and locks again to send.
        const LockStep step(2, [&] {
            release_->open();
            hasComeBetween = waitForImages(3);
        });
        message.callback(nullptr, nullptr, APP_CONTROL_RESULT_SUCCEEDED, message.userData);
    }
    EXPECT_TRUE(hasComeBetween);
    EXPECT_EQ(indices(sentImages()), (Texts{"0", "1", "2"}));
}

TEST_F(SearchControlDeliveryTest, AnImageMessageHoldsIndexAndPathAndWantsNoReply)
{
    answerWithPictures({addPicture("/milk.png", "milk")});
    search();
    confirm();
    ASSERT_TRUE(waitForImages(1));
    const SentMessage image = sentImages().at(0);
    EXPECT_EQ(image.appId, "org.tizen.carvoy");
    EXPECT_EQ(image.operation, "http://carvoy-service/appcontrol/operation/product_image");
    EXPECT_EQ(image.uri, "");
    EXPECT_EQ(image.keys, (Texts{"key_product_image_num", "key_product_image_path"}));
    EXPECT_EQ(image.callback, nullptr);
    EXPECT_EQ(image.lists.size(), 0u);
}

TEST_F(SearchControlDeliveryTest, APictureIsSentAtOnceWhenTheUiAppIsReady)
{
    const auto firstReached = newLatch();
    const auto firstRelease = newLatch();
    answerWithPictures({addHeldPicture("/a.png", "first", firstReached, firstRelease),
                        addHeldPicture("/b.png", "second", reached_, release_)});
    search();
    confirm();
    EXPECT_EQ(sentImages().size(), 0u);

    firstRelease->open();
    ASSERT_TRUE(waitForImages(1));
    EXPECT_EQ(readFile(imageFile("1.png")), "first");
    ASSERT_TRUE(reached_->wait());
    EXPECT_EQ(indices(sentImages()), Texts{"0"});

    release_->open();
    ASSERT_TRUE(waitForImages(2));
    EXPECT_EQ(readFile(imageFile("2.png")), "second");
    EXPECT_EQ(indices(sentImages()), (Texts{"0", "1"}));
}

TEST_F(SearchControlDeliveryTest, APictureIsOnTheDiskBeforeItIsSent)
{
    answerWithPictures({addPicture("/a.png", "picture")});
    search();
    confirm();
    ASSERT_TRUE(waitForImages(1));
    const Texts order = Calls::order({"fsync", "sync", "app_control_send_launch_request"});
    // The result message may go out at any time before the picture's.
    Texts ofPicture(order);
    ofPicture.erase(std::find(ofPicture.begin(), ofPicture.end(), "app_control_send_launch_request"));
    EXPECT_EQ(ofPicture, (Texts{"fsync", "sync", "app_control_send_launch_request"}));
}

TEST_F(SearchControlDeliveryTest, ARefusalOfTheUiAppKeepsThePictures)
{
    searchWithLastPictureHeld({"zero", "one", "two"});
    const SentMessage message = result();
    for (app_control_result_e refusal :
         {APP_CONTROL_RESULT_FAILED, APP_CONTROL_RESULT_CANCELED, APP_CONTROL_RESULT_APP_STARTED}) {
        message.answer(refusal);
        EXPECT_EQ(loggedErrors().back(), "operator(): Invalid app control response");
    }
    EXPECT_EQ(loggedErrors().size(), 3u);
    EXPECT_EQ(sentImages().size(), 0u);

    confirm();
    EXPECT_EQ(indices(sentImages()), (Texts{"0", "1"}));
}

TEST_F(SearchControlDeliveryTest, ARefusalBehindAConfirmationTakesNothingBack)
{
    searchWithLastPictureHeld({"zero", "one"});
    const SentMessage message = result();
    message.answer(APP_CONTROL_RESULT_SUCCEEDED);
    message.answer(APP_CONTROL_RESULT_FAILED);
    release_->open();
    EXPECT_TRUE(waitForImages(2));
}

TEST_F(SearchControlDeliveryTest, ASecondConfirmationSendsNoPictureAgain)
{
    searchWithLastPictureHeld({"zero", "one"});
    confirm();
    confirm();
    release_->open();
    EXPECT_TRUE(waitForImages(2));
    EXPECT_EQ(indices(sentImages()), (Texts{"0", "1"}));
}

TEST_F(SearchControlDeliveryTest, AConfirmationWithoutPicturesSendsNothing)
{
    confirm();
    EXPECT_EQ(sentImages().size(), 0u);
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(SearchControlDeliveryTest, APictureThatFailsIsLoggedAndLeftOut)
{
    merchant_.answer("/1.png", 404, "no such picture");
    answerWithPictures(
        {addPicture("/0.png", "zero"), MerchantServer::url("/1.png"), addPicture("/2.png", "two")});
    search();
    confirm();
    ASSERT_TRUE(waitForImages(2));
    EXPECT_EQ(indices(sentImages()), (Texts{"0", "2"}));
    EXPECT_EQ(loggedErrors(), (Texts{"startDownload: download failed, result: 0HTTP response: 404",
                                     "operator(): Failed to startDownload for index 1"}));
    EXPECT_EQ(readFile(imageFile("2.png")), "no such picture");
}

TEST_F(SearchControlDeliveryTest, APictureThatBreaksOffIsLeftOut)
{
    merchant_.handle("/0.png", [](const MerchantRequest&, MerchantConnection& connection) {
        connection.answerHead(200, 1000);
        connection.send("half");
    });
    answerWithPictures({MerchantServer::url("/0.png"), addPicture("/1.png", "one")});
    search();
    confirm();
    ASSERT_TRUE(waitForImages(1));
    EXPECT_EQ(indices(sentImages()), Texts{"1"});
    EXPECT_EQ(loggedErrors(),
              (Texts{"startDownload: curl_easy_perform failed, result: Transferred a partial file",
                     "operator(): Failed to startDownload for index 0"}));
}

TEST_F(SearchControlDeliveryTest, AFileThatCannotBeOpenedIsLeftOut)
{
    answerWithPictures({addPicture("/0.png", "zero"), addPicture("/1.png", "one")});
    Calls::fail("fopen", EACCES);
    search();
    confirm();
    ASSERT_TRUE(waitForImages(1));
    EXPECT_EQ(indices(sentImages()), Texts{"1"});
    EXPECT_EQ(loggedErrors(), (Texts{"startDownload: Failed to open file to image data write",
                                     "operator(): Failed to startDownload for index 0"}));
    EXPECT_EQ(merchant_.countOf("/0.png"), 0);
}

TEST_F(SearchControlDeliveryTest, PicturesAreFetchedInOrderAndSixAtMost)
{
    Texts urls;
    Texts expected = {MerchantServer::SEARCH_PATH};
    for (int i = 0; i < 8; ++i) {
        const std::string path = "/" + std::to_string(i) + ".png";
        urls.push_back(addPicture(path, path));
        if (i < 6)
            expected.push_back(path);
    }
    answerWithPictures(urls);
    search();
    confirm();
    ASSERT_TRUE(waitForImages(6));
    EXPECT_EQ(indices(sentImages()), (Texts{"0", "1", "2", "3", "4", "5"}));
    Texts paths;
    for (const MerchantRequest& request : merchant_.requests())
        paths.push_back(request.path);
    EXPECT_EQ(paths, expected);
}

TEST_F(SearchControlDeliveryTest, NoPictureIsFetchedAfterABadAnswer)
{
    merchant_.answerSearch(200, "{\"products\": []}");
    EXPECT_EQ(search_->processSearch("freshmart", "milk"), 1);
    search_.reset();
    EXPECT_EQ(Calls::count("fopen"), 0u);
}

TEST_F(SearchControlDeliveryTest, WithoutAThreadTheProductsAreThereAllTheSame)
{
    answerWithPictures({addPicture("/0.png", "zero")});
    {
        const ThreadStartFault fault;
        search();
    }
    EXPECT_EQ(loggedErrors().size(), 1u);
    EXPECT_EQ(loggedErrors()[0].rfind("downloadImages: Failed to start the download thread: ", 0), 0u);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 1, {}, {}}));
    EXPECT_EQ(result().list("key_product_names"), Texts{"product 0"});
    EXPECT_EQ(merchant_.countOf("/0.png"), 0);
}

TEST_F(SearchControlDeliveryTest, TheRecordOfAPictureIsForgottenOnceItIsQueued)
{
    answerWithPictures({addPicture("/0.png", "zero"), addPicture("/1.png", "one")});
    search();
    confirm();
    ASSERT_TRUE(waitForImages(2));
    search_.reset();
    EXPECT_TRUE(Util::Singleton<Util::ImageCurlDownloader>::getInstance()->downloaded.empty());
}

TEST_F(SearchControlDeliveryTest, TheEndOfTheControllerRemovesThePictures)
{
    searchWithLastPictureHeld({"zero", "one"});
    EXPECT_TRUE(std::filesystem::exists(imageFile("1.png")));
    release_->open();
    search_.reset();
    EXPECT_FALSE(std::filesystem::exists(imageFile("")));
}

}  // namespace Carvoy
