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

// A line of a service whose process has the id 100.
Appliance::LogLine lineOf(int thread, const std::string& message, char priority = 'E')
{
    return {priority, "carvoy-service", 100,
            "[" + std::to_string(thread) + "] SearchControl.cpp: processSearch(1) > " + message};
}

const Appliance::StatusRecord loggedIn = {1, 1, 0, std::nullopt, std::nullopt};
const Appliance::StatusRecord loggedOut = {0, 0, 0, std::nullopt, std::nullopt};

TEST(ASearchsVerdict, IsOpenUntilItsResultIsThere)
{
    const SearchWitness witness;
    EXPECT_EQ(witness.verdictOn(cardOf(CardState::Empty, 0), std::nullopt).outcome, Outcome::None);
    EXPECT_EQ(witness.verdictOn(cardOf(CardState::Searching, 0), loggedIn).outcome, Outcome::None);
}

TEST(ASearchsVerdict, IsFoundWithProductsWhateverWasLogged)
{
    SearchWitness witness;
    witness.note(lineOf(100, "something went wrong"));
    const Verdict verdict = witness.verdictOn(cardOf(CardState::Shown, 1), loggedIn);
    EXPECT_EQ(verdict.outcome, Outcome::Found);
    EXPECT_EQ(verdict.reasons, Texts());
}

TEST(ASearchsVerdict, IsNothingWhereTheServiceFoundNone)
{
    SearchWitness witness;
    EXPECT_EQ(witness.verdictOn(cardOf(CardState::Shown, 0), loggedIn).outcome, Outcome::Nothing);
    EXPECT_TRUE(witness.note(lineOf(100, "empty json array")));
    EXPECT_EQ(witness.verdictOn(cardOf(CardState::Shown, 0), loggedIn).outcome, Outcome::Nothing);
}

TEST(ASearchsVerdict, IsFailedWithTheServicesOwnWords)
{
    SearchWitness witness;
    witness.note(lineOf(100, "curl perform failed: 503"));
    const Verdict verdict = witness.verdictOn(cardOf(CardState::Shown, 0), loggedIn);
    EXPECT_EQ(verdict.outcome, Outcome::Failed);
    EXPECT_EQ(verdict.reasons, Texts{"curl perform failed: 503"});
}

TEST(ASearchsVerdict, CountsNeitherOtherThreadsNorOtherLevelsNorEarlierSearches)
{
    SearchWitness witness;
    witness.note(lineOf(100, "curl perform failed: 401"));
    witness.begin();
    EXPECT_FALSE(witness.note(lineOf(101, "Failed to startDownload for index 1")));
    EXPECT_FALSE(witness.note(lineOf(100, "a trace", 'D')));
    EXPECT_FALSE(witness.note({'E', "carvoy-ui", 100, "[100] something > else"}));
    EXPECT_EQ(witness.verdictOn(cardOf(CardState::Shown, 0), loggedIn).outcome, Outcome::Nothing);
}

TEST(ASearchsVerdict, IsFailedAtTheRetailerForWhoIsNotLoggedIn)
{
    const SearchWitness witness;
    const CardContent atRetailer = cardOf(CardState::Shown, 0, Source::Retailer);
    EXPECT_EQ(witness.verdictOn(atRetailer, loggedOut).outcome, Outcome::Failed);
    EXPECT_EQ(witness.verdictOn(atRetailer, loggedOut).reasons, Texts{"Not logged in at the retailer"});
    EXPECT_EQ(witness.verdictOn(atRetailer, loggedIn).outcome, Outcome::Nothing);
    EXPECT_EQ(witness.verdictOn(atRetailer, std::nullopt).outcome, Outcome::Nothing);
    EXPECT_EQ(witness.verdictOn(cardOf(CardState::Shown, 0), loggedOut).outcome, Outcome::Nothing);
}

TEST(ASearchsVerdict, IsFailedWhereTheServiceWasNotReached)
{
    SearchWitness witness;
    witness.noteNotSent("no such app is running");
    const CardContent searching = cardOf(CardState::Searching, 0);
    EXPECT_EQ(witness.verdictOn(searching, std::nullopt).reasons, Texts{"no such app is running"});
    witness.begin();
    EXPECT_EQ(witness.verdictOn(searching, std::nullopt).outcome, Outcome::None);
}

TEST(ASearchsVerdict, KeepsABoundedNumberOfReasons)
{
    SearchWitness witness;
    for (int i = 0; i < 100; ++i) {
        witness.note(lineOf(100, "error"));
    }
    EXPECT_EQ(witness.verdictOn(cardOf(CardState::Shown, 0), loggedIn).reasons.size(),
              SearchWitness::ReasonsKept);
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
