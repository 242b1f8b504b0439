// The picture folder and the page's files: what is served, and what never is.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "PageFiles.h"
#include "PictureFolder.h"
#include "ScratchRoot.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using Screen::PageFiles;
using Screen::PictureFolder;
using TestSupport::ScratchRoot;

void write(const fs::path& file, const std::string& text)
{
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

class APictureFolder : public testing::Test {
  protected:
    void SetUp() override
    {
        fs::remove_all(folder_.path().parent_path());
        fs::create_directories(folder_.path());
    }

    void add(const std::string& name, const std::string& bytes) const { write(folder_.path() / name, bytes); }

    std::string versionOf(const std::string& name) const
    {
        const std::string address = folder_.addressOf((folder_.path() / name).string());
        const std::size_t at = address.find("?v=");
        return at == std::string::npos ? "" : address.substr(at + 3);
    }

    const PictureFolder folder_{fs::path(ScratchRoot::file("media")) / "tmp"};
};

TEST_F(APictureFolder, ListsItsFilesByNumber)
{
    add("10.png", "ten");
    add("2.jpg", "two");
    const json files = folder_.list();
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0].at("name"), "2.jpg");
    EXPECT_EQ(files[0].at("size"), 3);
    EXPECT_EQ(files[0].at("version"), versionOf("2.jpg"));
    EXPECT_EQ(files[1].at("name"), "10.png");
}

TEST_F(APictureFolder, IsEmptyWhereThereIsNone)
{
    fs::remove_all(folder_.path());
    EXPECT_EQ(folder_.list(), json::array());
    EXPECT_EQ(folder_.addressOf((folder_.path() / "1.png").string()), "");
}

TEST_F(APictureFolder, ListsABoundedNumberOfFiles)
{
    for (std::size_t i = 0; i <= PictureFolder::FilesListed; ++i) {
        add(std::to_string(i) + ".png", "");
    }
    EXPECT_EQ(folder_.list().size(), PictureFolder::FilesListed);
}

TEST_F(APictureFolder, ReadsAFileWhileItHasItsVersion)
{
    add("1.png", "old");
    const std::string version = versionOf("1.png");
    EXPECT_EQ(folder_.read("1.png", version), "old");
    EXPECT_EQ(folder_.read("1.png", ""), std::nullopt);
    add("1.png", "newer");
    EXPECT_EQ(folder_.read("1.png", version), std::nullopt);
    EXPECT_EQ(folder_.read("1.png", versionOf("1.png")), "newer");
}

TEST_F(APictureFolder, GivesAddressesThatStandForThemselves)
{
    add("1.p#g ?&", "odd");
    EXPECT_EQ(folder_.addressOf((folder_.path() / "1.p#g ?&").string()).rfind("1.p%23g%20%3F%26?v=", 0), 0U);
}

TEST_F(APictureFolder, HasNothingButItsOwnPlainFiles)
{
    write(folder_.path().parent_path() / "secret", "secret");
    write(folder_.path() / "below" / "1.png", "below");
    fs::create_symlink("../secret", folder_.path() / "link.png");
    ASSERT_EQ(mkfifo((folder_.path() / "pipe.png").c_str(), 0600), 0);
    add(".hidden", "hidden");
    EXPECT_EQ(folder_.list(), json::array());
    const std::string inside = folder_.path().string();
    for (const char* path :
         {"/../secret", "/below/1.png", "/link.png", "/pipe.png", "/.hidden", "/below", "/", ""}) {
        EXPECT_EQ(folder_.addressOf(inside + path), "") << path;
    }
    EXPECT_EQ(folder_.addressOf("/etc/passwd"), "");
    EXPECT_EQ(folder_.addressOf("1.png"), "");
    for (const std::string name :
         {"../secret", "below/1.png", "link.png", "pipe.png", ".hidden", "..", "", "below"}) {
        EXPECT_EQ(folder_.read(name, ""), std::nullopt) << name;
    }
}

TEST_F(APictureFolder, IsNoneWhereALinkIsInItsPlace)
{
    const fs::path elsewhere = folder_.path().parent_path() / "elsewhere";
    write(elsewhere / "1.png", "elsewhere");
    add("1.png", "here");
    const std::string version = versionOf("1.png");
    fs::remove_all(folder_.path());
    fs::create_directory_symlink(elsewhere, folder_.path());
    EXPECT_EQ(folder_.list(), json::array());
    EXPECT_EQ(versionOf("1.png"), "");
    EXPECT_EQ(folder_.read("1.png", version), std::nullopt);
}

TEST(APicturesType, IsToldByItsFirstBytes)
{
    using Screen::pictureType;
    EXPECT_EQ(pictureType("\x89PNG\r\n\x1A\n..."), "image/png");
    EXPECT_EQ(pictureType("\xFF\xD8\xFF\xE0"), "image/jpeg");
    EXPECT_EQ(pictureType("GIF89a..."), "image/gif");
    EXPECT_EQ(pictureType("GIF87a..."), "image/gif");
    for (const char* other : {"", "GIF88a", "<svg onload='x'>", "<html>", "\x89PN"}) {
        EXPECT_EQ(pictureType(other), "application/octet-stream") << other;
    }
}

class ThePagesFiles : public testing::Test {
  protected:
    void SetUp() override
    {
        fs::remove_all(folder_);
        write(folder_ / "index.html", "<!doctype html>");
        write(folder_ / "parts" / "card.js", "export {};");
        write(folder_ / "screen.css", "body {}");
        write(folder_ / "notes.txt", "not a part of the page");
    }

    const fs::path folder_ = ScratchRoot::file("page");
};

TEST_F(ThePagesFiles, AreFoundByTheirPaths)
{
    const PageFiles files(folder_);
    EXPECT_EQ(files.find("/").value().bytes, "<!doctype html>");
    EXPECT_EQ(files.find("/index.html").value().type, "text/html; charset=utf-8");
    EXPECT_EQ(files.find("/parts/card.js").value().type, "text/javascript; charset=utf-8");
    EXPECT_EQ(files.find("/screen.css").value().bytes, "body {}");
}

TEST_F(ThePagesFiles, AreReadAnew)
{
    const PageFiles files(folder_);
    write(folder_ / "screen.css", "main {}");
    EXPECT_EQ(files.find("/screen.css").value().bytes, "main {}");
    fs::remove(folder_ / "screen.css");
    EXPECT_FALSE(files.find("/screen.css"));
}

TEST_F(ThePagesFiles, AreThoseOfTheStartAndNoOthers)
{
    const PageFiles files(folder_);
    write(folder_ / "late.js", "");
    for (const char* path : {"", "/notes.txt", "/late.js", "/parts", "/parts/", "/../page/index.html",
                             "//index.html", "/parts/../index.html", "/etc/passwd", "index.html"}) {
        EXPECT_FALSE(files.find(path)) << path;
    }
}

TEST_F(ThePagesFiles, MustHoldAPage)
{
    fs::remove(folder_ / "index.html");
    EXPECT_THROW(PageFiles{folder_}, std::runtime_error);
    EXPECT_THROW(PageFiles{folder_ / "nowhere"}, std::runtime_error);
}

}  // namespace
