// A newer search takes the place of an older one whose pictures are still on their way.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "ImageCurlDownloader.h"
#include "Products.h"
#include "SearchControlFixture.h"
#include "Singleton.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

constexpr int ROUNDS = 25;  // of each of the four places at which the older search is held

class SearchControlSupersedeTest : public SearchControlFixture {
  protected:
    void search(const std::string& term) { ASSERT_EQ(search_->processSearch("freshmart", term), 0); }

    /**
     * One round: the older search, whose first picture is held as `hold` says, is replaced by the newer one,
     * and is let go while that one asks the merchant.
     */
    void replaceWhileHeld(const std::function<void(std::shared_ptr<Latch>, std::shared_ptr<Latch>)>& hold)
    {
        const auto reached = newLatch();
        const auto release = newLatch();
        hold(reached, release);
        answerWithPictures({url(OLD), url(OLD), url(OLD)});
        search("old");
        ASSERT_TRUE(reached->wait());

        const std::string answer = Products::answer({Products::pictured("new", url(NEW))});
        merchant_.handle(MerchantServer::SEARCH_PATH,
                         [=](const MerchantRequest&, MerchantConnection& connection) {
                             release->open();
                             connection.answer(200, answer);
                         });
        search("new");
        confirm();
    }

    /** Plays all rounds, and then sees what the UI app and the disk got. */
    void playRounds(const std::function<void(std::shared_ptr<Latch>, std::shared_ptr<Latch>)>& hold)
    {
        addPicture(NEW, "new picture");
        for (int round = 0; round < ROUNDS; ++round) {
            ASSERT_NO_FATAL_FAILURE(replaceWhileHeld(hold)) << round;
            ASSERT_TRUE(waitForImages(static_cast<size_t>(round) + 1)) << round;
            ASSERT_EQ(readFile(imageFile("1.png")), "new picture") << round;
        }
        const std::vector<SentMessage> images = sentImages();
        EXPECT_EQ(images.size(), static_cast<size_t>(ROUNDS));
        for (const SentMessage& image : images) {
            EXPECT_EQ(image.text("key_product_image_num"), "0");
            EXPECT_EQ(image.text("key_product_image_path"), imageFile("1.png"));
        }
        // The thread of an older search does not go on to its second picture.
        EXPECT_LE(merchant_.countOf(OLD), ROUNDS);
        EXPECT_EQ(merchant_.countOf(NEW), ROUNDS);
        EXPECT_EQ(loggedErrors(), Texts());
    }

    static std::string url(const std::string& path) { return MerchantServer::url(path); }

    static inline const std::string OLD = "/old.png";
    static inline const std::string NEW = "/new.png";
};

}  // namespace

// The file of the older search is open, and not a byte has come.
TEST_F(SearchControlSupersedeTest, AnOlderPictureThatIsOnlyOpenNeverGetsThrough)
{
    playRounds([this](const auto& reached, const auto& release) {
        merchant_.handle(OLD, [=](const MerchantRequest&, MerchantConnection& connection) {
            reached->open();
            release->wait();
            connection.answer(200, "old picture");
        });
    });
}

TEST_F(SearchControlSupersedeTest, AnOlderPictureThatIsHalfThereNeverGetsThrough)
{
    playRounds([this](const auto& reached, const auto& release) {
        addHeldPicture(OLD, std::string(100000, 'o'), reached, release);
    });
}

// The older picture is complete, and the thread is about to record it.
TEST_F(SearchControlSupersedeTest, AnOlderPictureThatIsNotRecordedYetNeverGetsThrough)
{
    addPicture(OLD, "old picture");
    playRounds([](const auto& reached, const auto& release) {
        holdDownloadIn("curl_easy_getinfo", reached, release);
    });
}

// The older picture is recorded, and the thread is about to queue its path.
TEST_F(SearchControlSupersedeTest, AnOlderPictureThatIsRecordedNeverGetsThrough)
{
    addPicture(OLD, "old picture");
    playRounds([](const auto& reached, const auto& release) { holdDownloadIn("sync", reached, release); });
}

