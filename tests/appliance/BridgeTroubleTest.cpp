// The words with which a search term asks for trouble.
#include "Trouble.h"

#include "BridgeFixture.h"

#include <gtest/gtest.h>

namespace {

using namespace Appliance::StandIn;
using std::chrono::milliseconds;

Trouble troubleOf(const std::string& words)
{
    return parseQuery(words).trouble;
}

std::string complaint(const std::string& query)
{
    try {
        parseQuery(query);
    } catch (const TroubleError& error) {
        return error.what();
    }
    return "";
}

TEST(TroubleWords, LeaveTheOtherWordsToSearchFor)
{
    EXPECT_EQ(parseQuery("  oat ~delay=3s\tmilk ~none ").term, "oat milk");
    EXPECT_EQ(parseQuery("~none").term, "");
    EXPECT_EQ(parseQuery("").term, "");
    EXPECT_EQ(parseQuery("milk~none").term, "milk~none");
}

TEST(TroubleWords, AskForNothingWhereThereAreNone)
{
    const Trouble trouble = troubleOf("whole milk");
    EXPECT_EQ(trouble.delay, milliseconds(0));
    EXPECT_FALSE(trouble.status);
    EXPECT_FALSE(trouble.reset);
    EXPECT_FALSE(trouble.truncate);
    EXPECT_EQ(trouble.body, Body::Products);
    EXPECT_EQ(picturePath(trouble.forPicture(1), "a.png"), "/images/a.png");
}

TEST(TroubleWords, ReadTimes)
{
    EXPECT_EQ(troubleOf("~delay=3s").delay, milliseconds(3000));
    EXPECT_EQ(troubleOf("~delay=250ms").delay, milliseconds(250));
    EXPECT_EQ(troubleOf("~delay=600s").delay, milliseconds(600000));
    EXPECT_EQ(troubleOf("~slow-images=2s").slowPictures, milliseconds(2000));
    EXPECT_EQ(troubleOf("~slow-images").slowPictures, milliseconds(3000));
}

TEST(TroubleWords, ReadStatuses)
{
    EXPECT_EQ(troubleOf("~status=503").status, 503);
    EXPECT_EQ(troubleOf("~status=200").status, 200);
    EXPECT_EQ(troubleOf("~status=599").status, 599);
}

TEST(TroubleWords, ReadSizes)
{
    EXPECT_EQ(troubleOf("~big=50MB").bigSize, 50000000U);
    EXPECT_EQ(troubleOf("~big=200MB").bigSize, 200000000U);
    EXPECT_EQ(troubleOf("~big=1KB").bigSize, 1000U);
}

TEST(TroubleWords, NameBodies)
{
    EXPECT_EQ(troubleOf("~garbage").body, Body::Garbage);
    EXPECT_EQ(troubleOf("~empty").body, Body::Empty);
    EXPECT_EQ(troubleOf("~html").body, Body::Html);
    EXPECT_EQ(troubleOf("~odd-types").body, Body::OddTypes);
    EXPECT_EQ(troubleOf("~none").body, Body::NoProducts);
    EXPECT_EQ(troubleOf("~deep").body, Body::Deep);
    EXPECT_EQ(troubleOf("~big=1MB").body, Body::Big);
}

TEST(TroubleWords, CanBeCombined)
{
    const Trouble trouble = troubleOf("~delay=1s ~html ~status=502 ~truncate ~image-404=1 ~slow-images=1s");
    EXPECT_EQ(trouble.delay, milliseconds(1000));
    EXPECT_EQ(trouble.body, Body::Html);
    EXPECT_EQ(trouble.status, 502);
    EXPECT_TRUE(trouble.truncate);
    EXPECT_EQ(picturePath(trouble.forPicture(1), "a.png"), "/images/status/404/slow/1000/a.png");
    EXPECT_EQ(picturePath(trouble.forPicture(2), "a.png"), "/images/slow/1000/a.png");
}

TEST(TroubleWords, MeanThePicturesTheyName)
{
    const Trouble trouble =
        troubleOf("~image-404=2 ~image-status=503:3,4 ~image-stall=5 ~image-redirect=6,1");
    EXPECT_TRUE(trouble.forPicture(1).redirect);
    EXPECT_FALSE(trouble.forPicture(1).status);
    EXPECT_EQ(trouble.forPicture(2).status, 404);
    EXPECT_EQ(trouble.forPicture(3).status, 503);
    EXPECT_EQ(trouble.forPicture(4).status, 503);
    EXPECT_TRUE(trouble.forPicture(5).stall);
    EXPECT_FALSE(trouble.forPicture(5).status);
    EXPECT_FALSE(trouble.forPicture(6).stall);
    EXPECT_TRUE(trouble.forPicture(6).redirect);
}

TEST(TroubleWords, MeanEveryPictureWhereTheyNameNone)
{
    const Trouble trouble = troubleOf("~image-status=500 ~image-stall ~image-redirect");
    for (int position : {1, 2, 40}) {
        EXPECT_EQ(trouble.forPicture(position).status, 500);
        EXPECT_TRUE(trouble.forPicture(position).stall);
        EXPECT_TRUE(trouble.forPicture(position).redirect);
    }
    EXPECT_EQ(troubleOf("~image-404").forPicture(9).status, 404);
}

TEST(TroubleWords, ThatAreUnknownOrBadAreNamedTogetherWithTheKnownOnes)
{
    for (const char* word : {"~",
                             "~nonsense",
                             "~Delay=3s",
                             "~delays=3s",
                             "~delay",
                             "~delay=",
                             "~delay=3",
                             "~delay=s",
                             "~delay=-1s",
                             "~delay=1.5s",
                             "~delay=601s",
                             "~delay=600001ms",
                             "~delay=99999999999s",
                             "~delay=3m",
                             "~status",
                             "~status=",
                             "~status=199",
                             "~status=600",
                             "~status=5xx",
                             "~truncate=1",
                             "~truncate=",
                             "~reset=yes",
                             "~garbage=1",
                             "~empty=1",
                             "~html=1",
                             "~odd-types=1",
                             "~none=1",
                             "~deep=5",
                             "~big",
                             "~big=",
                             "~big=50",
                             "~big=0MB",
                             "~big=201MB",
                             "~big=200001KB",
                             "~big=1GB",
                             "~slow-images=",
                             "~slow-images=2",
                             "~image-404=",
                             "~image-404=0",
                             "~image-404=1000",
                             "~image-404=1,",
                             "~image-404=,1",
                             "~image-404=a",
                             "~image-status",
                             "~image-status=2",
                             "~image-status=503:",
                             "~image-status=503:0",
                             "~image-status=:1",
                             "~image-stall=x",
                             "~image-stall=",
                             "~image-redirect=-1",
                             "~image-redirect="}) {
        const std::string text = complaint(std::string("milk ") + word);
        EXPECT_EQ(text.substr(0, std::string(word).size() + 1), std::string(word) + " ") << word;
        for (const char* known : {"~delay=3s", "~truncate", "~image-404[=2]", "~image-redirect[=1]"})
            EXPECT_NE(text.find(known), std::string::npos) << word;
    }
}

TEST(TroubleWords, CannotAskForTwoBodies)
{
    EXPECT_EQ(complaint("~html ~empty").substr(0, 7), "~empty ");
    EXPECT_EQ(complaint("~none ~big=1MB").substr(0, 9), "~big=1MB ");
    EXPECT_EQ(complaint("~html ~html"), "");
}

TEST(TroubleWords, AreAllInTheHelpAndInTheDocument)
{
    const std::string help = troubleHelp();
    const std::string document = ApplianceTest::readFile(MERCHANT_BRIDGE_DOCUMENT);
    for (const char* word : {"~delay=3s", "~status=503", "~truncate", "~reset", "~garbage", "~empty", "~html",
                             "~odd-types", "~none", "~deep", "~big=50MB", "~slow-images", "~image-404",
                             "~image-status", "~image-stall", "~image-redirect"})
        EXPECT_NE(help.find(word), std::string::npos) << word;
    EXPECT_NE(document.find("|---|---|\n" + troubleMarkdown() + "\n"), std::string::npos)
        << "the table in docs/merchant-bridge.md is to be:\n"
        << troubleMarkdown();
}

}  // namespace
