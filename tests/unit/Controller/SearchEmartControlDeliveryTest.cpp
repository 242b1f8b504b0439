// The result message, the confirmation of the UI app, and the pictures that wait for it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "Items.h"
#include "LockStep.h"
#include "SearchEmartControlFixture.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

class SearchEmartControlDeliveryTest : public SearchEmartControlFixture {
  protected:
    /** A search whose pictures are all there but for the last, which the retailer holds until release(). */
    void searchWithLastPictureHeld(const Texts& contents)
    {
        Texts items;
        for (size_t i = 0; i + 1 < contents.size(); ++i)
            items.push_back(
                Items::pictured("product", addPicture("/" + std::to_string(i) + ".png", contents[i])));
        items.push_back(
            Items::pictured("product", addHeldPicture("/held.png", contents.back(), reached_, release_)));
        answerWith(items);
        search();
        // The pictures before the held one are done with when that one is asked for.
        ASSERT_TRUE(reached_->wait());
    }

    std::shared_ptr<Latch> reached_ = newLatch();
    std::shared_ptr<Latch> release_ = newLatch();
};

}  // namespace

TEST_F(SearchEmartControlDeliveryTest, TheResultMessageHoldsTheListsOfTheLastSearch)
{
    answerWith({R"({"itemNm": "우유 1L", "displayPrc": "12900", "itemId": "1000024500411",
                    "benefitGrp1": [{"type": "11", "txt": "1,000원 할인"}], "benefitGrp2": [{"type": "92"}]})",
                R"({"itemNm": "치즈", "displayPrc": "990", "itemId": "2",
                    "benefitGrp1": [{"type": "20", "txt": "x"}]})"});
    search("우유 & \"치즈\"");
    const SentMessage message = result();
    EXPECT_EQ(message.appId, "org.tizen.carvoy");
    EXPECT_EQ(message.operation, "http://carvoy-service/appcontrol/operation/result");
    EXPECT_EQ(message.uri, "");
    EXPECT_NE(message.callback, nullptr);
    Texts keys = message.keys;
    std::sort(keys.begin(), keys.end());
    EXPECT_EQ(keys, (Texts{"key_product_discount_txt", "key_product_discount_type", "key_product_ids",
                           "key_product_names", "key_product_prices", "key_product_prices_before_discount",
                           "key_search_term", "key_total_num_of_products"}));
    EXPECT_EQ(message.extras.size(), 2u);
    EXPECT_EQ(message.text("key_search_term"), "우유 & \"치즈\"");
    EXPECT_EQ(message.text("key_total_num_of_products"), "2");
    EXPECT_EQ(message.list("key_product_names"), (Texts{"우유 1L", "치즈"}));
    EXPECT_EQ(message.list("key_product_prices"), (Texts{"12,900원", "990원"}));
    EXPECT_EQ(message.list("key_product_prices_before_discount"), (Texts{"", ""}));
    EXPECT_EQ(message.list("key_product_discount_type"), (Texts{"11", ""}));
    EXPECT_EQ(message.list("key_product_discount_txt"), (Texts{"1,000원 할인", ""}));
    EXPECT_EQ(message.list("key_product_ids"), (Texts{"1000024500411", "2"}));
    EXPECT_EQ(logged().back(), "sendEmartResultToUI: ");
}

// What is empty does not travel.
TEST_F(SearchEmartControlDeliveryTest, BeforeAnySearchTheResultIsEmpty)
{
    const SentMessage message = result();
    EXPECT_EQ(message.keys, Texts{"key_total_num_of_products"});
    EXPECT_EQ(message.text("key_total_num_of_products"), "0");
    EXPECT_EQ(logged(), Texts{"sendEmartResultToUI: "});
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(SearchEmartControlDeliveryTest, AfterAFailedSearchTheResultHasNoProducts)
{
    retailer_.answerSearch(200, R"({"data": {"itemList": []}})");
    EXPECT_EQ(search_->processEmartSearch("milk"), BAD_ANSWER);
    const SentMessage message = result();
    EXPECT_EQ(message.keys, (Texts{"key_search_term", "key_total_num_of_products"}));
    EXPECT_EQ(message.text("key_search_term"), "milk");
    EXPECT_EQ(message.text("key_total_num_of_products"), "0");
}

TEST_F(SearchEmartControlDeliveryTest, ANegativeCountIsNotSent)
{
    for (int count : {-1, -100}) {
        search_->productCount = count;
        EXPECT_EQ(search_->sendEmartResultToUI(), 1);
    }
    EXPECT_EQ(sent().size(), 0u);
    EXPECT_EQ(logged(), Texts(2, "sendEmartResultToUI: "));
    search_->productCount = 0;
}

TEST_F(SearchEmartControlDeliveryTest, TheResultIsOnlySentWhenItIsAskedFor)
{
    searchWithLastPictureHeld({"zero", "one"});
    EXPECT_EQ(sent().size(), 0u);
}

TEST_F(SearchEmartControlDeliveryTest, TheResultCanBeAskedForAgain)
{
    answerWith({R"({"itemNm": "Milk"})"});
    search();
    const SentMessage first = result();
    const SentMessage second = result();
    EXPECT_EQ(second.keys, first.keys);
    EXPECT_EQ(second.list("key_product_names"), Texts{"Milk"});
}

TEST_F(SearchEmartControlDeliveryTest, TheAnswerToAnOlderQuestionIsGoneFromTheNextMessage)
{
    answerWith({R"({"itemNm": "Milk"})"});
    search();
    EXPECT_EQ(result().lists.size(), 6u);
    writeFile(loginFile(), "logout\n");
    EXPECT_EQ(search_->processEmartSearch("tea"), NOT_LOGGED_IN);
    const SentMessage message = result();
    EXPECT_EQ(message.lists.size(), 0u);
    EXPECT_EQ(message.keys, Texts{"key_total_num_of_products"});
}

TEST_F(SearchEmartControlDeliveryTest, PicturesWaitForTheUiAppAndLeaveInOrder)
{
    searchWithLastPictureHeld({"zero", "one", "two", "three"});
    EXPECT_EQ(sent().size(), 0u);

    confirm();
    const std::vector<SentMessage> images = sentImages();
    ASSERT_EQ(placesOf(images), (Texts{"0/0", "1/0", "2/0"}));
    const Texts contents = {"zero", "one", "two"};
    for (size_t i = 0; i < images.size(); ++i) {
        const std::string path = images[i].text("key_product_image_path");
        EXPECT_EQ(path, imageFile(std::to_string(i + 1) + "0.png"));
        EXPECT_EQ(readFile(path), contents[i]);
    }

    release_->open();
    EXPECT_TRUE(waitForImages(4));
    EXPECT_EQ(placesOf(sentImages()), (Texts{"0/0", "1/0", "2/0", "3/0"}));
}

// The download thread may find the UI app ready before the main loop has sent what waits.
TEST_F(SearchEmartControlDeliveryTest, APictureThatEndsWhileTheOthersAreBeingSentLeavesBehindThem)
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
    EXPECT_EQ(placesOf(sentImages()), (Texts{"0/0", "1/0", "2/0"}));
}

