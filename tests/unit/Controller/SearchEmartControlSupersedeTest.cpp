// A newer search takes the place of an older one whose pictures are still on their way: none of those gets
// through, wherever it is held.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ImageCurlDownloader.h"
#include "Items.h"
#include "SearchEmartControlFixture.h"
#include "Singleton.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

constexpr int ROUNDS = 3;  // of each place at which the older search is held, and of each moment

class SearchEmartControlSupersedeTest : public SearchEmartControlFixture {
  protected:
    using Hold = std::function<void(std::shared_ptr<Latch>, std::shared_ptr<Latch>)>;

    /** When the older search is let go: while the newer one asks the retailer, or when it has its products.
     */
    enum class Moment { WHILE_ASKING, WITH_PRODUCTS };

    /** One round: the older search, whose first picture is held as `hold` says, is replaced by the newer one.
     */
    void replaceWhileHeld(const Hold& hold, Moment moment)
    {
        const auto reached = newLatch();
        const auto release = newLatch();
        hold(reached, release);
        answerWith(Texts(3, Items::pictured("old", url(OLD))));
        search("old");
        ASSERT_TRUE(reached->wait());

        const std::string answer = Items::answer({Items::pictured("new", url(NEW), BADGE)});
        retailer_.handle(RetailerServer::SEARCH_PATH,
                         [=](const ServerRequest&, ServerConnection& connection) {
                             if (moment == Moment::WHILE_ASKING)
                                 release->open();
                             connection.answer(200, answer);
                         });
        search("new");
        release->open();
        confirm();
    }

    /** Plays all rounds, and then sees what the UI app and the disk got. */
    void playRounds(const Hold& hold, int oldCount = 1)
    {
        addPicture(NEW, "new picture");
        addIcon(BADGE, "new icon");
        size_t round = 0;
        for (Moment moment : {Moment::WHILE_ASKING, Moment::WITH_PRODUCTS}) {
            for (int i = 0; i < ROUNDS; ++i) {
                ASSERT_NO_FATAL_FAILURE(replaceWhileHeld(hold, moment)) << round;
                ASSERT_TRUE(waitForImages(2 * ++round)) << round;
                ASSERT_EQ(readFile(imageFile("10.png")), "new picture") << round;
                ASSERT_EQ(readFile(imageFile("12.png")), "new icon") << round;
            }
        }
        search_.reset();
        const std::vector<SentMessage> images = sentImages();
        EXPECT_EQ(images.size(), 2 * round);
        for (const SentMessage& image : images) {
            const bool isIcon = image.text("key_product_image_type") == "2";
            EXPECT_EQ(image.text("key_product_image_num"), "0");
            EXPECT_EQ(image.text("key_product_image_path"), imageFile(isIcon ? "12.png" : "10.png"));
        }
        // The thread of an older search does not go on to that one's second picture.
        EXPECT_EQ(retailer_.countOf(OLD), oldCount * static_cast<int>(round));
        EXPECT_EQ(retailer_.countOf(NEW), static_cast<int>(round));
        EXPECT_EQ(retailer_.countOf(RetailerServer::iconPath(BADGE)), static_cast<int>(round));
        EXPECT_EQ(loggedErrors(), Texts());
        EXPECT_TRUE(Util::Singleton<Util::ImageCurlDownloader>::getInstance()->downloaded.empty());
    }

    /** Plays all rounds with the older thread held where it calls `function`. */
    void playRoundsHeldIn(const std::string& function, int oldCount = 1)
    {
        addPicture(OLD, "old picture");
        playRounds([function](const auto& reached,
                              const auto& release) { holdDownloadIn(function, reached, release); },
                   oldCount);
    }

    static constexpr int BADGE = 90;
    static inline const std::string OLD = "/old.png";
    static inline const std::string NEW = "/new.png";
};

}  // namespace

// The thread has the address of the older picture, and nothing else.
TEST_F(SearchEmartControlSupersedeTest, AnOlderPictureThatIsNotBegunIsNotFetched)
{
    playRoundsHeldIn("initDownload", 0);
}

// The file of the older search is open, and nobody was asked for the picture.
TEST_F(SearchEmartControlSupersedeTest, AnOlderPictureThatIsNotAskedForNeverGetsThrough)
{
    playRoundsHeldIn("curl_easy_perform");
}

// The retailer was asked, and not a byte has come.
TEST_F(SearchEmartControlSupersedeTest, AnOlderPictureThatIsOnlyOpenNeverGetsThrough)
{
    playRounds([this](const auto& reached, const auto& release) {
        retailer_.handle(OLD, [=](const ServerRequest&, ServerConnection& connection) {
            reached->open();
            release->wait();
            connection.answer(200, "old picture");
        });
    });
}

