// The start of the service, its first search and its end while their calls fail; each in a process of its
// own.
#include <signal.h>
#include <tizen.h>

#include "FaultedService.h"
#include "ServiceWorld.h"

namespace Faults {

namespace {

using ServiceTest::StatusRecord;
using Texts = std::vector<std::string>;

class LifeWithFaults : public ServiceTest::ServiceWorld, public testing::WithParamInterface<Mode> {
  protected:
    void SetUp() override
    {
        stock({{"Whole Milk", "/p/whole.png", "1 gal", 750, 1000, "ref-whole"}});
        faulted = std::make_unique<FaultedService>(ServiceId, root, service);
    }

    bool startFaulted()
    {
        return faulted->start([this](const auto& plan) { return runService(plan, FAULTY_SERVICE); });
    }

    Messages searchForMilk()
    {
        return faulted->searchAndShow({{"key_merchant", "freshmart"}, {"key_search_term", "milk"}});
    }

    void expectASearchToWork()
    {
        const Messages messages = searchForMilk();
        const Messages pictures = of(messages, "product_image");
        EXPECT_EQ(of(messages, "result").size(), 1U);
        ASSERT_EQ(pictures.size(), 1U);
        const std::string picture = ServiceTest::textOf(pictures[0], "key_product_image_path");
        EXPECT_EQ(ServiceTest::contentOf(picture), pictureBytes("/p/whole.png"));
        EXPECT_EQ(status(), (StatusRecord{1, 1, 1, {}, {}}));
        EXPECT_EQ(responseFlag(), "1\n");
    }

    void endIfItRuns()
    {
        if (service && !service->wait({}).inTime)
            stopService();
    }

    std::unique_ptr<FaultedService> faulted;
    std::optional<StatusRecord> before;
};

class StartWithFaults : public LifeWithFaults {
  protected:
    /** A record that no start leaves. */
    void prepare()
    {
        if (isRunning && status()->totalCount == 0)
            expectASearchToWork();
        endIfItRuns();
        before = status();
        service.reset();
        faulted->forgetOutput();
    }

    void play() { isRunning = startFaulted(); }

    void check(const Fault& fault)
    {
        if (isRunning) {
            faulted->expectAlive();
        } else {
            // The loop's failure is the process's, and it is the only one that ends it.
            EXPECT_TRUE(fault.function == "service_app_main" || fault.function.empty());
            expectEnd(*service, TIZEN_ERROR_IO_ERROR & 0xff);
        }
        if (!fault.function.empty())
            expectLogAndRecord(fault);
        // The paths are made once, at load time: without them it takes another start.
        if (!isRunning || faulted->faults.failed("tzplatform_mkpath") > 0) {
            endIfItRuns();
            faulted->faults.clear();
            ASSERT_TRUE(startFaulted());
        }
        expectASearchToWork();
    }

    void expectLogAndRecord(const Fault& fault)
    {
        faulted->expectBothOutputs();
        const StatusRecord reset{before ? before->isLoggedIn : std::optional<int>(),
                                 before ? before->isLinked : std::optional<int>(),
                                 0,
                                 {},
                                 {}};
        const bool isReset = status() == reset;
        EXPECT_TRUE(isReset || status() == before);
        faulted->expectErrors(fault, table, isReset ? "reset" : "kept");
    }

    Scenario scenario()
    {
        return {"start", [this] { prepare(); }, [this] { play(); },
                [this](const Fault& fault) { check(fault); }};
    }

    const FaultTable table{"start"};
    bool isRunning = false;
};

TEST_P(StartWithFaults, IsFollowedByASearchThatWorks)
{
    play();
    expectASearchToWork();
    sweep(faulted->faults, scenario(), GetParam());
}

/** What the first search of a process makes, and the others find. */
class FirstSearchWithFaults : public LifeWithFaults {
  protected:
    void prepare()
    {
        endIfItRuns();
        faulted->faults.clear();
        service.reset();
        ASSERT_TRUE(startFaulted());
        faulted->forgetOutput();
    }

    void check(const Fault& fault)
    {
        faulted->expectAlive();
        const bool isFound = status() == StatusRecord{1, 1, 1, {}, {}};
        faulted->expectErrors(fault, table, isFound ? "found" : "other");
        expectASearchToWork();
    }

    Scenario scenario()
    {
        return {"first search",
                [this] { prepare(); },
                [this] { searchForMilk(); },
                [this](const Fault& fault) { check(fault); },
                {"curl_global_init", "system"}};
    }

    const FaultTable table{"first search"};
};

TEST_P(FirstSearchWithFaults, IsFollowedByOneThatWorks)
{
    sweep(faulted->faults, scenario(), GetParam());
}

/** Ends a service that has searched. */
class EndWithFaults : public LifeWithFaults {
  protected:
    void prepare()
    {
        endIfItRuns();
        faulted->faults.clear();
        service.reset();
        ASSERT_TRUE(startFaulted());
        expectASearchToWork();
        before = status();
        faulted->forgetOutput();
    }

    void play()
    {
        service->signal(SIGTERM);
        EXPECT_TRUE(service->wait().inTime);
    }

    void check(const Fault& fault)
    {
        expectEnd(*service, 0);
        EXPECT_EQ(status(), before);
        if (!fault.function.empty()) {
            faulted->expectBothOutputs();
            faulted->expectErrors(fault, table, status() == before ? "kept" : "changed");
        }
    }

    Scenario scenario()
    {
        return {"end", [this] { prepare(); }, [this] { play(); },
                [this](const Fault& fault) { check(fault); }};
    }

    const FaultTable table{"end"};
};

TEST_P(EndWithFaults, IsFollowedByAStartAndASearchThatWork)
{
    sweep(faulted->faults, scenario(), GetParam());
    prepare();
}

INSTANTIATE_TEST_SUITE_P(Each, StartWithFaults,
                         testing::Values(Mode::Once, Mode::TwoInARow, Mode::FromThenOn),
                         [](const auto& each) { return nameOf(each.param); });
INSTANTIATE_TEST_SUITE_P(Each, FirstSearchWithFaults,
                         testing::Values(Mode::Once, Mode::TwoInARow, Mode::FromThenOn),
                         [](const auto& each) { return nameOf(each.param); });
INSTANTIATE_TEST_SUITE_P(Each, EndWithFaults, testing::Values(Mode::Once, Mode::TwoInARow, Mode::FromThenOn),
                         [](const auto& each) { return nameOf(each.param); });

}  // namespace

}  // namespace Faults
