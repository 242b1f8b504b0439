// What the page is shown of the card, and what came of a search.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "CardFace.h"
#include "ScratchRoot.h"
#include "Verdict.h"

namespace {

using nlohmann::json;
using Screen::Outcome;
using Screen::PictureFolder;
using Screen::SearchWitness;
using Screen::Verdict;
using TestSupport::ScratchRoot;
using Ui::CardContent;
using Ui::CardState;
using Ui::Source;
using Texts = std::vector<std::string>;

CardContent cardOf(CardState state, std::size_t products, Source source = Source::Merchant)
{
    CardContent card;
    card.sequence = 1;
    card.state = state;
    card.source = source;
    card.merchant = source == Source::Merchant ? "freshmart" : "";
    card.term = "milk";
    card.products.resize(products);
    return card;
}

constexpr int Service = 100;  // process ids
constexpr int RetailerService = 200;

const Appliance::StatusRecord loggedIn = {1, 1, 0, std::nullopt, std::nullopt};
const Appliance::StatusRecord loggedOut = {0, 0, 0, std::nullopt, std::nullopt};

class ASearchsVerdict : public testing::Test {
  protected:
    void log(int pid, const std::string& function, const std::string& message, char priority = 'D',
             int thread = 0)
    {
        witness_.note({priority, "carvoy-service", pid,
                       "[" + std::to_string(thread == 0 ? pid : thread) + "] File.cpp: " + function +
                           "(1) > " + message});
    }

    void request(int pid) { log(pid, "onAppControl", "Service::onAppControl", 'I'); }

    void search(int pid, const Texts& errors = {})
    {
        request(pid);
        for (const std::string& error : errors) {
            log(pid, "searchProduct", error, 'E');
        }
    }

    void sendLists(int pid)
    {
        request(pid);
        log(pid, pid == Service ? "sendResultToUI" : "sendEmartResultToUI", "");
    }

    Verdict verdict(const std::optional<Appliance::StatusRecord>& record = loggedIn) const
    {
        return witness_.verdictOn(cardOf(CardState::Shown, 0), record);
    }

    Verdict verdictAtRetailer(const std::optional<Appliance::StatusRecord>& record = loggedIn) const
    {
        return witness_.verdictOn(cardOf(CardState::Shown, 0, Source::Retailer), record);
    }

