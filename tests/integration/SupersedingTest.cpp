// A search that a newer one replaces: what of it may still reach the UI app, and what must not.
#include "ServiceWorld.h"

namespace ServiceTest {

namespace {

using TestSupport::RawMessage;
using Texts = std::vector<std::string>;

class ASupersededSearch : public ServiceWorld {
  protected:
    void start(const TestSupport::ChildProcess::Variables& added = {})
    {
        ui = std::make_unique<UiPeer>();
        stock(threeProducts());
        service = runService(added);
        ASSERT_TRUE(TestSupport::waitForName(ServiceId)) << service->errors();
        resultMessage();
        atRest_ = threads();
    }

    void searchAndConfirm(const std::string& term)
    {
        search(term);
        const RawMessage result = resultMessage();
        EXPECT_EQ(textOf(result, "key_search_term"), term);
        EXPECT_EQ(ui->confirm(result), "");
    }

    /** No picture is on its way any more. */
    void waitForPictures() { ASSERT_TRUE(waitForThreads(atRest_)); }

  private:
    std::size_t atRest_ = 0;
};

TEST_F(ASupersededSearch, WhosePictureThenFailsTellsTheUiAppNothing)
{
    start();
    merchant->hold("/p/whole.png");
    merchant->answer("/p/whole.png", {404, "no such picture", "text/plain"});
    searchAndConfirm("old");
    ASSERT_TRUE(merchant->waitForRequests("/p/whole.png"));
    merchant->answer(Merchant::SearchPath, {200, answerOf({{"New Milk", "/new/one.png"}})});
    merchant->answer("/new/one.png", {200, pictureBytes("/new/one.png"), "image/png"});
    merchant->hold("/new/one.png");

    searchAndConfirm("new");
    ASSERT_TRUE(merchant->waitForRequests("/new/one.png"));
    merchant->release("/p/whole.png");
    ASSERT_TRUE(log.waitFor("download failed, result: 0HTTP response: 404"));
    merchant->release("/new/one.png");
    waitForPictures();

    const Picture picture = ui->nextPicture();
    EXPECT_EQ(picture.index, "0");
    EXPECT_TRUE(contentOf(picture.path) == pictureBytes("/new/one.png")) << picture.path;
    EXPECT_EQ(textOf(resultMessage(), "key_search_term"), "new");
    EXPECT_EQ(merchant->requests("/p/oat.jpg").size(), 0U);
}

// The confirmation queues all the pictures at once, and messages leave one at a time with a pause between
// them.
TEST_F(ASupersededSearch, WhosePicturesWereQueuedHasThemSentBeforeTheNewResult)
{
    start();
    search("old");
    const RawMessage old = resultMessage();
    waitForPictures();
    EXPECT_EQ(ui->confirm(old), "");

    search("new");
    askForResult();

    for (const char* index : {"0", "1", "2"})
        EXPECT_EQ(ui->nextPicture().index, index);
    EXPECT_EQ(textOf(ui->nextResult(), "key_search_term"), "new");
    waitForPictures();
    EXPECT_EQ(textOf(resultMessage(), "key_search_term"), "new");
}

// A path with a blank is kept from the shell that wipes the pictures: the file of the older search is still
// there, and still being written to, when the newer one opens a file of the same name.
TEST_F(ASupersededSearch, NeverWritesIntoThePicturesOfTheNewOneWhereTheyCannotBeWiped)
{
    const std::string folder = root + "/a blank";
    std::filesystem::create_directory_symlink(root, folder);
    start({{"APPLIANCE_ROOT", folder}});
    merchant->hold("/p/whole.png");
    searchAndConfirm("old");
    ASSERT_TRUE(merchant->waitForRequests("/p/whole.png"));
    ASSERT_EQ(pictureFiles(), Texts{"1.png"});
    stock({{"New Milk", "/new/one.png"}});

    searchAndConfirm("new");
    const Picture picture = ui->nextPicture();
    EXPECT_EQ(picture.path, folder + "/media/tmp/1.png");
    merchant->release("/p/whole.png");
    waitForPictures();

    EXPECT_TRUE(contentOf(picture.path) == pictureBytes("/new/one.png"));
    EXPECT_EQ(pictureFiles(), Texts{"1.png"});
    EXPECT_EQ(textOf(resultMessage(), "key_search_term"), "new");
}

}  // namespace

}  // namespace ServiceTest
