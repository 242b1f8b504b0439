// The search at the merchant bridge, with pictures and delivery, while its calls fail.
#include "FaultedService.h"
#include "ServiceWorld.h"

namespace Faults {

namespace {

using ServiceTest::Answer;
using ServiceTest::Asked;
using ServiceTest::Merchant;
using ServiceTest::Product;
using ServiceTest::StatusRecord;
using Texts = std::vector<std::string>;

const std::vector<Product> Disturbed = {{"Whole Milk", "/p/whole.png", "1 gal", 750, 1000, "ref-whole"},
                                        {"Oat Milk", "/p/oat.jpg"}};
const std::vector<Product> Next = {{"Goat Milk", "/p/goat.gif", "32 oz", 1205, {}, "ref-goat"}};

std::string pictureOf(const Product& product)
{
    return "picture of " + product.name;
}

const std::optional<StatusRecord> NextFound = StatusRecord{1, 1, 1, {}, {}};

class SearchWithFaults : public ServiceTest::ServiceWorld, public testing::WithParamInterface<Mode> {
  protected:
    void SetUp() override
    {
        merchant->script(Merchant::SearchPath, answerTo);
        for (const auto& products : {Disturbed, Next}) {
            for (const Product& product : products)
                merchant->answer(product.picture, {200, pictureOf(product), "image/png"});
        }
        faulted = std::make_unique<FaultedService>(ServiceId, root, service);
        ASSERT_TRUE(faulted->start([this](const auto& plan) { return runService(plan, FAULTY_SERVICE); }));
        // The first search also makes what all the others find.
        searchFor("milk");
    }

    static Answer answerTo(const Asked& asked)
    {
        if (asked.header("X-Auth-Access-Token").empty() || asked.header("X-Auth-Session-Token").empty())
            return {401};
        return {200, answerOf(asked.target.find("query=goat") == std::string::npos ? Disturbed : Next)};
    }

    Messages searchFor(const std::string& term)
    {
        return faulted->searchAndShow({{"key_merchant", "freshmart"}, {"key_search_term", term}});
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

    /** What the log says of the record, in the table's words. */
    std::string recordName() const
    {
        if (responseFlag().empty() && !faulted->logged("vconf_set_int() failed"))
            return "none";
        if (faulted->logged("updateStatus() failed"))
            return "kept";
        if (faulted->loggedAnyOf({"Invalid extra data", "Invalid access token", "Not logged in"}))
            return "refused";
        if (faulted->loggedAnyOf({"curl perform failed: "}))
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
        return name == "refused" ? StatusRecord{0, 0, 0, {}, {}} : before;
    }

    void expectTheNextSearchToWork()
    {
        const Messages messages = searchFor("goat");
        const Messages results = of(messages, "result");
        const Messages pictures = of(messages, "product_image");
        ASSERT_EQ(results.size(), 1U);
        EXPECT_EQ(ServiceTest::listOf(results[0], "key_product_names"), Texts{"Goat Milk"});
        ASSERT_EQ(pictures.size(), 1U);
        const std::string picture = ServiceTest::textOf(pictures[0], "key_product_image_path");
        EXPECT_EQ(ServiceTest::contentOf(picture), pictureOf(Next[0]));
        EXPECT_EQ(pictureFiles(), Texts{"1.gif"});
        EXPECT_EQ(status(), NextFound);
        EXPECT_EQ(responseFlag(), "1\n");
    }

    Scenario scenario()
    {
        return {"search", [this] { prepare(); }, [this] { searchFor("milk"); },
                [this](const Fault& fault) { check(fault); }};
    }

    std::unique_ptr<FaultedService> faulted;
    const FaultTable table{"search"};
    std::optional<StatusRecord> before;
};

TEST_P(SearchWithFaults, IsFollowedByOneThatWorks)
{
    sweep(faulted->faults, scenario(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Each, SearchWithFaults,
                         testing::Values(Mode::Once, Mode::TwoInARow, Mode::FromThenOn),
                         [](const auto& each) { return nameOf(each.param); });

using SearchWithNothingButFaults = SearchWithFaults;

TEST_P(SearchWithNothingButFaults, IsFollowedByOneThatWorks)
{
    sweepAll(faulted->faults, scenario());
}

INSTANTIATE_TEST_SUITE_P(Each, SearchWithNothingButFaults, testing::Values(Mode::FromThenOn),
                         [](const auto& each) { return nameOf(each.param); });


}  // namespace

}  // namespace Faults
