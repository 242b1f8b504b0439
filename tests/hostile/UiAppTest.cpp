// A UI app that dies, at each moment of a delivery, or does not answer.
#include "FailedSearch.h"
#include "MuteApp.h"

namespace ServiceTest {

namespace {

using TestSupport::RawMessage;

constexpr const char* UiId = "org.tizen.carvoy";
constexpr const char* Refused = "Invalid app control response";
constexpr const char* NotSent = "Failed to launch request";

class AUiApp : public FailedSearch {
  protected:
    /** What it has got and not confirmed counts as refused: the empty lists of the service's start. */
    void die()
    {
        ui.reset();
        ASSERT_TRUE(TestSupport::waitForName(UiId, false));
        EXPECT_TRUE(log.waitFor(Refused));
    }

    void expectNothingElseRefused() const { EXPECT_EQ(log.count(Refused), 1U); }

    static void die(std::unique_ptr<MuteApp>& mute)
    {
        mute.reset();
        ASSERT_TRUE(TestSupport::waitForName(UiId, false));
    }

    /** Dies, and is there again without answering anybody. */
    std::unique_ptr<MuteApp> fallMute()
    {
        die();
        return std::make_unique<MuteApp>(UiId);
    }

    void expectPictures()
    {
        for (const char* index : {"0", "1", "2"})
            EXPECT_EQ(ui->nextPicture().index, index);
    }

    /** The next one, or the one after that. */
    void expectALaterLifeThatWorks()
    {
        ui.reset();
        ASSERT_TRUE(TestSupport::waitForName(UiId, false));
        ui = std::make_unique<UiPeer>();
        expectASearchThatWorks();
        stopService();
        EXPECT_EQ(service->errors(), "");
    }

    void holdPictures()
    {
        for (const Product& product : threeProducts())
            merchant->hold(product.picture);
    }

    void releasePictures()
    {
        for (const Product& product : threeProducts())
            merchant->release(product.picture);
    }
};

TEST_F(AUiApp, ThatDiesWithTheListsOnTheirWayGetsAllInItsNextLife)
{
    auto mute = fallMute();
    search();
    askForResult();
    ASSERT_TRUE(mute->waitForMessage());
    die(mute);
    EXPECT_TRUE(log.waitFor(NotSent));
    expectNothingElseRefused();

    ui = std::make_unique<UiPeer>();
    ui->confirm(resultMessage());
    expectPictures();
    expectALaterLifeThatWorks();
}

TEST_F(AUiApp, ThatConfirmsAndDiesHasConfirmed)
{
    holdPictures();
    search();
    const RawMessage result = resultMessage();
    EXPECT_EQ(ui->confirm(result), "");
    die();
    releasePictures();

    EXPECT_TRUE(log.waitFor(NotSent, 3));
    expectNothingElseRefused();
    expectALaterLifeThatWorks();
}

TEST_F(AUiApp, ThatDiesWithAPictureOnItsWayMissesThatOneAndThoseBehindIt)
{
    holdPictures();
    search();
    EXPECT_EQ(ui->confirm(resultMessage()), "");
    auto mute = fallMute();
    releasePictures();
    ASSERT_TRUE(mute->waitForMessage());
    die(mute);

    EXPECT_TRUE(log.waitFor(NotSent, 3));
    ui = std::make_unique<UiPeer>();
    EXPECT_EQ(ui->confirm(resultMessage()), "");
    expectALaterLifeThatWorks();
}

TEST_F(AUiApp, ThatDiesBetweenTwoPicturesMissesTheRest)
{
    holdPictures();
    search();
    EXPECT_EQ(ui->confirm(resultMessage()), "");
    merchant->release("/p/whole.png");
    EXPECT_EQ(ui->nextPicture().index, "0");
    die();
    releasePictures();

    EXPECT_TRUE(log.waitFor(NotSent, 2));
    expectALaterLifeThatWorks();
}

using AStalledUiApp = AUiApp;

// 25 seconds: the limit of a message that nobody takes.
TEST_F(AStalledUiApp, IsGivenUpAndHoldsUpNoSearchMeanwhile)
{
    auto mute = fallMute();
    askForResult();
    ASSERT_TRUE(mute->waitForMessage());
    search();
    EXPECT_TRUE(merchant->waitForRequests("/p/goat.gif"));

    EXPECT_TRUE(log.waitFor(NotSent));
    die(mute);
    expectALaterLifeThatWorks();
}

}  // namespace

}  // namespace ServiceTest
