// Servers that never come to an end: the service waits for as long as it is to wait, and no longer. Each of
// them has a service, a bus and a merchant of its own, so that all are waited for at once.
#include <filesystem>

#include "HostileWorld.h"

namespace ServiceTest {

namespace {

using std::chrono::seconds;

// The whole of a search, and the whole of a picture.
constexpr seconds SearchLimit{60};
constexpr seconds PictureLimit{7};

const char* const TimeIsUp = "Timeout was reached";

/** A world besides the test's own. One at a time has the session bus. */
class Household : public HostileWorld {
  public:
    explicit Household(const Hostility& stall) : stall_(stall) {}

    void searchAtTheStalledMerchant()
    {
        bus.use();
        FailedSearch::SetUp();
        before_ = log.lines().size();
        began_ = std::filesystem::file_time_type::clock::now();
        misbehave(standForMerchant(openingOf(stall_, authority, merchantHost())), Merchant::SearchPath,
                  stall_);
        EXPECT_EQ(search(), "");
    }

    void expectTheEndOfTheSearch()
    {
        bus.use();
        EXPECT_TRUE(log.waitFor("curl perform failed: 0", 1, SearchLimit + TestSupport::Patience));
        expectTheWholeOf(SearchLimit);
        EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "0");
        EXPECT_EQ(loggedSince(before_), Logged::noAnswer(TimeIsUp));
        EXPECT_EQ(status(), (StatusRecord{1, 0, 0, {}, {}}));
        putRight();
        expectASearchThatWorks();
        end();
    }

    void searchForAStalledPicture()
    {
        bus.use();
        misbehave(stand(PictureHost, HttpsPort, openingOf(stall_, authority, PictureHost)), "/hostile.png",
                  stall_);
        FailedSearch::SetUp();
        began_ = std::filesystem::file_time_type::clock::now();
        searchWithPicture(pictureUrl());
    }

    void expectTheEndOfThePicture()
    {
        bus.use();
        EXPECT_TRUE(
            log.waitFor("Failed to startDownload for index 0", 1, PictureLimit + TestSupport::Patience));
        expectTheWholeOf(PictureLimit);
        expectPictureFailure(std::string("curl_easy_perform failed, result: ") + TimeIsUp);
        HostileWorld::TearDown();
    }

    const char* name() const { return stall_.name; }

  private:
    void TestBody() override {}

    // The last line logged is the one that was waited for: nothing else has happened here since. The bound
    // leaves room for the clock that stamps files.
    void expectTheWholeOf(seconds limit) const
    {
        EXPECT_GE(std::filesystem::last_write_time(logFile()) - began_, limit - seconds(1));
    }

    void end()
    {
        stopService();
        EXPECT_EQ(service->errors(), "");
        HostileWorld::TearDown();
    }

    const Hostility stall_;
    std::size_t before_ = 0;
    std::filesystem::file_time_type began_;
};

std::vector<std::unique_ptr<Household>> households(const std::vector<Hostility>& stalls)
{
    std::vector<std::unique_ptr<Household>> all;
    for (const Hostility& stall : stalls)
        all.push_back(std::make_unique<Household>(stall));
    return all;
}

/** A picture that is always elsewhere: each of the redirects takes a second, all of them more than there is.
 */
Hostility slowRedirects()
{
    const auto handler = [](const ServerRequest&, ServerConnection& connection) {
        if (!connection.clientLeaves(seconds(1)))
            connection.answer(302, "", "Location: /hostile.png\r\n");
    };
    return {"ARedirectASecond", handler, ""};
}

TEST(AStalledSearch, EndsWhenItsTimeIsUpAndLeavesTheNextOneUnharmed)
{
    const auto all = households(stalls());
    for (const auto& one : all)
        one->searchAtTheStalledMerchant();
    for (const auto& one : all) {
        SCOPED_TRACE(one->name());
        one->expectTheEndOfTheSearch();
    }
}

TEST(AStalledPicture, EndsWhenItsTimeIsUpAndLeavesTheNextOnesUnharmed)
{
    std::vector<Hostility> kinds = stalls();
    kinds.push_back(slowRedirects());
    const auto all = households(kinds);
    for (const auto& one : all)
        one->searchForAStalledPicture();
    for (const auto& one : all) {
        SCOPED_TRACE(one->name());
        one->expectTheEndOfThePicture();
    }
}

}  // namespace

}  // namespace ServiceTest