// Until it is let go the older thread stands in the middle of a file that is not there any more.
TEST_F(SearchControlSupersedeTest, AnOlderPictureThatEndsBehindTheNewerOneChangesNothing)
{
    const auto reached = newLatch();
    const auto release = newLatch();
    addHeldPicture(OLD, std::string(100000, 'o'), reached, release);
    addPicture(NEW, "new picture");
    answerWithPictures({url(OLD), url(OLD)});
    search("old");
    confirm();
    ASSERT_TRUE(reached->wait());

    answerWithPictures({url(NEW)});
    search("new");
    confirm();
    ASSERT_TRUE(waitForImages(1));
    release->open();
    // The next search joins the older threads that have ended; the end of the controller joins all of them.
    search_.reset();
    const std::vector<SentMessage> images = sentImages();
    ASSERT_EQ(images.size(), 1u);
    EXPECT_EQ(images[0].text("key_product_image_path"), imageFile("1.png"));
    EXPECT_EQ(merchant_.countOf(OLD), 1);
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(SearchControlSupersedeTest, TheFileOfTheNewerSearchIsNotTheOlderOnes)
{
    const auto reached = newLatch();
    const auto release = newLatch();
    addHeldPicture(OLD, std::string(100000, 'o'), reached, release);
    answerWithPictures({url(OLD)});
    search("old");
    ASSERT_TRUE(reached->wait());

    const auto newReached = newLatch();
    const auto newRelease = newLatch();
    addHeldPicture(NEW, "new picture", newReached, newRelease);
    answerWithPictures({url(NEW)});
    search("new");
    confirm();
    ASSERT_TRUE(newReached->wait());
    // The older transfer goes on and ends while the newer one is open under the same name.
    release->open();
    ASSERT_TRUE(Calls::waitFor("sync", 1));
    newRelease->open();
    ASSERT_TRUE(waitForImages(1));
    EXPECT_EQ(readFile(imageFile("1.png")), "new picture");
    EXPECT_EQ(sentImages().size(), 1u);
}

TEST_F(SearchControlSupersedeTest, ANewerSearchDropsWhatTheOlderOneHadWaiting)
{
    const auto reached = newLatch();
    const auto release = newLatch();
    answerWithPictures({addPicture("/0.png", "zero"), addPicture("/1.png", "one"),
                        addHeldPicture("/2.png", "two", reached, release)});
    search("old");
    ASSERT_TRUE(reached->wait());
    ASSERT_TRUE(std::filesystem::exists(imageFile("1.png")));

    merchant_.answerSearch(500, "");
    EXPECT_EQ(search_->processSearch("freshmart", "new"), 3);
    EXPECT_FALSE(std::filesystem::exists(imageFile("")));
    confirm();
    EXPECT_EQ(sentImages().size(), 0u);
    release->open();
    search_.reset();
    EXPECT_EQ(sentImages().size(), 0u);
    EXPECT_TRUE(Util::Singleton<Util::ImageCurlDownloader>::getInstance()->downloaded.empty());
}

TEST_F(SearchControlSupersedeTest, ANewerSearchIsNotReadyBecauseTheOlderOneWas)
{
    addPicture(OLD, "old picture");
    answerWithPictures({url(OLD)});
    search("old");
    confirm();
    ASSERT_TRUE(waitForImages(1));

    const auto reached = newLatch();
    const auto release = newLatch();
    answerWithPictures({addPicture(NEW, "new picture"), addHeldPicture("/2.png", "two", reached, release)});
    search("new");
    ASSERT_TRUE(reached->wait());
    EXPECT_EQ(sentImages().size(), 1u);
    confirm();
    EXPECT_EQ(sentImages().size(), 2u);
}

// A confirmation does not tell which result it is for.
TEST_F(SearchControlSupersedeTest, AConfirmationOfTheOlderResultCountsForTheNewerSearch)
{
    answerWithPictures({addPicture(OLD, "old picture")});
    search("old");
    const SentMessage older = result();
    answerWithPictures({addPicture(NEW, "new picture")});
    search("new");
    older.answer(APP_CONTROL_RESULT_SUCCEEDED);
    ASSERT_TRUE(waitForImages(1));
    EXPECT_EQ(readFile(imageFile("1.png")), "new picture");
    EXPECT_EQ(sentImages().size(), 1u);
}

TEST_F(SearchControlSupersedeTest, ManySearchesInARowLeaveOnlyTheLast)
{
    constexpr int COUNT = 20;
    std::vector<std::shared_ptr<Latch>> reached;
    std::vector<std::shared_ptr<Latch>> releases;
    for (int i = 0; i < COUNT; ++i) {
        const std::string path = "/" + std::to_string(i) + ".png";
        reached.push_back(newLatch());
        releases.push_back(newLatch());
        answerWithPictures({addHeldPicture(path, path, reached.back(), releases.back()), url("/none.png")});
        search(path);
        ASSERT_TRUE(reached.back()->wait());
    }
    for (int i = 0; i < COUNT; ++i)
        releases[static_cast<size_t>((i * 7) % COUNT)]->open();
    confirm();
    ASSERT_TRUE(waitForImages(1));
    EXPECT_EQ(readFile(imageFile("1.png")), "/19.png");
    search_.reset();
    EXPECT_EQ(sentImages().size(), 1u);
    EXPECT_LE(merchant_.countOf("/none.png"), 1);
}

TEST_F(SearchControlSupersedeTest, TheEndOfTheControllerWaitsForThePictureThatIsOnItsWay)
{
    for (int round = 0; round < ROUNDS; ++round) {
        const auto reached = newLatch();
        const auto release = newLatch();
        answerWithPictures({addHeldPicture("/held.png", "held", reached, release), url("/next.png")});
        search("milk");
        confirm();
        ASSERT_TRUE(reached->wait());
        // The end of the controller wipes the pictures' folder, and only then waits for the thread.
        Calls::before("system", [release] { release->open(); });
        search_.reset();
        Calls::before("system", [] {});
        EXPECT_FALSE(std::filesystem::exists(imageFile("")));
        search_ = std::make_unique<SearchControl>();
    }
    EXPECT_EQ(sentImages().size(), 0u);
    EXPECT_EQ(merchant_.countOf("/next.png"), 0);
    EXPECT_EQ(loggedErrors(), Texts());
}

// Only the answer of the merchant ends the wait: the controller must not be gone before its thread is.
TEST_F(SearchControlSupersedeTest, NothingOfTheControllerIsUsedBehindItsEnd)
{
    const auto reached = newLatch();
    const auto release = newLatch();
    const auto isHeld = newLatch();
    answerWithPictures({addHeldPicture("/held.png", "held", reached, release)});
    search("milk");
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