TEST_F(SearchEmartControlDeliveryTest, APictureIsSentAtOnceWhenTheUiAppIsReady)
{
    const auto firstReached = newLatch();
    const auto firstRelease = newLatch();
    answerWith({Items::pictured("a", addHeldPicture("/a.png", "first", firstReached, firstRelease)),
                Items::pictured("b", addHeldPicture("/b.png", "second", reached_, release_))});
    search();
    confirm();
    EXPECT_EQ(sentImages().size(), 0u);

    firstRelease->open();
    ASSERT_TRUE(waitForImages(1));
    ASSERT_TRUE(reached_->wait());
    EXPECT_EQ(placesOf(sentImages()), Texts{"0/0"});

    release_->open();
    ASSERT_TRUE(waitForImages(2));
    EXPECT_EQ(readFile(imageFile("20.png")), "second");
}

TEST_F(SearchEmartControlDeliveryTest, ARefusalOfTheUiAppKeepsThePictures)
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
    search_->sendEmartAllImagePath();
    EXPECT_EQ(loggedErrors().back(), "sendEmartAllImagePath: UI is not ready to show image");

    confirm();
    EXPECT_EQ(placesOf(sentImages()), (Texts{"0/0", "1/0"}));
}

TEST_F(SearchEmartControlDeliveryTest, ARefusalBehindAConfirmationTakesNothingBack)
{
    searchWithLastPictureHeld({"zero", "one"});
    const SentMessage message = result();
    message.answer(APP_CONTROL_RESULT_SUCCEEDED);
    message.answer(APP_CONTROL_RESULT_FAILED);
    release_->open();
    EXPECT_TRUE(waitForImages(2));
}

TEST_F(SearchEmartControlDeliveryTest, ASecondConfirmationSendsNoPictureAgain)
{
    searchWithLastPictureHeld({"zero", "one"});
    confirm();
    confirm();
    search_->sendEmartAllImagePath();
    release_->open();
    EXPECT_TRUE(waitForImages(2));
    EXPECT_EQ(placesOf(sentImages()), (Texts{"0/0", "1/0"}));
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(SearchEmartControlDeliveryTest, AConfirmationWithoutPicturesSendsNothing)
{
    confirm();
    EXPECT_EQ(sentImages().size(), 0u);
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(SearchEmartControlDeliveryTest, BeforeTheUiAppIsReadyNothingThatWaitsIsSent)
{
    searchWithLastPictureHeld({"zero", "one"});
    search_->sendEmartAllImagePath();
    EXPECT_EQ(sent().size(), 0u);
    EXPECT_EQ(loggedErrors(), Texts{"sendEmartAllImagePath: UI is not ready to show image"});
    confirm();
    EXPECT_EQ(placesOf(sentImages()), Texts{"0/0"});
}

TEST_F(SearchEmartControlDeliveryTest, AnImageMessageHoldsPositionPathAndTypeAndWantsNoReply)
{
    search_->sendImagePath(5, "/tmp/우유.png", Util::DownloadImageType::DISCOUNT_ICON_IMAGE);
    search_->sendImagePath(0, "/tmp/b.png", Util::DownloadImageType::PRODUCT_IMAGE);
    const std::vector<SentMessage> images = sent();
    ASSERT_EQ(images.size(), 2u);
    for (const SentMessage& image : images) {
        EXPECT_EQ(image.appId, "org.tizen.carvoy");
        EXPECT_EQ(image.operation, "http://carvoy-service/appcontrol/operation/emart_product_image");
        EXPECT_EQ(image.uri, "");
        EXPECT_EQ(image.keys,
                  (Texts{"key_product_image_num", "key_product_image_path", "key_product_image_type"}));
        EXPECT_EQ(image.lists.size(), 0u);
        EXPECT_EQ(image.callback, nullptr);
    }
    EXPECT_EQ(placesOf(images), (Texts{"5/2", "0/0"}));
    EXPECT_EQ(images[0].text("key_product_image_path"), "/tmp/우유.png");
    EXPECT_EQ(images[1].text("key_product_image_path"), "/tmp/b.png");
}

}  // namespace Carvoy
