// A service that is told to end while it searches: the search is finished, and nothing is begun any more.
#include <signal.h>

#include "ServiceWorld.h"

namespace ServiceTest {

namespace {

class AServiceToldToEnd : public ServiceWorld, public testing::WithParamInterface<int> {
  protected:
    void SetUp() override
    {
        stock(threeProducts());
        merchant->hold(Merchant::SearchPath);
        startService();
        search("first");
        ASSERT_TRUE(merchant->waitForRequests(Merchant::SearchPath));
    }

    /** The signal is there before the answer to the search that is under way. */
    void endAndAnswer()
    {
        service->signal(GetParam());
        merchant->release(Merchant::SearchPath);
        expectEnd(*service, 0);
    }

    void expectAnOrderlyEnd() const
    {
        EXPECT_EQ(log.count("_terminate"), 1U);
        EXPECT_EQ(log.count("Service::onTerminate"), 1U);
        EXPECT_EQ(pictureFiles().size(), 0U);
        EXPECT_EQ(service->errors(), "");
    }
};

TEST_P(AServiceToldToEnd, FinishesTheSearchThatIsUnderWay)
{
    endAndAnswer();

    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    EXPECT_EQ(responseFlag(), "1\n");
    expectAnOrderlyEnd();
}

TEST_P(AServiceToldToEnd, MakesNoneOfTheSearchesThatWait)
{
    for (const char* term : {"second", "third", "fourth"})
        EXPECT_EQ(search(term), "");

    endAndAnswer();

    EXPECT_EQ(merchant->requests(Merchant::SearchPath).size(), 1U);
    EXPECT_EQ(log.count("Service::onAppControl"), 1U);
    expectAnOrderlyEnd();
}

INSTANTIATE_TEST_SUITE_P(By, AServiceToldToEnd, testing::Values(SIGINT, SIGTERM), [](const auto& signal) {
    return signal.param == SIGINT ? "AnInterrupt" : "ARequestToTerminate";
});

}  // namespace

}  // namespace ServiceTest
