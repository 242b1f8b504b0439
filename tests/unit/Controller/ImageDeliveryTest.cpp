// Pictures that wait for the UI app, and the numbers of the searches that they belong to.
#include "ImageDelivery.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "Latch.h"
#include "Singleton.h"
#include "ThreadStartFault.h"

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

class ImageDeliveryTest : public testing::Test {
  protected:
    void push(unsigned search, const std::string& path)
    {
        delivery_.push(search, {0, path, Util::DownloadImageType::PRODUCT_IMAGE});
    }

    unsigned begin()
    {
        return delivery_.begin([] {});
    }

    Texts sent_;
    ImageDelivery delivery_{[this](const ImagePath& image) { sent_.push_back(image.path); }};
};

}  // namespace

TEST_F(ImageDeliveryTest, AllDeliveriesShareTheProcesssDownloader)
{
    EXPECT_NE(ImageDelivery::downloader(), nullptr);
    EXPECT_EQ(delivery_.downloader(), Util::Singleton<Util::ImageCurlDownloader>::getInstance());
}

TEST_F(ImageDeliveryTest, EachSearchHasANumberOfItsOwn)
{
    const unsigned first = begin();
    EXPECT_EQ(delivery_.guarded([] {}), first);
    const unsigned second = begin();
    EXPECT_NE(second, first);
    EXPECT_EQ(delivery_.guarded([] {}), second);
}

TEST_F(ImageDeliveryTest, OnlyAStepOfTheCurrentSearchIsRun)
{
    int runs = 0;
    const unsigned first = begin();
    EXPECT_TRUE(delivery_.ifCurrent(first, [&] { ++runs; }));
    const unsigned second = begin();
    EXPECT_FALSE(delivery_.ifCurrent(first, [&] { ++runs; }));
    EXPECT_FALSE(delivery_.ifCurrent(second + 1, [&] { ++runs; }));
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(delivery_.ifCurrent(second, [&] { ++runs; }));
    EXPECT_EQ(runs, 2);
}

TEST_F(ImageDeliveryTest, AGuardedStepIsRunForEverySearch)
{
    int runs = 0;
    delivery_.guarded([&] { ++runs; });
    begin();
    delivery_.guarded([&] { ++runs; });
    EXPECT_EQ(runs, 2);
}

TEST_F(ImageDeliveryTest, ABeginningRunsItsStepOnce)
{
    int runs = 0;
    delivery_.begin([&] { ++runs; });
    EXPECT_EQ(runs, 1);
}

TEST_F(ImageDeliveryTest, PicturesWaitUntilTheUiAppIsReady)
{
    const unsigned search = begin();
    push(search, "a");
    push(search, "b");
    EXPECT_FALSE(delivery_.sendAll());
    EXPECT_EQ(sent_, Texts());
    delivery_.setUIReady();
    EXPECT_EQ(sent_, Texts());
    EXPECT_TRUE(delivery_.sendAll());
    EXPECT_EQ(sent_, (Texts{"a", "b"}));
    EXPECT_TRUE(delivery_.sendAll());
    EXPECT_EQ(sent_, (Texts{"a", "b"}));
}

TEST_F(ImageDeliveryTest, APictureIsSentAtOnceWhenTheUiAppIsReady)
{
    const unsigned search = begin();
    delivery_.setUIReady();
    push(search, "a");
    EXPECT_EQ(sent_, Texts{"a"});
    EXPECT_TRUE(delivery_.sendAll());
    EXPECT_EQ(sent_, Texts{"a"});
}

TEST_F(ImageDeliveryTest, APictureDoesNotOvertakeThoseThatWait)
{
    const unsigned search = begin();
    push(search, "a");
    push(search, "b");
    delivery_.setUIReady();
    push(search, "c");
    EXPECT_EQ(sent_, (Texts{"a", "b", "c"}));
}

