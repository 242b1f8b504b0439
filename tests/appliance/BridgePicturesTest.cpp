// How pictures are served, and that nothing else is.
#include "Pictures.h"

#include "BridgeFixture.h"
#include "ScratchRoot.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace ApplianceTest {
namespace {

using Appliance::StandIn::Pictures;

class APicture : public BridgeFixture {
  protected:
    static std::string stored(const std::string& name)
    {
        return readFile(std::string(MERCHANT_BRIDGE_PICTURES) + "/" + name);
    }

    const std::string name = "whole-milk.png";
};

TEST(ThePicturesFolder, YieldsItsPicturesOnly)
{
    const std::string folder = TestSupport::ScratchRoot::file("pictures");
    std::filesystem::create_directories(folder + "/folder.png");
    for (const char* file : {"a.png", "b.jpg", "c.gif", "d.txt", "e"})
        std::ofstream(folder + "/" + file) << file;
    const Pictures pictures(folder);
    ASSERT_TRUE(pictures.find("a.png"));
    EXPECT_EQ(pictures.find("a.png")->bytes, "a.png");
    EXPECT_EQ(pictures.find("a.png")->contentType, "image/png");
    EXPECT_EQ(pictures.find("b.jpg")->contentType, "image/jpeg");
    EXPECT_EQ(pictures.find("c.gif")->contentType, "image/gif");
    for (const char* file : {"d.txt", "e", "folder.png", "", ".", "..", "./a.png", "../pictures/a.png"})
        EXPECT_EQ(pictures.find(file), nullptr) << file;
}

TEST(ThePicturesFolder, MustExist)
{
    EXPECT_THROW(Pictures("/nowhere"), std::exception);
}

TEST_F(APicture, IsServedWithItsTypeAndNeedsNoTokens)
{
    HttpsClient client = customer();
    client.headers.clear();
    for (const auto& [file, type] :
         {std::pair("whole-milk.png", "image/png"), std::pair("organic-whole-milk.jpg", "image/jpeg"),
          std::pair("2-reduced-fat-milk.gif", "image/gif")}) {
        const Reply reply = client.get(std::string("/images/") + file);
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(reply.contentType, type);
        EXPECT_EQ(reply.body, stored(file));
    }
}

TEST_F(APicture, IsAllThatCanBeFetched)
{
    for (const char* path :
         {"/", "/images", "/images/", "/images/README.md", "/images/draw.py", "/images/../catalogue.json",
          "/images/%2e%2e/catalogue.json", "/images/..%2fcatalogue.json",
          "/images/..%2f..%2f..%2f..%2fetc/passwd", "/images//etc/passwd", "/images/%2fetc%2fpasswd",
          "/images/whole-milk.png%00", "/images/./whole-milk.png", "/images/status/../whole-milk.png",
          "/catalogue.json", "/merchantbridge-production/api/product/search/x"}) {
        const Reply reply = customer().get(path);
        EXPECT_EQ(reply.status, 404) << path;
        EXPECT_EQ(reply.contentType, "application/json") << path;
    }
}

TEST_F(APicture, ThatIsToBeMissingIsMissingAndTheOthersAreNot)
{
    EXPECT_EQ(customer().get(picturePathOf("milk ~image-404=2", 2)).status, 404);
    EXPECT_EQ(customer().get(picturePathOf("milk ~image-404=2", 1)).status, 200);
    EXPECT_EQ(customer().get(picturePathOf("milk ~image-404=1,3", 3)).status, 404);
}

TEST_F(APicture, AnswersWithTheStatusAskedFor)
{
    const Reply reply = customer().get(picturePathOf("milk ~image-status=503:1", 1));
    EXPECT_EQ(reply.result, CURLE_OK);
    EXPECT_EQ(reply.status, 503);
}

TEST_F(APicture, HasNoBodyWhereTheStatusForbidsOne)
{
    for (const int status : {204, 304}) {
        const std::string word = "milk ~image-status=" + std::to_string(status) + ":1";
        const Reply reply = customer().get(picturePathOf(word, 1));
        EXPECT_EQ(reply.result, CURLE_OK);
        EXPECT_EQ(reply.status, status);
        EXPECT_EQ(reply.body, "");
    }
}

TEST_F(APicture, IsReachedThroughOneRedirect)
{
    const std::string path = picturePathOf("milk ~image-redirect=1", 1);
    HttpsClient client = customer();
    EXPECT_EQ(client.get(path).status, 302);
    client.followsRedirects = true;
    const Reply reply = client.get(path);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body.substr(1, 3), "PNG");
}

TEST_F(APicture, ThatTricklesComesInSeveralPartsNotBeforeItsTimeAndWhole)
{
    HttpsClient client = customer();
    int parts = 0;
    client.onData = [&](const std::string&) { ++parts; };
    const auto begin = std::chrono::steady_clock::now();
    const Reply reply = client.get("/images/slow/300/" + name);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(300));
    EXPECT_EQ(reply.result, CURLE_OK);
    EXPECT_EQ(reply.body, stored(name));
    EXPECT_GT(parts, 1);
}

TEST_F(APicture, ThatStallsStopsHalfWayUntilTheServerEnds)
{
    const std::string whole = stored(name);
    HttpsClient client = customer();
    std::thread end;
    client.onData = [&](const std::string& soFar) {
        if (soFar.size() == whole.size() / 2)
            end = std::thread([this] { server.reset(); });
    };
    const Reply reply = client.get("/images/stall/" + name);
    ASSERT_TRUE(end.joinable());
    end.join();
    EXPECT_NE(reply.result, CURLE_OK);
    EXPECT_EQ(reply.body, whole.substr(0, whole.size() / 2));
}

TEST_F(APicture, ThatStallsFreesItsThreadWhenTheClientLeaves)
{
    HttpsClient leaving = customer();
    leaving.onData = [](const std::string&) { throw std::runtime_error("the client leaves"); };
    // More clients than the server has threads.
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(leaving.get("/images/stall/" + name).result, CURLE_WRITE_ERROR);
    EXPECT_EQ(customer().get("/images/" + name).status, 200);
}

}  // namespace
}  // namespace ApplianceTest
