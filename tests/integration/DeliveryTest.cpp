// What the UI app gets: the product lists, and each picture once it has confirmed them.
#include "ServiceWorld.h"

namespace ServiceTest {

namespace {

using TestSupport::RawMessage;
using Texts = std::vector<std::string>;

constexpr const char* AccessDenied = "org.freedesktop.DBus.Error.AccessDenied";

class ADelivery : public ServiceWorld {
  protected:
    void SetUp() override
    {
        ui = std::make_unique<UiPeer>();
        stock(threeProducts());
        startService();
        resultMessage();
        atRest = threads();
    }

    /** No picture is on its way any more. */
    void waitForPictures() { ASSERT_TRUE(waitForThreads(atRest)); }

    void expectPicture(const std::string& index, const std::string& file, const std::string& path)
    {
        const Picture picture = ui->nextPicture();
        EXPECT_EQ(picture.index, index);
        EXPECT_EQ(picture.path, picturesFolder() + "/" + file);
        EXPECT_TRUE(contentOf(picture.path) == pictureBytes(path)) << picture.path;
    }

    void expectAllPictures()
    {
        expectPicture("0", "1.png", "/p/whole.png");
        expectPicture("1", "2.jpg", "/p/oat.jpg");
        expectPicture("2", "3.gif", "/p/goat.gif");
    }

    /** Messages come in order: what was to come has come when the next result comes. */
    RawMessage expectNothingBeforeTheNextResult() { return resultMessage(); }

    std::size_t atRest = 0;
};

TEST_F(ADelivery, OfTheListsHoldsOneSlotForEachProduct)
{
    search();
    const RawMessage result = resultMessage();

    EXPECT_EQ(textOf(result, "key_merchant"), "freshmart");
    EXPECT_EQ(textOf(result, "key_search_term"), "milk");
    EXPECT_EQ(textOf(result, "key_search_by"), "full");
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "3");
    EXPECT_EQ(listOf(result, "key_product_names"), (Texts{"Whole Milk", "Oat Milk", "Goat Milk"}));
    EXPECT_EQ(listOf(result, "key_product_size_or_weights"), (Texts{"1 gal", "32 oz", ""}));
    EXPECT_EQ(listOf(result, "key_product_discount_percents"), (Texts{"Save 25%", "", ""}));
    EXPECT_EQ(listOf(result, "key_product_prices_before_discount"), (Texts{"$10.0", "", ""}));
    EXPECT_EQ(listOf(result, "key_product_prices"), (Texts{"$7.50", "$12.5", ""}));
    EXPECT_EQ(listOf(result, "key_product_variant_refs"), (Texts{"ref-whole", "ref-oat", ""}));
    EXPECT_EQ(result.extras.size(), 10U);
}

TEST_F(ADelivery, OfTheListsLooksLikeAnyRequestThatWantsAReply)
{
    search();
    const RawMessage result = resultMessage();

    EXPECT_EQ(result.caller, ServiceId);
    EXPECT_EQ(result.uri, "");
    EXPECT_NE(result.id, 0U);
    for (const auto& [key, value] : result.extras) {
        const bool isText = key.compare(0, 12, "key_product_") != 0;
        EXPECT_EQ(value.peekValueType(), isText ? "s" : "as") << key;
    }
}

TEST_F(ADelivery, OfAPictureLooksLikeAnyRequestThatWantsNone)
{
    search();
    ui->confirm(resultMessage());
    const RawMessage picture = ui->nextPictureMessage();

    EXPECT_EQ(picture.caller, ServiceId);
    EXPECT_EQ(picture.uri, "");
    EXPECT_EQ(picture.id, 0U);
    EXPECT_EQ(picture.extras.size(), 2U);
    EXPECT_EQ(textOf(picture, "key_product_image_num"), "0");
    EXPECT_EQ(textOf(picture, "key_product_image_path"), picturesFolder() + "/1.png");
}

TEST_F(ADelivery, BringsThePicturesInTheOrderOfTheProductsAndWhole)
{
    search();
    EXPECT_EQ(ui->confirm(resultMessage()), "");

    expectAllPictures();
    EXPECT_EQ(pictureFiles(), (Texts{"1.png", "2.jpg", "3.gif"}));
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    EXPECT_EQ(responseFlag(), "1\n");
}

TEST_F(ADelivery, OfMoreThanSixProductsEndsWithTheSixth)
{
    std::vector<Product> ten;
    for (int i = 0; i < 10; ++i)
        ten.push_back({"Milk " + std::to_string(i), "/p/" + std::to_string(i) + ".png"});
    stock(ten);

    search();
    const RawMessage result = resultMessage();
    ui->confirm(result);

    EXPECT_EQ(listOf(result, "key_product_names").size(), 6U);
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "6");
    for (int i = 0; i < 6; ++i)
        expectPicture(std::to_string(i), std::to_string(i + 1) + ".png", "/p/" + std::to_string(i) + ".png");
    expectNothingBeforeTheNextResult();
    EXPECT_EQ(status(), (StatusRecord{1, 1, 6, {}, {}}));
}

