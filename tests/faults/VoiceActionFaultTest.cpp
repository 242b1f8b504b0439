// The voice actions while their calls fail: what the recogniser heard, and the requests that it leads to.
#include "FaultedService.h"
#include "VoiceWorld.h"

namespace Faults {

namespace {

using ServiceTest::Merchant;
using Texts = std::vector<std::string>;

class VoiceActionsWithFaults : public ServiceTest::VoiceWorld, public testing::WithParamInterface<Mode> {
  protected:
    void SetUp() override
    {
        VoiceWorld::SetUp();
        stock({{"Whole Milk", "/p/whole.png", "1 gal", 750, 1000, "ref-whole"},
               {"Oat Milk", "/p/oat.jpg", "", {}, {}, "ref-oat"}});
        faulted = std::make_unique<FaultedService>(ServiceId, root, service);
        ASSERT_TRUE(faulted->start([this](const auto& plan) { return runService(plan, FAULTY_SERVICE); }));
        voice = std::make_unique<TestSupport::Recogniser>(ServiceId);
        searchForMilk();
    }

    Messages searchForMilk()
    {
        return faulted->searchAndShow({{"key_merchant", "freshmart"}, {"key_search_term", "milk"}});
    }

    /** Waits until everything that this leads to is done. */
    void hear(const Texts& nlus)
    {
        const std::uint32_t heard = faulted->faults.results();
        say(nlus);
        ASSERT_TRUE(faulted->faults.waitForResults(heard + 1)) << service->errors();
        faulted->waitForRest();
    }

    /** Every action that there is. */
    void hearAll()
    {
        hear({Nlu::action("Commerce Add To Cart"), Nlu::action("Commerce Check Out"),
              Nlu::action("Show Cart Success"), Nlu::item("\"2\"")});
    }

    void prepare()
    {
        taken();
        before = status();
        faulted->forgetOutput();
    }

    void check(const Fault& fault)
    {
        faulted->expectAlive();
        if (!fault.function.empty()) {
            faulted->expectBothOutputs();
            faulted->expectErrors(fault, table, status() == before ? "kept" : "changed");
        }
        EXPECT_EQ(status(), before);
        taken();
        expectTheNextActionsToWork();
        expectTheNextSearchToWork();
    }

    void expectTheNextActionsToWork()
    {
        hear({Nlu::item("\"1\""), Nlu::action("Commerce Check Out")});
        EXPECT_EQ(taken(), (Texts{"partner show_detailed_view key_merchant=freshmart"
                                  " key_product_variant_refs=ref-whole",
                                  "assistant close_app", "partner click_check_out"}));
    }

    void expectTheNextSearchToWork()
    {
        const Messages messages = searchForMilk();
        EXPECT_EQ(of(messages, "result").size(), 1U);
        EXPECT_EQ(of(messages, "product_image").size(), 2U);
        EXPECT_EQ(status(), (ServiceTest::StatusRecord{1, 1, 2, {}, {}}));
    }

    Scenario scenario()
    {
        return {"voice", [this] { prepare(); }, [this] { hearAll(); },
                [this](const Fault& fault) { check(fault); }};
    }

    std::unique_ptr<FaultedService> faulted;
    const FaultTable table{"voice"};
    std::optional<ServiceTest::StatusRecord> before;
};

TEST_P(VoiceActionsWithFaults, AreFollowedByOnesThatWork)
{
    sweep(faulted->faults, scenario(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Each, VoiceActionsWithFaults,
                         testing::Values(Mode::Once, Mode::TwoInARow, Mode::FromThenOn),
                         [](const auto& each) { return nameOf(each.param); });

using VoiceActionsWithNothingButFaults = VoiceActionsWithFaults;

TEST_P(VoiceActionsWithNothingButFaults, AreFollowedByOnesThatWork)
{
    sweepAll(faulted->faults, scenario());
}

INSTANTIATE_TEST_SUITE_P(Each, VoiceActionsWithNothingButFaults, testing::Values(Mode::FromThenOn),
                         [](const auto& each) { return nameOf(each.param); });

}  // namespace

}  // namespace Faults