TEST_F(ImageDeliveryTest, APictureIsSentAsItWasPushed)
{
    std::vector<ImagePath> images;
    ImageDelivery delivery([&](const ImagePath& image) { images.push_back(image); });
    const unsigned search = delivery.begin([] {});
    delivery.push(search, {3, "waited", Util::DownloadImageType::DISCOUNT_ICON_IMAGE});
    delivery.setUIReady();
    delivery.push(search, {5, "at once", Util::DownloadImageType::PRODUCT_IMAGE});
    ASSERT_EQ(images.size(), 2u);
    EXPECT_EQ(images[0].index, 3);
    EXPECT_EQ(images[0].path, "waited");
    EXPECT_EQ(images[0].type, Util::DownloadImageType::DISCOUNT_ICON_IMAGE);
    EXPECT_EQ(images[1].index, 5);
    EXPECT_EQ(images[1].path, "at once");
    EXPECT_EQ(images[1].type, Util::DownloadImageType::PRODUCT_IMAGE);
}

TEST_F(ImageDeliveryTest, APictureOfAnOlderSearchIsDropped)
{
    const unsigned older = begin();
    const unsigned newer = begin();
    push(older, "old");
    delivery_.setUIReady();
    push(older, "old");
    push(newer, "new");
    EXPECT_EQ(sent_, Texts{"new"});
}

TEST_F(ImageDeliveryTest, ANewSearchForgetsWhatWaitsAndThatTheUiAppWasReady)
{
    push(begin(), "old");
    delivery_.setUIReady();
    begin();
    EXPECT_FALSE(delivery_.sendAll());
    delivery_.setUIReady();
    EXPECT_TRUE(delivery_.sendAll());
    EXPECT_EQ(sent_, Texts());
}

// Where the sanitizers look for races, this is what they look at.
TEST_F(ImageDeliveryTest, NothingElseRunsBesideAStepOrTheSender)
{
    constexpr int ROUNDS = 2000;
    int count = 0;
    ImageDelivery delivery([&](const ImagePath&) { ++count; });
    const unsigned search = delivery.begin([] {});
    delivery.setUIReady();
    auto repeat = [](auto step) {
        return std::thread([step] {
            for (int i = 0; i < ROUNDS; ++i)
                step();
        });
    };
    std::thread pushing = repeat([&] { delivery.push(search, {0, "a", {}}); });
    std::thread guarding = repeat([&] { delivery.guarded([&] { ++count; }); });
    std::thread asking = repeat([&] { delivery.ifCurrent(search, [&] { ++count; }); });
    pushing.join();
    guarding.join();
    asking.join();
    EXPECT_EQ(count, 3 * ROUNDS);
}

TEST_F(ImageDeliveryTest, AMutexIsGivenBackByAStepThatThrows)
{
    const unsigned search = begin();
    EXPECT_THROW(delivery_.guarded([] { throw std::runtime_error("step"); }), std::runtime_error);
    EXPECT_THROW(delivery_.ifCurrent(search, [] { throw std::runtime_error("step"); }), std::runtime_error);
    delivery_.setUIReady();
    EXPECT_TRUE(delivery_.sendAll());
}

TEST_F(ImageDeliveryTest, PicturesAreFetchedOnAThreadThatTheEndWaitsFor)
{
    std::thread::id thread;
    bool isOver = false;
    {
        Latch started;
        ImageDelivery delivery([](const ImagePath&) {});
        delivery.download([&] {
            thread = std::this_thread::get_id();
            started.wait();
            isOver = true;
        });
        started.open();
    }
    EXPECT_TRUE(isOver);
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(ImageDeliveryTest, WithoutAThreadNothingIsFetched)
{
    bool hasRun = false;
    {
        const ThreadStartFault fault;
        EXPECT_THROW(delivery_.download([&] { hasRun = true; }), std::system_error);
    }
    EXPECT_FALSE(hasRun);
    const auto isRun = std::make_shared<Latch>();
    delivery_.download([isRun] { isRun->open(); });
    EXPECT_TRUE(isRun->wait());
}

}  // namespace Carvoy
