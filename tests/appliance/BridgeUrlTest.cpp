// What the bridge reads from and writes into URLs.
#include "PicturePath.h"
#include "UrlQuery.h"

#include <gtest/gtest.h>

namespace {

using namespace Appliance::MerchantBridge;
using namespace Appliance::StandIn;
using std::chrono::milliseconds;

TEST(APicturePath, IsReadAsItWasWritten)
{
    for (const bool redirect : {false, true}) {
        for (const std::optional<int> status : {std::optional<int>(), std::optional<int>(404)}) {
            for (const bool stall : {false, true}) {
                for (const int slow : {0, 1, 600000}) {
                    const PictureTrouble trouble{redirect, status, stall, milliseconds(slow)};
                    const auto request = parsePicturePath(picturePath(trouble, "whole-milk.png"));
                    ASSERT_TRUE(request);
                    EXPECT_EQ(request->name, "whole-milk.png");
                    EXPECT_EQ(request->trouble.redirect, redirect);
                    EXPECT_EQ(request->trouble.status, status);
                    EXPECT_EQ(request->trouble.stall, stall);
                    EXPECT_EQ(request->trouble.slow, milliseconds(slow));
                }
            }
        }
    }
}

TEST(APicturePath, PutsTroubleInFrontOfTheName)
{
    EXPECT_EQ(picturePath({}, "egg.gif"), "/images/egg.gif");
    EXPECT_EQ(picturePath({true, 503, true, milliseconds(3000)}, "egg.gif"),
              "/images/redirect/status/503/stall/slow/3000/egg.gif");
}

TEST(APicturePath, OfAnotherFormIsNone)
{
    for (const char* path :
         {"", "/", "/images", "/images/", "/image/egg.gif", "images/egg.gif", "/images//egg.gif",
          "/images/../egg.gif", "/images/slow/egg.gif", "/images/slow/3s/egg.gif", "/images/slow/-1/egg.gif",
          "/images/slow/600001/egg.gif", "/images/status/egg.gif", "/images/status/199/egg.gif",
          "/images/status/404/", "/images/slow/3000/status/404/egg.gif", "/images/stall/",
          "/images/a/b/egg.gif"})
        EXPECT_FALSE(parsePicturePath(path)) << path;
}

TEST(AUrlQuery, IsUnescaped)
{
    const auto query = parseUrlQuery("/search?merchant=a%26b&query=oat%20milk+x&searchBy=full&empty=&bare");
    EXPECT_EQ(query.at("merchant"), "a&b");
    EXPECT_EQ(query.at("query"), "oat milk x");
    EXPECT_EQ(query.at("searchBy"), "full");
    EXPECT_EQ(query.at("empty"), "");
    EXPECT_EQ(query.at("bare"), "");
}

TEST(AUrlQuery, KeepsEverythingBehindTheFirstEqualsSign)
{
    EXPECT_EQ(parseUrlQuery("/?query=milk%20~image-404=2").at("query"), "milk ~image-404=2");
    EXPECT_EQ(parseUrlQuery("/?query==").at("query"), "=");
}

TEST(AUrlQuery, KeepsTheFirstOfEqualNames)
{
    EXPECT_EQ(parseUrlQuery("/?query=one&query=two").at("query"), "one");
}

TEST(AUrlQuery, LeavesWhatIsNoEscapeAsItIs)
{
    EXPECT_EQ(parseUrlQuery("/?query=100%").at("query"), "100%");
    EXPECT_EQ(parseUrlQuery("/?query=%4").at("query"), "%4");
    EXPECT_EQ(parseUrlQuery("/?query=%zz%C3%A9").at("query"), "%zz\xC3\xA9");
    EXPECT_EQ(parseUrlQuery("/?query=%-1").at("query"), "%-1");
}

TEST(AUrlQuery, CanBeMissing)
{
    EXPECT_TRUE(parseUrlQuery("/search").empty());
    EXPECT_TRUE(parseUrlQuery("").empty());
}

}  // namespace
