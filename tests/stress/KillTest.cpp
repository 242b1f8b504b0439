// The service is killed, more than two hundred times in all, at moments that matter: it starts again in what
// it left behind, and works.
#include <signal.h>
#include <sqlite3.h>
#include <sys/inotify.h>

#include "Dice.h"
#include "FolderWatch.h"
#include "Nlu.h"
#include "Recogniser.h"
#include "ServiceWorld.h"
#include "SiteValues.h"

namespace ServiceTest {

namespace {

namespace fs = std::filesystem;
using TestSupport::FolderWatch;
using TestSupport::RawPeer;
using Texts = std::vector<std::string>;

constexpr int Rounds = KILL_ROUNDS;  // of each test

Texts namesIn(const fs::path& folder)
{
    Texts names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

constexpr const char* WayBack = "data-store.sqlite-journal";

/** While it lives a write to the store can begin, and not end. */
class StoreReader {
  public:
    explicit StoreReader(const std::string& file)
    {
        EXPECT_EQ(sqlite3_open_v2(file.c_str(), &database_, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database_, "BEGIN; SELECT * FROM Commerce", nullptr, nullptr, nullptr),
                  SQLITE_OK);
    }
    ~StoreReader() { sqlite3_close(database_); }
    StoreReader(const StoreReader&) = delete;
    StoreReader& operator=(const StoreReader&) = delete;

  private:
    sqlite3* database_ = nullptr;
};

class AKill : public ServiceWorld {
  protected:
    void SetUp() override { startAnew(); }

    /** Each round begins with a service that has just done a search. */
    void again(const std::function<void()>& work)
    {
        for (int round = 0; round < Rounds && !HasFailure(); ++round) {
            work();
            startAnew();
        }
        stopService();
        EXPECT_EQ(service->errors(), "");
        EXPECT_EQ(pictureFiles(), Texts{});
    }

    /** Lets it work for a random time, in which it must not end by itself. */
    void killWithin(int milliseconds)
    {
        EXPECT_FALSE(service->wait(dice.millisecondsUpTo(milliseconds)).inTime);
        service->signal(SIGKILL);
        EXPECT_EQ(service->wait().signal, SIGKILL);
        EXPECT_EQ(findingsIn(service->errors()), "");
        const std::string flag = responseFlag();
        EXPECT_TRUE(flag.empty() || flag == "1\n") << flag;
    }

    void searchFor(std::chrono::milliseconds halfway)
    {
        stock(threeProducts());
        for (const Product& product : threeProducts()) {
            Answer answer{200, pictureBytes(product.picture), "image/png"};
            answer.halfway = halfway;
            merchant->answer(product.picture, answer);
        }
        EXPECT_EQ(search(), "");
    }

    std::size_t searches() const { return merchant->requests(Merchant::SearchPath).size(); }

    Dice dice;

  private:
    void startAnew()
    {
        // A new one, whom nothing of the killed one reaches.
        ui.reset();
        ASSERT_TRUE(TestSupport::waitForName(UiId, false));
        ui = std::make_unique<UiPeer>();
        const Texts errorsBefore = errors();
        ASSERT_NO_FATAL_FAILURE(startService());
        const auto started = status();
        ASSERT_TRUE(started);
        EXPECT_EQ(started->totalCount, 0);
        expectASearchThatWorks();
        expectNothingLeftOver();
        EXPECT_EQ(errors(), errorsBefore);
        EXPECT_EQ(service->errors(), "");
    }

    void expectNothingLeftOver() const
    {
        EXPECT_EQ(namesIn(root), (Texts{"apps_rw", "ca.pem", "data-store.sqlite", "media", "vconf"}));
        EXPECT_EQ(namesIn(root + "/media"), Texts{"tmp"});
        for (const std::string& name : namesIn(root + "/vconf/db/nuvex/e-commerce"))
            EXPECT_TRUE(name == "response" || name.compare(0, 10, ".response.") == 0) << name;
    }

    static constexpr const char* UiId = "org.tizen.carvoy";
};

TEST_F(AKill, OfAServiceThatStartsIsFollowedByACleanStart)
{
    again([&] {
        stopService();
        ASSERT_TRUE(TestSupport::waitForName(ServiceId, false));
        service = runService();
        killWithin(60);
    });
}

TEST_F(AKill, OfAServiceThatHasJustStartedIsFollowedByACleanStart)
{
    again([&] {
        stopService();
        startService(Until::OnBus);
        search();
        killWithin(10);
    });
}

TEST_F(AKill, WhileASearchWaitsForItsAnswerIsFollowedByACleanStart)
{
    again([&] {
        const std::size_t before = searches();
        merchant->hold(Merchant::SearchPath);
        search();
        askForResult();
        search();
        EXPECT_TRUE(merchant->waitForRequests(Merchant::SearchPath, before + 1));
        killWithin(10);
        merchant->release(Merchant::SearchPath);
    });
}

TEST_F(AKill, WhileASearchReadsItsAnswerIsFollowedByACleanStart)
{
    again([&] {
        const std::size_t before = searches();
        merchant->hold(Merchant::SearchPath);
        searchFor({});
        EXPECT_TRUE(merchant->waitForRequests(Merchant::SearchPath, before + 1));
        merchant->release(Merchant::SearchPath);
        killWithin(20);
    });
}

TEST_F(AKill, InTheMiddleOfAPictureIsFollowedByACleanStart)
{
    again([&] {
        const std::string picture = threeProducts()[static_cast<std::size_t>(dice.upTo(2))].picture;
        const std::size_t before = merchant->requests(picture).size();
        searchFor(std::chrono::milliseconds(30));
        EXPECT_TRUE(merchant->waitForRequests(picture, before + 1));
        killWithin(40);
    });
}

TEST_F(AKill, WhilePicturesAreDeliveredIsFollowedByACleanStart)
{
    again([&] {
        searchFor({});
        ui->confirm(resultMessage());
        for (int pictures = dice.upTo(2); pictures >= 0; --pictures)
            ui->nextPicture();
        killWithin(20);
    });
}

TEST_F(AKill, WhileTheOldPicturesAreWipedIsFollowedByACleanStart)
{
    again([&] {
        FolderWatch watch(picturesFolder(), IN_DELETE);
        search();
        search();
        EXPECT_TRUE(watch.waitFor(""));
        killWithin(dice.upTo(5));
    });
}

TEST_F(AKill, WhileTheStatusRecordIsWrittenIsFollowedByACleanStart)
{
    again([&] {
        FolderWatch watch(root, IN_CREATE);
        searchFor({});
        EXPECT_TRUE(watch.waitFor(WayBack));
        killWithin(0);
    });
}

TEST_F(AKill, BeforeTheStatusRecordIsThereIsFollowedByACleanStart)
{
    again([&] {
        FolderWatch watch(root, IN_CREATE);
        const StoreReader reader(root + "/data-store.sqlite");
        searchFor({});
        EXPECT_TRUE(watch.waitFor(WayBack));
        killWithin(dice.upTo(100));
        EXPECT_TRUE(fs::exists(root + "/" + WayBack));
    });
}

TEST_F(AKill, WhileTheSettingIsWrittenIsFollowedByACleanStart)
{
    again([&] {
        FolderWatch watch(root + "/vconf/db/nuvex/e-commerce", IN_CREATE);
        searchFor({});
        EXPECT_TRUE(watch.waitFor(".response."));
        killWithin(0);
    });
}

TEST_F(AKill, WhileItIsSpokenToIsFollowedByACleanStart)
{
    const RawPeer partner(CARVOY_PARTNER_APP_ID);
    const RawPeer assistant("org.tizen.nuvex-da");
    again([&] {
        TestSupport::Recogniser voice(ServiceId);
        askForResult();
        for (int sentences = dice.upTo(10); sentences >= 0; --sentences)
            voice.result(
                0, {"as spoken"},
                {Nlu::item("\"" + std::to_string(dice.upTo(4)) + "\""), Nlu::action("Show Cart Success")});
        killWithin(100);
    });
}

}  // namespace

}  // namespace ServiceTest
