// What a picture's URL does to the name of its file, and what it can never do.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "ScratchRoot.h"
#include "SearchControlFixture.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

const std::string OPEN_FAILED = "startDownload: Failed to open file to image data write";

class PictureUrlTest : public SearchControlFixture {
  protected:
    /** Searches one product with this picture, and a second one whose picture tells when the first is done.
     */
    void search(const std::string& url)
    {
        answerWithPictures({url, addPicture("/done.png", "done")});
        ASSERT_EQ(search_->processSearch("freshmart", "milk"), 0);
        confirm();
    }

    /** The picture of this URL, which the merchant has, comes under this name. */
    void expectName(const std::string& url, const std::string& name)
    {
        Calls::reset();
        const std::string target = url.substr(MerchantServer::url("").size());
        addPicture(target.substr(0, target.find('?')), "content of " + url);
        search(url);
        ASSERT_TRUE(waitForImages(2)) << url;
        const SentMessage image = sentImages().at(0);
        EXPECT_EQ(image.text("key_product_image_num"), "0") << url;
        EXPECT_EQ(image.text("key_product_image_path"), imageFile(name)) << url;
        EXPECT_EQ(readFile(imageFile(name)), "content of " + url);
        EXPECT_EQ(loggedErrors(), Texts()) << url;
    }

    /** There is no picture under this URL, and this is what is logged about it. */
    void expectFailure(const std::string& url, const std::string& error)
    {
        Calls::reset();
        search(url);
        ASSERT_TRUE(waitForImages(1)) << url;
        EXPECT_EQ(sentImages().at(0).text("key_product_image_num"), "1") << url;
        EXPECT_EQ(loggedErrors(), (Texts{error, "operator(): Failed to startDownload for index 0"})) << url;
    }

    /** Everything below the media folder and beside it, but for the image directory's own files. */
    static Texts filesElsewhere()
    {
        Texts files;
        for (const auto& entry : fs::recursive_directory_iterator(TestSupport::ScratchRoot::path())) {
            const std::string path = entry.path().string();
            if (entry.is_regular_file() && path.rfind(imageFile(""), 0) != 0)
                files.push_back(path);
        }
        std::sort(files.begin(), files.end());
        return files;
    }
};

}  // namespace

TEST_F(PictureUrlTest, TheKindOfPictureIsFoundAnywhereInTheUrl)
{
    expectName(MerchantServer::url("/milk.gif"), "1.gif");
    expectName(MerchantServer::url("/milk.png"), "1.png");
    expectName(MerchantServer::url("/milk.jpg"), "1.jpg");
    expectName(MerchantServer::url("/milk.JPEG"), "1.jpg");
    expectName(MerchantServer::url("/png/milk.jpg"), "1.png");
    expectName(MerchantServer::url("/jpg-png/milk.gif"), "1.gif");
    expectName(MerchantServer::url("/milk?format=PNG"), "1.png");
}

TEST_F(PictureUrlTest, AnotherKindKeepsWhatFollowsTheLastDot)
{
    expectName(MerchantServer::url("/milk.webp"), "1.webp");
    expectName(MerchantServer::url("/milk.WebP"), "1.WebP");
    expectName(MerchantServer::url("/milk.tar.bmp"), "1.bmp");
}

TEST_F(PictureUrlTest, AUrlThatEndsInADotGivesANameThatDoesToo)
{
    expectName(MerchantServer::url("/milk."), "1.");
}

TEST_F(PictureUrlTest, AQueryBehindTheLastDotBelongsToTheName)
{
    expectName(MerchantServer::url("/milk.webp?size=1&x=%20"), "1.webp?size=1&x=%20");
}

TEST_F(PictureUrlTest, AnEmptyUrlIsNoPicture)
{
    expectFailure(
        "", "startDownload: curl_easy_perform failed, result: URL using bad/illegal format or missing URL");
    EXPECT_EQ(readFile(imageFile("1.")), "");
}

TEST_F(PictureUrlTest, ASlashBehindTheLastDotCannotBeOpened)
{
    const std::string path = "/pictures/milk";
    addPicture(path, "milk");
    expectFailure(MerchantServer::url(path), OPEN_FAILED);
    EXPECT_EQ(merchant_.countOf(path), 0);
}

TEST_F(PictureUrlTest, AUrlWithoutADotCannotBeOpened)
{
    expectFailure("https://localhost/milk", OPEN_FAILED);
}

TEST_F(PictureUrlTest, AUrlWithoutADotAndASlashIsAWholeName)
{
    expectFailure(
        ":milk",
        "startDownload: curl_easy_perform failed, result: URL using bad/illegal format or missing URL");
    EXPECT_TRUE(fs::exists(imageFile("1.:milk")));
}

TEST_F(PictureUrlTest, ALongNameIsCutWithinTheImageDirectory)
{
    const std::string extension(300, 'x');
    const std::string cut = imageFile("1." + extension).substr(0, 127);
    addPicture("/milk." + extension, "milk");
    search(MerchantServer::url("/milk." + extension));
    ASSERT_TRUE(waitForImages(2));
    EXPECT_EQ(sentImages().at(0).text("key_product_image_path"), cut);
    EXPECT_EQ(readFile(cut), "milk");
}

TEST_F(PictureUrlTest, AUrlOfAMegabyteIsHarmless)
{
    const std::string path = "/milk.png?" + std::string(1024 * 1024, 'x');
    search(MerchantServer::url(path));
    ASSERT_TRUE(waitForImages(1));
    EXPECT_TRUE(holds(loggedErrors(), "operator(): Failed to startDownload for index 0"));
}

TEST_F(PictureUrlTest, NoUrlWritesOutsideTheImageDirectory)
{
    expectName(MerchantServer::url("/milk.png"), "1.png");
    const Texts before = filesElsewhere();
    const std::string up = "/../../../evil";
    for (const std::string& url :
         {MerchantServer::url("/a." + up), MerchantServer::url("/a.b/.." + up), std::string("x.") + up,
          std::string("/../evil"), MerchantServer::url("/a.\n" + up), std::string("a./etc/passwd"),
          MerchantServer::url("/a.") + std::string(80, '/') + "evil"}) {
        Calls::reset();
        search(url);
        ASSERT_TRUE(waitForImages(1)) << url;
        for (const TestSupport::Call& call : Calls::of("fopen"))
            EXPECT_EQ(call.arguments.at(0).rfind(imageFile(""), 0), 0u) << call.arguments.at(0);
    }
    EXPECT_EQ(filesElsewhere(), before);
}

// What libcurl can fetch without a server has no status.
TEST_F(PictureUrlTest, AFileOfThisMachineIsNoPicture)
{
    const std::string secret = TestSupport::ScratchRoot::file("media/secret.png");
    writeFile(secret, "secret");
    expectFailure("file://" + secret, "startDownload: download failed, result: 0HTTP response: 0");
}

TEST_F(PictureUrlTest, APictureThatHasMovedIsFetchedWhereItIs)
{
    merchant_.answer("/old.png", 301, "moved", "Location: " + MerchantServer::url("/new.gif") + "\r\n");
    addPicture("/new.gif", "picture");
    search(MerchantServer::url("/old.png"));
    ASSERT_TRUE(waitForImages(2));
    EXPECT_EQ(sentImages().at(0).text("key_product_image_path"), imageFile("1.png"));
    EXPECT_EQ(readFile(imageFile("1.png")), "picture");
}

}  // namespace Carvoy