TEST_F(ADelivery, OfPicturesWaitsUntilTheListsAreConfirmed)
{
    search();
    const RawMessage result = resultMessage();
    waitForPictures();
    expectNothingBeforeTheNextResult();

    EXPECT_EQ(ui->confirm(result), "");

    expectAllPictures();
}

TEST_F(ADelivery, OfPicturesWaitsForAConfirmationOfEachSearch)
{
    search("old");
    ui->confirm(resultMessage());
    expectAllPictures();
    waitForPictures();

    search("new");
    expectNothingBeforeTheNextResult();
    waitForPictures();
    const RawMessage fresh = expectNothingBeforeTheNextResult();
    EXPECT_EQ(ui->confirm(fresh), "");

    expectAllPictures();
}

TEST_F(ADelivery, OfAPictureFollowsAtOnceWhenTheListsWereConfirmedBefore)
{
    for (const Product& product : threeProducts())
        merchant->hold(product.picture);
    search();
    ui->confirm(resultMessage());

    merchant->release("/p/whole.png");
    expectPicture("0", "1.png", "/p/whole.png");
    EXPECT_TRUE(merchant->waitForRequests("/p/oat.jpg"));
    EXPECT_EQ(merchant->requests("/p/goat.gif").size(), 0U);
    merchant->release("/p/oat.jpg");
    expectPicture("1", "2.jpg", "/p/oat.jpg");
    merchant->release("/p/goat.gif");
    expectPicture("2", "3.gif", "/p/goat.gif");
}

TEST_F(ADelivery, ThatIsRefusedKeepsThePicturesForALaterOne)
{
    search();
    const RawMessage refused = resultMessage();
    EXPECT_EQ(ui->refuse(refused), "");
    EXPECT_TRUE(log.waitFor("Invalid app control response"));

    const RawMessage again = expectNothingBeforeTheNextResult();
    EXPECT_EQ(listOf(again, "key_product_names"), listOf(refused, "key_product_names"));
    EXPECT_NE(again.id, refused.id);
    EXPECT_EQ(ui->confirm(again), "");

    expectAllPictures();
}

TEST_F(ADelivery, OfTheListsMayBeAskedForAgainAndSendsNoPictureTwice)
{
    search();
    ui->confirm(resultMessage());
    expectAllPictures();

    const RawMessage again = expectNothingBeforeTheNextResult();
    EXPECT_EQ(textOf(again, "key_total_num_of_products"), "3");
    ui->confirm(again);

    expectNothingBeforeTheNextResult();
}

TEST_F(ADelivery, CanBeConfirmedOnce)
{
    search();
    const RawMessage result = resultMessage();

    EXPECT_EQ(ui->confirm(result), "");
    EXPECT_EQ(ui->confirm(result), AccessDenied);
    EXPECT_EQ(ui->refuse(result), AccessDenied);

    expectAllPictures();
    expectNothingBeforeTheNextResult();
    EXPECT_EQ(log.count("Invalid app control response"), 0U);
}

TEST_F(ADelivery, CanOnlyBeConfirmedByTheAppThatGotIt)
{
    search();
    const RawMessage result = resultMessage();

    EXPECT_EQ(client->reply(result.sender, result.id), AccessDenied);
    waitForPictures();
    expectNothingBeforeTheNextResult();
    EXPECT_EQ(ui->confirm(result), "");

    expectAllPictures();
}

TEST_F(ADelivery, CanOnlyBeConfirmedByItsOwnId)
{
    search();
    const RawMessage result = resultMessage();
    waitForPictures();

    for (const std::uint32_t id : {result.id + 1, std::uint32_t{0}, UINT32_MAX}) {
        RawMessage forged = result;
        forged.id = id;
        EXPECT_EQ(ui->confirm(forged), AccessDenied) << id;
    }
    expectNothingBeforeTheNextResult();
    EXPECT_EQ(ui->confirm(result), "");

    expectAllPictures();
}