TEST_F(SearchEmartControlSupersedeTest, AnOlderPictureThatIsHalfThereNeverGetsThrough)
{
    playRounds([this](const auto& reached, const auto& release) {
        addHeldPicture(OLD, std::string(100'000, 'o'), reached, release);
    });
}

// The older picture is complete, and the thread is about to record it.
TEST_F(SearchEmartControlSupersedeTest, AnOlderPictureThatIsNotRecordedYetNeverGetsThrough)
{
    playRoundsHeldIn("curl_easy_getinfo");
}

// The older picture is recorded, and about to go to the disk.
TEST_F(SearchEmartControlSupersedeTest, AnOlderPictureThatIsNotOnTheDiskYetNeverGetsThrough)
{
    playRoundsHeldIn("fsync");
}

// The older picture is recorded, and the thread is about to queue its path.
TEST_F(SearchEmartControlSupersedeTest, AnOlderPictureThatIsRecordedNeverGetsThrough)
{
    playRoundsHeldIn("curl_easy_cleanup");
}

TEST_F(SearchEmartControlSupersedeTest, TheFileOfTheNewerSearchIsNotTheOlderOnes)
{
    const auto reached = newLatch();
    const auto release = newLatch();
    answerWith({Items::pictured("old", addHeldPicture(OLD, std::string(100'000, 'o'), reached, release))});
    search("old");
    ASSERT_TRUE(reached->wait());

    const auto newReached = newLatch();
    const auto newRelease = newLatch();
    answerWith({Items::pictured("new", addHeldPicture(NEW, "new picture", newReached, newRelease))});
    search("new");
    confirm();
    ASSERT_TRUE(newReached->wait());
    // The older transfer goes on and ends while the newer one is open under the same name.
    release->open();
    ASSERT_TRUE(Calls::waitFor("sync", 1));
    newRelease->open();
    ASSERT_TRUE(waitForImages(1));
    EXPECT_EQ(readFile(imageFile("10.png")), "new picture");
    EXPECT_EQ(sentImages().size(), 1u);
}

TEST_F(SearchEmartControlSupersedeTest, ANewerSearchDropsWhatTheOlderOneHadWaiting)
{
    const auto reached = newLatch();
    const auto release = newLatch();
    answerWith({Items::pictured("a", addPicture("/a.png", "zero")),
                Items::pictured("b", addHeldPicture("/b.png", "one", reached, release))});
    search("old");
    ASSERT_TRUE(reached->wait());
    ASSERT_TRUE(std::filesystem::exists(imageFile("10.png")));

    retailer_.answerSearch(500, "");
    EXPECT_EQ(search_->processEmartSearch("new"), FAILED);
    EXPECT_FALSE(std::filesystem::exists(imageFile("")));
    confirm();
    EXPECT_EQ(sentImages().size(), 0u);
    release->open();
    search_.reset();
    EXPECT_EQ(sentImages().size(), 0u);
}

TEST_F(SearchEmartControlSupersedeTest, ANewerSearchIsNotReadyBecauseTheOlderOneWas)
{
    answerWith({Items::pictured("old", addPicture(OLD, "old picture"))});
    search("old");
    confirm();
    ASSERT_TRUE(waitForImages(1));

    const auto reached = newLatch();
    const auto release = newLatch();
    addHeldIcon(90, "icon", reached, release);
    answerWith({Items::pictured("new", addPicture(NEW, "new picture"), 90)});
    search("new");
    ASSERT_TRUE(reached->wait());
    EXPECT_EQ(sentImages().size(), 1u);
    confirm();
    EXPECT_EQ(sentImages().size(), 2u);
}

// A confirmation does not tell which result it is for.
TEST_F(SearchEmartControlSupersedeTest, AConfirmationOfTheOlderResultCountsForTheNewerSearch)
{
    answerWith({Items::pictured("old", addPicture(OLD, "old picture"))});
    search("old");
    const SentMessage older = result();
    answerWith({Items::pictured("new", addPicture(NEW, "new picture"))});
    search("new");
    older.answer(APP_CONTROL_RESULT_SUCCEEDED);
    ASSERT_TRUE(waitForImages(1));
    search_.reset();
    EXPECT_EQ(sentImages().size(), 1u);
}

TEST_F(SearchEmartControlSupersedeTest, TheEndOfTheControllerWaitsForThePictureThatIsOnItsWay)
{
    for (int round = 0; round < ROUNDS; ++round) {
        const auto reached = newLatch();
        const auto release = newLatch();
        answerWith({Items::pictured("a", addHeldPicture("/held.png", "held", reached, release), 90),
                    Items::pictured("b", url("/next.png"))});
        search();
        confirm();
        ASSERT_TRUE(reached->wait());
        // The end of the controller wipes the pictures' folder, and only then waits for the thread.
        Calls::before("system", [release] { release->open(); });
        search_.reset();
        Calls::before("system", [] {});
        EXPECT_FALSE(std::filesystem::exists(imageFile("")));
        search_ = std::make_unique<OpenSearchEmartControl>();
    }
    EXPECT_EQ(sentImages().size(), 0u);
    EXPECT_EQ(fetched(), Texts(ROUNDS, "/held.png"));
    EXPECT_EQ(loggedErrors(), Texts());
}

// Only the answer of the retailer ends the wait: the controller must not be gone before its thread is.
TEST_F(SearchEmartControlSupersedeTest, NothingOfTheControllerIsUsedBehindItsEnd)
{
    const auto reached = newLatch();
    const auto release = newLatch();
    const auto isHeld = newLatch();
    answerWith({Items::pictured("a", addHeldPicture("/held.png", "held", reached, release), 90)});
    search();
    ASSERT_TRUE(reached->wait());
    std::thread letGo([&] {
        isHeld->wait();
        release->open();
    });
    Calls::before("system", [isHeld] { isHeld->open(); });
    search_.reset();
    EXPECT_EQ(Calls::count("fclose"), 1u);
    letGo.join();
}

}  // namespace Carvoy