    SearchWitness witness_;
};

TEST_F(ASearchsVerdict, IsOpenUntilItsResultIsThere)
{
    EXPECT_EQ(witness_.verdictOn(cardOf(CardState::Empty, 0), std::nullopt).outcome, Outcome::None);
    EXPECT_EQ(witness_.verdictOn(cardOf(CardState::Searching, 0), loggedIn).outcome, Outcome::None);
}

TEST_F(ASearchsVerdict, IsFoundWithProductsWhateverWasLogged)
{
    search(Service, {"something went wrong"});
    sendLists(Service);
    const Verdict verdict = witness_.verdictOn(cardOf(CardState::Shown, 1), loggedIn);
    EXPECT_EQ(verdict.outcome, Outcome::Found);
    EXPECT_EQ(verdict.reasons, Texts());
}

TEST_F(ASearchsVerdict, IsNothingWhereTheServiceFoundNone)
{
    EXPECT_EQ(verdict().outcome, Outcome::Nothing) << "nothing is known of it";
    search(Service, {"empty json array"});
    sendLists(Service);
    EXPECT_EQ(verdict().outcome, Outcome::Nothing);
}

TEST_F(ASearchsVerdict, IsFailedWithTheServicesOwnWords)
{
    search(Service, {"curl perform failed: 503", "and more"});
    sendLists(Service);
    EXPECT_EQ(verdict().outcome, Outcome::Failed);
    EXPECT_EQ(verdict().reasons, (Texts{"curl perform failed: 503", "and more"}));
}

TEST_F(ASearchsVerdict, StandsWhereTheListsAreSentAgain)
{
    search(Service, {"curl perform failed: 503"});
    sendLists(Service);
    sendLists(Service);
    EXPECT_EQ(verdict().reasons, Texts{"curl perform failed: 503"});
}

TEST_F(ASearchsVerdict, IsNotThatOfTheSearchBefore)
{
    search(Service, {"curl perform failed: 503"});
    sendLists(Service);
    search(Service, {"empty json array"});
    sendLists(Service);
    EXPECT_EQ(verdict().outcome, Outcome::Nothing);
}

TEST_F(ASearchsVerdict, IsNotThatOfTheOtherService)
{
    search(Service, {"empty json array"});
    sendLists(Service);
    search(RetailerService, {"curl perform failed: 503"});
    sendLists(RetailerService);
    EXPECT_EQ(verdict().outcome, Outcome::Nothing);
    EXPECT_EQ(verdictAtRetailer().reasons, Texts{"curl perform failed: 503"});
}

TEST_F(ASearchsVerdict, CountsErrorsOfTheMainThreadDuringTheSearchOnly)
{
    search(Service);
    log(Service, "searchProduct", "a trace", 'D');
    log(Service, "startDownloadImages", "Failed to startDownload for index 1", 'E', 101);
    witness_.note({'E', "carvoy-ui", Service, "[100] File.cpp: searchProduct(1) > of another program"});
    witness_.note({'E', "carvoy-service", Service, "of another form"});
    sendLists(Service);
    log(Service, "_vc_error_cb", "later", 'E');
    EXPECT_EQ(verdict().outcome, Outcome::Nothing);
    sendLists(Service);
    EXPECT_EQ(verdict().outcome, Outcome::Nothing);
}

TEST_F(ASearchsVerdict, IsFailedAtTheRetailerForWhoIsNotLoggedIn)
{
    search(RetailerService);
    sendLists(RetailerService);
    EXPECT_EQ(verdictAtRetailer(loggedOut).outcome, Outcome::Failed);
    EXPECT_EQ(verdictAtRetailer(loggedOut).reasons, Texts{"Not logged in at the retailer"});
    EXPECT_EQ(verdictAtRetailer(loggedIn).outcome, Outcome::Nothing);
    EXPECT_EQ(verdictAtRetailer(std::nullopt).outcome, Outcome::Nothing);
    EXPECT_EQ(verdict(loggedOut).outcome, Outcome::Nothing);
}

TEST_F(ASearchsVerdict, KeepsABoundedNumberOfReasonsAndProcesses)
{
    for (int pid = 1; pid < 100; ++pid) {
        search(pid, Texts(100, "error"));
    }
    search(Service, Texts(100, "error"));
    sendLists(Service);
    EXPECT_EQ(verdict().reasons.size(), SearchWitness::ReasonsKept);
}

TEST(TheCardsFace, TellsItsProductsWithAddressesOfTheirPictures)
{
    const std::filesystem::path folder = ScratchRoot::file("tmp");
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "1.png") << "picture";
    CardContent card = cardOf(CardState::Shown, 2);
    card.products[0] = {
        "Skim Milk", "1/2 gal", "Save 10%", "$3.0", "$2.69", "FM-1", (folder / "1.png").string()};
    card.products[1].picture = "/etc/passwd";
    const PictureFolder pictures(folder);
    const json face = Screen::faceOf(card, {Outcome::Found, {}}, pictures);
    EXPECT_EQ(face.at("state"), "shown");
    EXPECT_EQ(face.at("outcome"), "found");
    EXPECT_EQ(face.at("source"), "merchant");
    EXPECT_EQ(face.at("merchant"), "freshmart");
    EXPECT_EQ(face.at("term"), "milk");
    const json& milk = face.at("products")[0];
    EXPECT_EQ(milk.at("name"), "Skim Milk");
    EXPECT_EQ(milk.at("size"), "1/2 gal");
    EXPECT_EQ(milk.at("discount"), "Save 10%");
    EXPECT_EQ(milk.at("formerPrice"), "$3.0");
    EXPECT_EQ(milk.at("price"), "$2.69");
    EXPECT_EQ(milk.at("variantRef"), "FM-1");
    EXPECT_EQ(milk.at("picture"), pictures.addressOf((folder / "1.png").string()));
    EXPECT_EQ(milk.at("badge"), "");
    EXPECT_EQ(face.at("products")[1].at("picture"), "");
}

TEST(TheCardsFace, PartsTheTermFromItsTroubles)
{
    CardContent card = cardOf(CardState::Searching, 0);
    card.term = "oat milk ~status=503 ~delay=3s";
    const json face = Screen::faceOf(card, {}, PictureFolder(""));
    EXPECT_EQ(face.at("term"), "oat milk");
    EXPECT_EQ(face.at("troubles"), (json{"~status=503", "~delay=3s"}));
    EXPECT_EQ(face.at("state"), "searching");
    EXPECT_EQ(face.at("outcome"), "");
    card.term = " two  blanks ";
    EXPECT_EQ(Screen::faceOf(card, {}, PictureFolder("")).at("term"), " two  blanks ");
}

TEST(TheCardsFace, IsOverForASearchThatWasNotSent)
{
    const json face =
        Screen::faceOf(cardOf(CardState::Searching, 0), {Outcome::Failed, {"why"}}, PictureFolder(""));
    EXPECT_EQ(face.at("state"), "shown");
    EXPECT_EQ(face.at("outcome"), "failed");
    EXPECT_EQ(face.at("reasons"), json{"why"});
}

TEST(TheCardsFace, IsEmptyAtTheStart)
{
    EXPECT_EQ(Screen::faceOf(CardContent(), {}, PictureFolder("")).at("state"), "empty");
}

}  // namespace