TEST_F(ADelivery, LeavesOutThePictureThatCouldNotBeFetched)
{
    merchant->answer("/p/oat.jpg", {404, "not found", "text/plain"});

    search();
    ui->confirm(resultMessage());

    expectPicture("0", "1.png", "/p/whole.png");
    expectPicture("2", "3.gif", "/p/goat.gif");
    expectNothingBeforeTheNextResult();
    EXPECT_EQ(log.count("download failed, result: 0HTTP response: 404"), 1U);
    EXPECT_EQ(log.count("Failed to startDownload for index 1"), 1U);
    EXPECT_EQ(log.count("Failed to startDownload for index 0"), 0U);
}

TEST_F(ADelivery, GoesOnAfterPicturesThatAreCutOrCannotBeNamed)
{
    std::vector<Product> products = threeProducts();
    products[1].picture = "/p/no-picture/at.all/";
    stock(products);
    merchant->answer("/p/whole.png", {200, "half a picture", "image/png", 100});

    search();
    ui->confirm(resultMessage());

    expectPicture("2", "3.gif", "/p/goat.gif");
    expectNothingBeforeTheNextResult();
    EXPECT_EQ(log.count("Failed to startDownload for index 0"), 1U);
    EXPECT_EQ(log.count("Failed to open file to image data write"), 1U);
    EXPECT_EQ(log.count("Failed to startDownload for index 1"), 1U);
}

TEST_F(ADelivery, BeforeAnySearchHasNoProducts)
{
    const RawMessage result = resultMessage();

    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "0");
    EXPECT_EQ(result.extras.size(), 1U);
    EXPECT_EQ(merchant->requests(Merchant::SearchPath).size(), 0U);
    EXPECT_EQ(ui->confirm(result), "");
    expectNothingBeforeTheNextResult();
}

TEST_F(ADelivery, WithoutAUiAppFailsAndTheServiceGoesOn)
{
    ui.reset();
    ASSERT_TRUE(TestSupport::waitForName("org.tizen.carvoy", false));
    search();
    askForResult();
    EXPECT_TRUE(log.waitFor("Failed to launch request"));

    ui = std::make_unique<UiPeer>();
    ui->confirm(resultMessage());

    expectAllPictures();
}

TEST_F(ADelivery, ToAUiAppThatLeavesBeforeItConfirmsCountsAsRefused)
{
    search();
    resultMessage();
    ui.reset();
    EXPECT_TRUE(log.waitFor("Invalid app control response"));
    ASSERT_TRUE(TestSupport::waitForName("org.tizen.carvoy", false));

    ui = std::make_unique<UiPeer>();
    ui->confirm(resultMessage());

    expectAllPictures();
}

TEST_F(ADelivery, OfAnOlderSearchIsDroppedForANewerOne)
{
    merchant->hold("/p/whole.png");
    search("old");
    ui->confirm(resultMessage());
    ASSERT_TRUE(merchant->waitForRequests("/p/whole.png"));
    stock({{"New Milk", "/new/one.png"}, {"Newer Milk", "/new/two.png"}});

    search("new");
    ui->confirm(resultMessage());
    expectPicture("0", "1.png", "/new/one.png");
    expectPicture("1", "2.png", "/new/two.png");
    merchant->release("/p/whole.png");
    waitForPictures();

    expectNothingBeforeTheNextResult();
    EXPECT_EQ(pictureFiles(), (Texts{"1.png", "2.png"}));
    EXPECT_TRUE(contentOf(picturesFolder() + "/1.png") == pictureBytes("/new/one.png"));
    EXPECT_EQ(merchant->requests("/p/oat.jpg").size(), 0U);
    EXPECT_EQ(log.count("Failed to startDownload for index 0"), 0U);
}

TEST_F(ADelivery, ThatWaitedForAConfirmationIsDroppedForANewerSearch)
{
    search("old");
    const RawMessage old = resultMessage();
    waitForPictures();
    stock({{"New Milk", "/new/one.png"}});

    search("new");
    const RawMessage fresh = resultMessage();
    EXPECT_EQ(textOf(fresh, "key_search_term"), "new");
    EXPECT_EQ(ui->confirm(fresh), "");

    expectPicture("0", "1.png", "/new/one.png");
    expectNothingBeforeTheNextResult();
    EXPECT_EQ(pictureFiles(), Texts{"1.png"});
    EXPECT_NE(old.id, fresh.id);
}

TEST_F(ADelivery, AfterASearchThatFailedHasNoProductsOfTheOneBefore)
{
    search();
    ui->confirm(resultMessage());
    expectAllPictures();
    merchant->answer(Merchant::SearchPath, {500});

    search("butter");
    const RawMessage result = resultMessage();

    EXPECT_EQ(textOf(result, "key_search_term"), "butter");
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "0");
    EXPECT_EQ(result.extras.count("key_product_names"), 0U);
    EXPECT_EQ(pictureFiles(), Texts{});
}

}  // namespace

}  // namespace ServiceTest
