// How product pictures and badge icons are served, and that nothing else is.
#include "RetailerFixture.h"

#include <set>
#include <stdexcept>
#include <thread>

namespace ApplianceTest {
namespace {

class ARetailerPicture : public RetailerFixture {
  protected:
    static std::string stored(const std::string& name)
    {
        return readFile(std::string(RETAILER_PICTURES) + "/" + name);
    }

    const std::string name = "kimchi.png";
};

TEST_F(ARetailerPicture, IsServedToAnyClientForEveryProduct)
{
    HttpClient anybody(host, server->port());
    std::set<std::string> urls;
    for (const auto& item : items("~image-stall=999"))
        urls.insert(item.at("itemImgUrl"));
    const std::string origin = std::string("http://") + host;
    for (const std::string& url : urls) {
        const Reply reply = anybody.get(url.substr(origin.size()));
        EXPECT_EQ(reply.status, 200) << url;
        EXPECT_EQ(reply.body, stored(url.substr(url.rfind('/') + 1))) << url;
    }
}

TEST_F(ARetailerPicture, IsAllThatCanBeFetched)
{
    for (const char* path : {"/", "/images/", "/images/README.md", "/images/../catalogue.json",
                             "/images/%2e%2e/catalogue.json", "/images/90.png", "/catalogue.json"}) {
        EXPECT_EQ(client().get(path).status, 404) << path;
    }
    const std::string longPath = "/images/" + std::string(7000, 'a');
    EXPECT_EQ(client().get(longPath).status, 404);
}

TEST_F(ARetailerPicture, MakesTheTroubleThatTheTermAsksFor)
{
    EXPECT_EQ(client().get(picturePathOf("우유 ~image-404=2", 2)).status, 404);
    EXPECT_EQ(client().get(picturePathOf("우유 ~image-404=2", 1)).status, 200);
    EXPECT_EQ(client().get(picturePathOf("우유 ~image-status=503:1", 1)).status, 503);
    HttpClient follower = client();
    follower.followsRedirects = true;
    const std::string path = picturePathOf("우유 ~image-redirect=1", 1);
    EXPECT_EQ(client().get(path).status, 302);
    EXPECT_EQ(follower.get(path).status, 200);
}

TEST_F(ARetailerPicture, ThatTricklesComesInSeveralPartsNotBeforeItsTimeAndWhole)
{
    HttpClient patient = client();
    int parts = 0;
    patient.onData = [&](const std::string&) { ++parts; };
    const auto begin = std::chrono::steady_clock::now();
    const Reply reply = patient.get("/images/slow/300/" + name);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(300));
    EXPECT_EQ(reply.result, CURLE_OK);
    EXPECT_EQ(reply.body, stored(name));
    EXPECT_GT(parts, 1);
}

TEST_F(ARetailerPicture, ThatStallsStopsHalfWayUntilTheServerEnds)
{
    const std::string whole = stored(name);
    HttpClient waiting = client();
    std::thread end;
    waiting.onData = [&](const std::string& soFar) {
        if (soFar.size() == whole.size() / 2)
            end = std::thread([this] { server.reset(); });
    };
    const Reply reply = waiting.get("/images/stall/" + name);
    ASSERT_TRUE(end.joinable());
    end.join();
    EXPECT_NE(reply.result, CURLE_OK);
    EXPECT_EQ(reply.body, whole.substr(0, whole.size() / 2));
}

TEST_F(ARetailerPicture, ThatStallsFreesItsThreadWhenTheClientLeaves)
{
    HttpClient leaving = client();
    leaving.onData = [](const std::string&) { throw std::runtime_error("the client leaves"); };
    // More clients than the server has threads.
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(leaving.get("/images/stall/" + name).result, CURLE_WRITE_ERROR);
    EXPECT_EQ(client().get("/images/" + name).status, 200);
}

class ABadgeIcon : public RetailerFixture {};

TEST_F(ABadgeIcon, IsServedToAnyClientForEveryBadgeThatIsShown)
{
    std::set<std::string> seen;
    for (const char* code : {"90", "91", "100", "110", "120", "130", "270"}) {
        const std::string name = std::string(code) + ".png";
        const Reply reply = iconClient().get("/ui/app/6001/icon/" + name);
        EXPECT_EQ(reply.status, 200) << code;
        EXPECT_EQ(reply.contentType, "image/png");
        EXPECT_EQ(reply.body, readFile(std::string(RETAILER_ICONS) + "/" + name));
        EXPECT_EQ(reply.body.substr(1, 3), "PNG");
        EXPECT_TRUE(seen.insert(reply.body).second) << code;
    }
}

TEST_F(ABadgeIcon, IsOnItsOwnHostOnly)
{
    const Reply reply = client().get("/ui/app/6001/icon/90.png");
    EXPECT_EQ(reply.status, 421);
    EXPECT_EQ(messageOf(reply), "this is not on the host retailer-api.example");
    EXPECT_EQ(iconClient().get("/images/kimchi.png").status, 421);
}

TEST_F(ABadgeIcon, OfAnotherKindDoesNotExist)
{
    for (const char* name : {"92.png", "95.png", "300.png", "90.gif", "090.png", "", "draw.py", "README.md",
                             "../icon/90.png", "%2e%2e/icons/90.png"})
        EXPECT_EQ(iconClient().get(std::string("/ui/app/6001/icon/") + name).status, 404) << name;
}

TEST_F(ABadgeIcon, IsOnlyFetched)
{
    EXPECT_EQ(iconClient().post("/ui/app/6001/icon/90.png", "{}").status, 405);
}

}  // namespace
}  // namespace ApplianceTest
