// The search at the retailer, with pictures, badges and delivery, while its calls fail.
#include "FaultedService.h"
#include "RetailerWorld.h"

namespace Faults {

namespace {

using ServiceTest::Answer;
using ServiceTest::Asked;
using ServiceTest::Item;
using ServiceTest::StatusRecord;
using Texts = std::vector<std::string>;

const std::vector<Item> Disturbed = {
    {"서울 우유 1L", "/i/seoul.jpg", "2980", "11", "1,000원 할인", "91", "1000024500411"},
    {"두유", "/i/soy.png"}};
const std::vector<Item> Next = {{"매일 우유", "/i/maeil.png", "990"}};

const std::optional<StatusRecord> NextFound = StatusRecord{1, 1, 1, {}, {}};

class RetailerSearchWithFaults : public ServiceTest::RetailerWorld, public testing::WithParamInterface<Mode> {
  protected:
    void SetUp() override
    {
        RetailerWorld::SetUp();
        ui.reset();
        for (const auto& items : {Disturbed, Next}) {
            for (const Item& item : items)
                retailer->answer(item.picture, {200, pictureOf(item), "image/png"});
        }
        retailer->answer(iconPath(Disturbed[0].badge), {200, "badge", "image/png"});
        retailer->script(SearchPath, answerTo);
        faulted = std::make_unique<FaultedService>(RetailerId, root, service);
        ASSERT_TRUE(faulted->start([this](const auto& plan) {
            TestSupport::ChildProcess::Variables all = retailerVariables();
            all.insert(all.end(), plan.begin(), plan.end());
            return std::make_unique<TestSupport::ChildProcess>(Texts{FAULTY_RETAILER}, all);
        }));
        // The first search also makes what all the others find.
        searchFor("milk");
    }

    static std::string pictureOf(const Item& item) { return "picture of " + item.name; }

    static Answer answerTo(const Asked& asked)
    {
        const bool isNext = asked.body.find("goat") != std::string::npos;
        return {200, ServiceTest::answerOf(isNext ? Next : Disturbed)};
    }

    Messages searchFor(const std::string& term)
    {
        return faulted->searchAndShow({{"key_search_term", term}});
    }

    /** A record that no disturbed search leaves. */
    void prepare()
    {
        if (!(status() == NextFound))
            searchFor("goat");
        std::filesystem::remove(root + "/vconf/db/nuvex/e-commerce/response");
        before = status();
        faulted->forgetOutput();
    }

    void check(const Fault& fault)
    {
        faulted->expectAlive();
        // Where everything fails the log does, too.
        if (!fault.function.empty()) {
            faulted->expectBothOutputs();
            faulted->expectErrors(fault, table, recordName());
            expectTheRecord();
        }
        expectTheNextSearchToWork();
    }

    /** The record says what the log says. */
    void expectTheRecord()
    {
        const std::string name = recordName();
        EXPECT_EQ(status(), recordOf(name)) << name;
        EXPECT_EQ(responseFlag().empty(), name == "none" || faulted->logged("vconf_set_int() failed"));
    }

    /** What the log says of the record, in the table's words: it is written when a search begins and when it
     * ends. */
    std::string recordName() const
    {
        if (responseFlag().empty() && !faulted->logged("vconf_set_int() failed"))
            return "none";
        if (faulted->logged("updateStatus() failed"))
            return faulted->logged("updateStatus () init failed") ? "kept" : "begun";
        if (faulted->loggedAnyOf({"Not Open Emart Login File!", "No matching value for emart"}))
            return "refused";
        if (faulted->loggedAnyOf({"Invalid extra data", "Not logged in", "curl perform failed: "}))
            return "failed";
        return faulted->loggedAnyOf({"Couldn't create json", "json_", "Invalid json", "no member"}) ? "bad"
                                                                                                    : "found";
    }

    std::optional<StatusRecord> recordOf(const std::string& name) const
    {
        if (name == "found")
            return StatusRecord{1, 1, 2, {}, {}};
        if (name == "bad")
            return StatusRecord{1, 1, 0, {}, {}};
        if (name == "failed")
            return StatusRecord{1, 0, 0, {}, {}};
        return name == "refused" || name == "begun" ? StatusRecord{0, 0, 0, {}, {}} : before;
    }

    void expectTheNextSearchToWork()
    {
        const Messages messages = searchFor("goat");
        const Messages results = of(messages, "result");
        const Messages pictures = of(messages, "emart_product_image");
        ASSERT_EQ(results.size(), 1U);
        EXPECT_EQ(ServiceTest::listOf(results[0], "key_product_names"), Texts{Next[0].name});
        ASSERT_EQ(pictures.size(), 1U);
        const std::string picture = ServiceTest::textOf(pictures[0], "key_product_image_path");
        EXPECT_EQ(ServiceTest::contentOf(picture), pictureOf(Next[0]));
        EXPECT_EQ(pictureFiles(), Texts{"10.png"});
        EXPECT_EQ(status(), NextFound);
        EXPECT_EQ(responseFlag(), "1\n");
    }

    Scenario scenario()
    {
        return {"retailer", [this] { prepare(); }, [this] { searchFor("milk"); },
                [this](const Fault& fault) { check(fault); }};
    }

    std::unique_ptr<FaultedService> faulted;
    const FaultTable table{"retailer"};
    std::optional<StatusRecord> before;
};

TEST_P(RetailerSearchWithFaults, IsFollowedByOneThatWorks)
{
    sweep(faulted->faults, scenario(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Each, RetailerSearchWithFaults,
                         testing::Values(Mode::Once, Mode::TwoInARow, Mode::FromThenOn),
                         [](const auto& each) { return nameOf(each.param); });

using RetailerSearchWithNothingButFaults = RetailerSearchWithFaults;

TEST_P(RetailerSearchWithNothingButFaults, IsFollowedByOneThatWorks)
{
    sweepAll(faulted->faults, scenario());
}

INSTANTIATE_TEST_SUITE_P(Each, RetailerSearchWithNothingButFaults, testing::Values(Mode::FromThenOn),
                         [](const auto& each) { return nameOf(each.param); });

}  // namespace

}  // namespace Faults
