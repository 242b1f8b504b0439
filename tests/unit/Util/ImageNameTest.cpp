// The names of the image files, and that no address leads anywhere else.
#include <curl/curl.h>

#include <filesystem>
#include <ostream>

#include "ImageDownloadFixture.h"

namespace fs = std::filesystem;
using TestSupport::Call;
using TestSupport::Calls;

namespace {

struct Name {
    std::string path;
    std::string file;
};

void PrintTo(const Name& name, std::ostream* out)
{
    *out << name.path;
}

class ImageName : public ImageDownload, public testing::WithParamInterface<Name> {};

}  // namespace

TEST_F(ImageDownload, AnAddressWithoutADotIsItselfTheExtensionAndCannotBeOpened)
{
    EXPECT_FALSE(start(10, "/milk"));
    EXPECT_EQ(Calls::of("fopen").at(0).arguments.at(0),
              (folder() + "/10." + server.url("/milk")).substr(0, 127));
    EXPECT_EQ(errorMessages(), List{"Failed to open file to image data write"});
    EXPECT_EQ(files(), List());
}

TEST_F(ImageDownload, AnEmptyAddressHasAnEmptyExtension)
{
    EXPECT_FALSE(downloader.startDownload(10, "", openGate));
    EXPECT_EQ(files(), List{"10."});
    EXPECT_EQ(errorMessages(), List{std::string("curl_easy_perform failed, result: ") +
                                    curl_easy_strerror(CURLE_URL_MALFORMAT)});
}

TEST_F(ImageDownload, ASlashBehindTheLastDotCannotBeOpened)
{
    EXPECT_FALSE(start(10, "/v1.2/milk"));
    EXPECT_EQ(Calls::of("fopen").at(0).arguments.at(0), fileOf("10.2/milk"));
    EXPECT_EQ(errorMessages(), List{"Failed to open file to image data write"});
    EXPECT_EQ(files(), List());
}

TEST_F(ImageDownload, NoAddressLeadsOutOfTheFolder)
{
    const fs::path parent = fs::path(folder()).parent_path();
    start(10, "/a.b");  // the file "10.b", which is no folder
    for (const std::string path : {"/x/../../../evil", "/x.b/../../evil", "/..", "/x./../evil"})
        start(10, path);

    for (const Call& call : Calls::of("fopen")) {
        EXPECT_EQ(call.arguments.at(0).rfind(folder() + "/10.", 0), 0U);
        EXPECT_EQ(call.arguments.at(0).find("/../"), std::string::npos);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(parent), fs::directory_iterator()), 1);
}

TEST_F(ImageDownload, ALongExtensionIsCutSoThatThePathHas127Bytes)
{
    const std::string extension(300, 'x');
    const std::string path = fileOf("10." + extension).substr(0, 127);

    EXPECT_TRUE(start(10, "/milk." + extension));
    EXPECT_EQ(downloader.downloaded[10], path);
    EXPECT_EQ(contentOf(path), picture());
    EXPECT_EQ(files().size(), 1U);
}

TEST_F(ImageDownload, ALongAddressOfAKnownKindHasAShortName)
{
    const std::string longPath = "/" + std::string(5000, 'x') + ".png";

    EXPECT_TRUE(start(10, longPath));
    EXPECT_EQ(files(), List{"10.png"});
}

TEST_P(ImageName, IsTheIdAndWhatTheAddressSuggests)
{
    EXPECT_EQ(filesAfter(GetParam().path), List{GetParam().file});
}

INSTANTIATE_TEST_SUITE_P(
    Extensions, ImageName,
    testing::Values(Name{"/milk.gif", "10.gif"}, Name{"/milk.png", "10.png"}, Name{"/milk.jpg", "10.jpg"},
                    Name{"/milk.jpeg", "10.jpg"}, Name{"/milk.JPEG", "10.jpg"}, Name{"/milk.JpG", "10.jpg"},
                    Name{"/milk.PNG", "10.png"}, Name{"/milk.GIF", "10.gif"}, Name{"/milk.webp", "10.webp"},
                    Name{"/milk.WEBP", "10.WEBP"}, Name{"/png/milk.jpg", "10.png"},
                    Name{"/jpg/milk.gif", "10.gif"}, Name{"/jpeg.png", "10.png"},
                    Name{"/gif/milk.png", "10.gif"}, Name{"/milk?format=PNG", "10.png"},
                    Name{"/milk.webp#jpeg", "10.jpg"}, Name{"/ungifted.webp", "10.gif"},
                    Name{"/milk.jpx", "10.jpx"}, Name{"/milk.jp2", "10.jp2"}, Name{"/milk.", "10."},
                    Name{"/milk.webp?size=3&x=y", "10.webp?size=3&x=y"}, Name{"/milk.tar.bz", "10.bz"},
                    Name{"/milk.a b", "10.a b"}, Name{"/milk.$(id)", "10.$(id)"}));
