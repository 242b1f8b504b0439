// The thread of an earlier search goes on with the products of the current one, beside that one's own.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Items.h"
#include "Patience.h"
#include "SearchEmartControlFixture.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

std::string iconPath(int badge)
{
    return RetailerServer::iconPath(badge);
}

class SearchEmartControlSharedTest : public SearchEmartControlFixture {
  protected:
    static constexpr const char* OLD = "/old.png";

    /** The older search: its thread is at the picture at this position, which the retailer holds. */
    void searchOld(int position)
    {
        Texts items(static_cast<size_t>(position), "{}");
        items.push_back(
            Items::pictured("old", addHeldPicture(OLD, std::string(100'000, 'o'), oldReached_, oldRelease_)));
        items.push_back(Items::pictured("old", url("/old-next.png")));
        answerWith(items);
        search("old");
        ASSERT_TRUE(oldReached_->wait());
        oldThread_ = Calls::of("fopen").at(0).thread;
    }

    /** The newer search for as many products with both pictures: its own thread is held at the first one. */
    void searchNew(size_t count)
    {
        Texts items;
        for (size_t i = 0; i < count; ++i) {
            const std::string path = picturePath(i);
            const std::string picture =
                i == 0 ? addHeldPicture(path, path, newReached_, newRelease_) : addPicture(path, path);
            addIcon(BADGES.at(i), iconPath(BADGES.at(i)));
            items.push_back(Items::pictured("new", picture, BADGES.at(i)));
        }
        answerWith(items);
        search("new");
        confirm();
        ASSERT_TRUE(newReached_->wait());
    }

    static std::string picturePath(size_t position) { return "/new" + std::to_string(position) + ".png"; }

    /** Waits until the thread of the older search has ended. */
    void waitForOldThread() const
    {
        const std::string task = "/proc/self/task/" + std::to_string(oldThread_);
        const auto limit = std::chrono::steady_clock::now() + TestSupport::Patience;
        while (std::filesystem::exists(task)) {
            ASSERT_LT(std::chrono::steady_clock::now(), limit);
            std::this_thread::yield();
        }
    }

    /** Lets both threads end. */
    void endAll()
    {
        openLatches();
        search_.reset();
    }

    /** The names of the files that the thread of the older search has opened, in order. */
    Texts filesOfOldThread() const
    {
        Texts names;
        for (const TestSupport::Call& call : Calls::of("fopen")) {
            if (call.thread == oldThread_)
                names.push_back(std::filesystem::path(call.arguments[0]).filename());
        }
        return names;
    }

    /** Every picture of the newer search was fetched once and sent once. */
    void expectAllOnce(size_t count)
    {
        Texts places = placesOf(sentImages());
        std::sort(places.begin(), places.end());
        Texts expected;
        for (size_t i = 0; i < count; ++i) {
            expected.push_back(std::to_string(i) + "/0");
            expected.push_back(std::to_string(i) + "/2");
            EXPECT_EQ(retailer_.countOf(picturePath(i)), 1) << i;
            EXPECT_EQ(retailer_.countOf(iconPath(BADGES.at(i))), 1) << i;
        }
        EXPECT_EQ(places, expected);
        EXPECT_EQ(retailer_.countOf("/old-next.png"), 0);
        EXPECT_EQ(loggedErrors(), Texts());
    }

    static inline const std::vector<int> BADGES = {90, 91, 100, 110, 120, 130};

    std::shared_ptr<Latch> oldReached_ = newLatch();
    std::shared_ptr<Latch> oldRelease_ = newLatch();
    std::shared_ptr<Latch> newReached_ = newLatch();
    std::shared_ptr<Latch> newRelease_ = newLatch();
    pid_t oldThread_ = 0;
};

}  // namespace

TEST_F(SearchEmartControlSharedTest, TheOlderThreadFetchesWhatTheNewerOneHasNotComeTo)
{
    ASSERT_NO_FATAL_FAILURE(searchOld(0));
    ASSERT_NO_FATAL_FAILURE(searchNew(3));
    oldRelease_->open();
    ASSERT_TRUE(waitForImages(5));
    ASSERT_NO_FATAL_FAILURE(waitForOldThread());
    EXPECT_EQ(placesOf(sentImages()), (Texts{"0/2", "1/0", "1/2", "2/0", "2/2"}));
    EXPECT_EQ(filesOfOldThread(), (Texts{"10.png", "12.png", "20.png", "22.png", "30.png", "32.png"}));

    newRelease_->open();
    ASSERT_TRUE(waitForImages(6));
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(readFile(imageFile(std::to_string(i + 1) + "0.png")), picturePath(i));
        EXPECT_EQ(readFile(imageFile(std::to_string(i + 1) + "2.png")), iconPath(BADGES[i]));
    }
    endAll();
    expectAllOnce(3);
    EXPECT_EQ(retailer_.countOf(OLD), 1);
}

// The newer thread finds pictures that are done, one that is being fetched, and some that nobody has begun.
TEST_F(SearchEmartControlSharedTest, TheNewerThreadLeavesOutWhatTheOlderOneIsAt)
{
    const auto iconReached = newLatch();
    const auto iconRelease = newLatch();
    ASSERT_NO_FATAL_FAILURE(searchOld(0));
    ASSERT_NO_FATAL_FAILURE(searchNew(3));
    addHeldIcon(BADGES[1], iconPath(BADGES[1]), iconReached, iconRelease);
    oldRelease_->open();
    ASSERT_TRUE(iconReached->wait());

    newRelease_->open();
    ASSERT_TRUE(waitForImages(5));
    EXPECT_EQ(placesOf(sentImages()), (Texts{"0/2", "1/0", "0/0", "2/0", "2/2"}));
    EXPECT_EQ(filesOfOldThread(), (Texts{"10.png", "12.png", "20.png", "22.png"}));
    iconRelease->open();
    ASSERT_TRUE(waitForImages(6));
    ASSERT_NO_FATAL_FAILURE(waitForOldThread());
    EXPECT_EQ(filesOfOldThread(), (Texts{"10.png", "12.png", "20.png", "22.png"}));
    endAll();
    expectAllOnce(3);
}

TEST_F(SearchEmartControlSharedTest, TheOlderThreadGoesOnFromThePositionWhereItIs)
{
    ASSERT_NO_FATAL_FAILURE(searchOld(1));
    ASSERT_NO_FATAL_FAILURE(searchNew(3));
    oldRelease_->open();
    ASSERT_TRUE(waitForImages(3));
    ASSERT_NO_FATAL_FAILURE(waitForOldThread());
    EXPECT_EQ(filesOfOldThread(), (Texts{"20.png", "22.png", "30.png", "32.png"}));
    newRelease_->open();
    ASSERT_TRUE(waitForImages(6));
    EXPECT_EQ(placesOf(sentImages()), (Texts{"1/2", "2/0", "2/2", "0/0", "0/2", "1/0"}));
    endAll();
    expectAllOnce(3);
}

TEST_F(SearchEmartControlSharedTest, WithFewerProductsTheOlderThreadStops)
{
    ASSERT_NO_FATAL_FAILURE(searchOld(2));
    ASSERT_NO_FATAL_FAILURE(searchNew(2));
    oldRelease_->open();
    ASSERT_NO_FATAL_FAILURE(waitForOldThread());
    EXPECT_EQ(filesOfOldThread(), Texts{"30.png"});
    EXPECT_EQ(sentImages().size(), 0u);
    newRelease_->open();
    ASSERT_TRUE(waitForImages(4));
    endAll();
    expectAllOnce(2);
}

TEST_F(SearchEmartControlSharedTest, WithoutProductsTheOlderThreadStops)
{
    ASSERT_NO_FATAL_FAILURE(searchOld(0));
    retailer_.answerSearch(200, R"({"data": {"itemList": []}})");
    EXPECT_EQ(search_->processEmartSearch("new"), BAD_ANSWER);
    confirm();
    oldRelease_->open();
    ASSERT_NO_FATAL_FAILURE(waitForOldThread());
    EXPECT_EQ(filesOfOldThread(), Texts{"10.png"});
    EXPECT_EQ(fetched(), Texts{OLD});
    EXPECT_EQ(sentImages().size(), 0u);
    EXPECT_EQ(loggedErrors(), Texts{"parseResult: empty json array"});
}

// It may be let go while the newer search asks the retailer, and has no products yet.
TEST_F(SearchEmartControlSharedTest, AnOlderThreadThatFindsNoProductsYetDoesNotComeBack)
{
    ASSERT_NO_FATAL_FAILURE(searchOld(0));
    const std::string answer = Items::answer(
        {Items::pictured("new", addPicture("/new0.png", "/new0.png"), 90), Items::pictured("new", "")});
    addIcon(90, iconPath(90));
    retailer_.handle(RetailerServer::SEARCH_PATH, [=](const ServerRequest&, ServerConnection& connection) {
        oldRelease_->open();
        waitForOldThread();
        connection.answer(200, answer);
    });
    search("new");
    confirm();
    ASSERT_TRUE(waitForImages(2));
    EXPECT_EQ(filesOfOldThread(), Texts{"10.png"});
    EXPECT_EQ(placesOf(sentImages()), (Texts{"0/0", "0/2"}));
}

TEST_F(SearchEmartControlSharedTest, AnOlderPictureThatFailsIsLoggedAndItsThreadGoesOn)
{
    retailer_.handle(OLD, [=](const ServerRequest&, ServerConnection& connection) {
        oldReached_->open();
        oldRelease_->wait();
        connection.answer(404, "");
    });
    answerWith({Items::pictured("old", url(OLD))});
    search("old");
    ASSERT_TRUE(oldReached_->wait());
    oldThread_ = Calls::of("fopen").at(0).thread;
    ASSERT_NO_FATAL_FAILURE(searchNew(1));
    oldRelease_->open();
    ASSERT_TRUE(waitForImages(1));
    EXPECT_EQ(placesOf(sentImages()), Texts{"0/2"});
    EXPECT_EQ(loggedErrors(), (Texts{"startDownload: download failed, result: 0HTTP response: 404",
                                     "startDownloadImages: Failed to startDownload for index 0, type: 0"}));
    newRelease_->open();
    ASSERT_TRUE(waitForImages(2));
    EXPECT_EQ(readFile(imageFile("10.png")), picturePath(0));
}

TEST_F(SearchEmartControlSharedTest, WhatOneThreadCouldNotFetchTheOtherDoesNotTry)
{
    ASSERT_NO_FATAL_FAILURE(searchOld(0));
    ASSERT_NO_FATAL_FAILURE(searchNew(1));
    retailer_.answer(iconPath(BADGES[0]), 404, "");
    oldRelease_->open();
    ASSERT_NO_FATAL_FAILURE(waitForOldThread());
    newRelease_->open();
    ASSERT_TRUE(waitForImages(1));
    endAll();
    EXPECT_EQ(retailer_.countOf(iconPath(BADGES[0])), 1);
    EXPECT_EQ(placesOf(sentImages()), Texts{"0/0"});
}

// All of them run at once: each picture has one thread, whichever it is.
TEST_F(SearchEmartControlSharedTest, ManyThreadsFetchEachPictureOnce)
{
    constexpr int THREADS = 10;
    const auto release = newLatch();
    for (int i = 0; i < THREADS; ++i) {
        const auto reached = newLatch();
        const std::string path = "/old" + std::to_string(i) + ".png";
        answerWith({Items::pictured("old", addHeldPicture(path, path, reached, release)),
                    Items::pictured("old", url("/old-next.png"))});
        search(path);
        ASSERT_TRUE(reached->wait());
    }
    newRelease_->open();
    ASSERT_NO_FATAL_FAILURE(searchNew(6));
    release->open();
    ASSERT_TRUE(waitForImages(12));
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(readFile(imageFile(std::to_string(i + 1) + "0.png")), picturePath(i));
        EXPECT_EQ(readFile(imageFile(std::to_string(i + 1) + "2.png")), iconPath(BADGES[i]));
    }
    endAll();
    expectAllOnce(6);
}

TEST_F(SearchEmartControlSharedTest, TheEndOfTheControllerWaitsForAllThreads)
{
    ASSERT_NO_FATAL_FAILURE(searchOld(0));
    ASSERT_NO_FATAL_FAILURE(searchNew(3));
    // The end of the controller wipes the pictures' folder, and only then waits for the threads.
    Calls::before("system", [this] { openLatches(); });
    search_.reset();
    Calls::before("system", [] {});
    EXPECT_EQ(Calls::count("fclose"), 2u);
    EXPECT_EQ(sentImages().size(), 0u);
    EXPECT_EQ(fetched(), (Texts{OLD, picturePath(0)}));
    EXPECT_FALSE(std::filesystem::exists(imageFile("")));
    EXPECT_EQ(loggedErrors(), Texts());
}

}  // namespace Carvoy
