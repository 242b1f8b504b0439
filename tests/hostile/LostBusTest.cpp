// The bus goes away: whatever the service is doing, it ends with a failure and says why, and burns no time on
// it.
#include <sstream>

#include "FailedSearch.h"
#include "MuteApp.h"
#include "RetailerWorld.h"

namespace ServiceTest {

namespace {

constexpr std::chrono::seconds Watched{1};
constexpr long MostTicks = 20;  // hundredths of a second

/** What a process has used of the processors so far, in hundredths of a second. */
long ticksOf(pid_t process)
{
    const std::string stat = contentOf("/proc/" + std::to_string(process) + "/stat");
    std::istringstream fields(stat.substr(stat.rfind(')') + 1));
    std::string field;
    for (int i = 3; i < 14; ++i)
        fields >> field;
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return user + system;
}

void expectAFailure(TestSupport::ChildProcess& process, const std::string& app)
{
    const TestSupport::ProcessEnd end = process.wait();
    EXPECT_TRUE(end.inTime);
    EXPECT_GT(end.status, 0);
    EXPECT_EQ(process.errors(), app + ": the session bus went away\n");
}

void expectNoSpin(TestSupport::ChildProcess& process)
{
    const long before = ticksOf(process.pid());
    EXPECT_FALSE(process.wait(Watched).inTime);
    EXPECT_LT(ticksOf(process.pid()) - before, MostTicks);
}

class ALostBus : public FailedSearch {
  protected:
    void TearDown() override { expectNoTokenTold(); }

    /** Waits until the service knows. */
    void lose()
    {
        client.reset();
        ui.reset();
        const std::size_t before = threads();
        bus.kill();
        EXPECT_TRUE(waitForThreads(before - 1));
    }

    void expectTheEnd() { expectAFailure(*service, ServiceId); }
};

TEST_F(ALostBus, LetsASearchComeToItsEndAndNoRequestBehindIt)
{
    merchant->hold(Merchant::SearchPath);
    search();
    ASSERT_TRUE(merchant->waitForRequests(Merchant::SearchPath));
    const std::size_t handled = log.count("app_control");
    for (int i = 0; i < 100; ++i)
        search();
    lose();

    expectNoSpin(*service);
    merchant->release(Merchant::SearchPath);

    expectTheEnd();
    EXPECT_EQ(log.count("app_control"), handled);
    EXPECT_EQ(merchant->requests(Merchant::SearchPath).size(), 1U);
    EXPECT_EQ(log.count("Service::onTerminate"), 1U);
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    EXPECT_EQ(pictureFiles(), std::vector<std::string>{});
}

TEST_F(ALostBus, TakesTheMessagesThatWaitWithIt)
{
    ui.reset();
    ASSERT_TRUE(TestSupport::waitForName("org.tizen.carvoy", false));
    const MuteApp mute("org.tizen.carvoy");
    for (int i = 0; i < 20; ++i)
        askForResult();
    ASSERT_TRUE(mute.waitForMessage());
    client.reset();

    bus.kill();

    expectTheEnd();
    EXPECT_EQ(log.count("Service::onTerminate"), 1U);
}

TEST_F(ALostBus, IsNoticedWhileAPictureIsOnItsWay)
{
    merchant->hold("/p/oat.jpg");
    search();
    ui->confirm(resultMessage());
    ASSERT_TRUE(merchant->waitForRequests("/p/oat.jpg"));
    lose();

    EXPECT_TRUE(log.waitFor("Service::onTerminate"));
    expectNoSpin(*service);
    merchant->release("/p/oat.jpg");

    expectTheEnd();
    EXPECT_EQ(merchant->requests("/p/goat.gif").size(), 0U);
    EXPECT_EQ(pictureFiles(), std::vector<std::string>{});
}

class ALostBusOfTheRetailersService : public RetailerWorld {
  protected:
    void SetUp() override
    {
        RetailerWorld::SetUp();
        stock(threeItems());
        startRetailer();
    }
};

TEST_F(ALostBusOfTheRetailersService, EndsIt)
{
    client.reset();
    ui.reset();
    bus.kill();

    expectAFailure(*service, RetailerId);
}

TEST_F(ALostBusOfTheRetailersService, LetsASearchComeToItsEnd)
{
    retailer->hold(SearchPath);
    search();
    ASSERT_TRUE(retailer->waitForRequests(SearchPath));
    client.reset();
    ui.reset();
    const std::size_t before = threads();
    bus.kill();
    EXPECT_TRUE(waitForThreads(before - 1));

    expectNoSpin(*service);
    retailer->release(SearchPath);

    expectAFailure(*service, RetailerId);
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
}

}  // namespace

}  // namespace ServiceTest
