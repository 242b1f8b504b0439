#include <gtest/gtest.h>

#include <chrono>

#include "CardJson.h"
#include "Names.h"
#include "ScreenAppFixture.h"

namespace {

using namespace Appliance;
using namespace std::chrono_literals;
using TestSupport::RawMessage;
using TestSupport::RawPeer;
using Texts = std::vector<std::string>;

TestSupport::Extras searchExtras(const std::string& merchant, const std::string& term)
{
    return {{KeyMerchant, sdbus::Variant(merchant)}, {KeySearchTerm, sdbus::Variant(term)}};
}

TestSupport::Extras resultExtras(const std::string& merchant, const std::string& term,
                                 const std::string& total)
{
    TestSupport::Extras extras = searchExtras(merchant, term);
    extras[KeyTotal] = sdbus::Variant(total);
    extras[KeyNames] = sdbus::Variant(Texts{"Whole Milk", "Crème fraîche"});
    extras[KeySizes] = sdbus::Variant(Texts{"1 gal", "8 oz"});
    extras[KeyDiscounts] = sdbus::Variant(Texts{"", "Save 10%"});
    extras[KeyFormerPrices] = sdbus::Variant(Texts{"", "$3.0"});
    extras[KeyPrices] = sdbus::Variant(Texts{"$4.49", "$2.69"});
    extras[KeyVariantRefs] = sdbus::Variant(Texts{"v1", "v2"});
    return extras;
}

TestSupport::Extras pictureExtras(const std::string& number, const std::string& path)
{
    return {{KeyImageNumber, sdbus::Variant(number)}, {KeyImagePath, sdbus::Variant(path)}};
}

// The UI app's process, a tool, and a peer in the service's place.
class TheUiApp : public TestSupport::ScreenAppFixture {
  protected:
    void start(const Texts& options = {}, bool withService = true)
    {
        if (withService) {
            service_ = std::make_unique<RawPeer>(ServiceAppId);
        }
        Texts command = {CARVOY_UI};
        command.insert(command.end(), options.begin(), options.end());
        startApp(command, UiAppId);
    }

    std::string fromService(const char* operation, std::uint32_t id, const TestSupport::Extras& extras)
    {
        return service_->launch(UiAppId, operation, id, extras, ServiceAppId);
    }

    // A search of the tool's, of which the service has got both requests.
    void search(const std::string& merchant, const std::string& term)
    {
        ASSERT_EQ(tool_->launch(UiAppId, OperationSearch, 0, searchExtras(merchant, term)), "");
        ASSERT_TRUE(service_->nextLaunch());
        ASSERT_TRUE(service_->nextLaunch());
    }

    std::optional<Ui::CardContent> cardAfter(std::size_t messages)
    {
        return watch_->waitFor<Ui::CardContent>("card.json", Ui::cardFromJson, [messages](const auto& card) {
            return card.messages.size() >= messages;
        });
    }

    std::unique_ptr<RawPeer> service_;
};

TEST_F(TheUiApp, PassesASearchOnAndAsksForItsResult)
{
    start();
    ASSERT_EQ(tool_->launch(UiAppId, OperationSearch, 0, searchExtras("freshmart", "oat milk")), "");
    const auto search = service_->nextLaunch();
    ASSERT_TRUE(search);
    EXPECT_EQ(search->operation, OperationSearch);
    EXPECT_EQ(search->caller, UiAppId);
    EXPECT_EQ(textIn(*search, KeyMerchant), "freshmart");
    EXPECT_EQ(textIn(*search, KeySearchTerm), "oat milk");
    const auto result = service_->nextLaunch();
    ASSERT_TRUE(result);
    EXPECT_EQ(result->operation, OperationResult);
    EXPECT_TRUE(result->extras.empty());
    const auto card = cardAfter(1);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->sequence, 1);
    EXPECT_EQ(card->state, Ui::CardState::Searching);
    EXPECT_EQ(card->term, "oat milk");
}

TEST_F(TheUiApp, TellsTheToolWhichCardItsSearchMade)
{
    start();
    search("freshmart", "milk");
    ASSERT_EQ(tool_->launch(UiAppId, OperationSearch, 41, searchExtras("freshmart", "bread")), "");
    const auto reply = tool_->nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->id, 41U);
    EXPECT_EQ(reply->result, 0);
    EXPECT_EQ(textIn(*reply, KeyCardSequence), "2");
    EXPECT_EQ(textIn(*reply, KeyCardResults), "0");
}

TEST_F(TheUiApp, TellsTheToolThatTheServiceIsNotThere)
{
    start({}, false);
    ASSERT_EQ(tool_->launch(UiAppId, OperationSearch, 5, searchExtras("freshmart", "milk")), "");
    const auto reply = tool_->nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->result, -1);
}

TEST_F(TheUiApp, AsksAgainForTheResultWhenItIsToShow)
{
    start();
    ASSERT_EQ(tool_->launch(UiAppId, OperationShow, 0), "");
    const auto asked = service_->nextLaunch();
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->operation, OperationResult);
    EXPECT_EQ(cardAfter(1)->sequence, 0);
}

TEST_F(TheUiApp, ShowsTheProductListsAndConfirmsThem)
{
    start();
    search("freshmart", "milk");
    ASSERT_EQ(fromService(OperationResult, 7, resultExtras("freshmart", "milk", "2")), "");
    const auto reply = service_->nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->id, 7U);
    EXPECT_EQ(reply->result, 0);
    const auto card = cardAfter(2);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->state, Ui::CardState::Shown);
    ASSERT_EQ(card->products.size(), 2U);
    EXPECT_EQ(card->products[1].name, "Crème fraîche");
    EXPECT_EQ(card->products[1].formerPrice, "$3.0");
    EXPECT_EQ(card->messages.back().from, ServiceAppId);
    EXPECT_EQ(card->messages.back().outcome, "taken");
}

TEST_F(TheUiApp, NotesThePicturesInTheCard)
{
    start();
    search("freshmart", "milk");
    fromService(OperationResult, 1, resultExtras("freshmart", "milk", "2"));
    fromService(OperationProductImage, 0, pictureExtras("1", "/media/tmp/2.png"));
    const auto card = cardAfter(3);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->products[0].picture, "");
    EXPECT_EQ(card->products[1].picture, "/media/tmp/2.png");
}

TEST_F(TheUiApp, IgnoresWhatMakesNoSense)
{
    start();
    search("freshmart", "milk");
    fromService(OperationResult, 1, resultExtras("freshmart", "milk", "2"));
    const std::size_t before = cardAfter(2)->messages.size();
    const Texts numbers = {"2", "-1", "x", "", "1e0", "99999999999999999999"};
    for (const std::string& number : numbers) {
        ASSERT_EQ(fromService(OperationProductImage, 0, pictureExtras(number, "/media/tmp/bad.png")), "");
    }
    fromService(OperationProductImage, 0, {{KeyImageNumber, sdbus::Variant(Texts{"1"})}});
    fromService(OperationResult, 0, resultExtras("freshmart", "milk", "many"));
    fromService("http://carvoy-service/appcontrol/operation/hide", 0, {});
    tool_->launch(UiAppId, OperationResult, 0, resultExtras("freshmart", "milk", "1"));
    const auto card = cardAfter(before + numbers.size() + 4);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->products.size(), 2U);
    for (const Ui::Product& product : card->products) {
        EXPECT_EQ(product.picture, "");
    }
    for (std::size_t i = before; i < card->messages.size(); ++i) {
        EXPECT_EQ(card->messages[i].outcome.rfind("ignored", 0), 0U) << card->messages[i].outcome;
    }
}

// Replies to one sender keep their order, so an answered later request shows that the earlier one was not.
TEST_F(TheUiApp, DoesNotConfirmListsOfAnOlderSearch)
{
    start();
    search("freshmart", "milk");
    search("freshmart", "bread");
    fromService(OperationResult, 1, resultExtras("freshmart", "milk", "2"));
    fromService(OperationResult, 2, resultExtras("freshmart", "bread", "2"));
    EXPECT_EQ(service_->nextReply()->id, 2U);
    EXPECT_EQ(cardAfter(4)->term, "bread");
}

TEST_F(TheUiApp, ThatNeverConfirmsAnswersOnlyOthers)
{
    start({"--confirm", "never"});
    search("freshmart", "milk");
    fromService(OperationResult, 1, resultExtras("freshmart", "milk", "2"));
    fromService(OperationShow, 2, {});
    EXPECT_EQ(service_->nextReply()->id, 2U);
}

TEST_F(TheUiApp, ThatFailsToConfirmSaysSo)
{
    start({"--confirm", "fail"});
    search("freshmart", "milk");
    fromService(OperationResult, 1, resultExtras("freshmart", "milk", "2"));
    const auto reply = service_->nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->id, 1U);
    EXPECT_EQ(reply->result, -1);
}

TEST_F(TheUiApp, ThatConfirmsLateTakesItsTime)
{
    start({"--confirm", "late", "--confirm-after", "300"});
    search("freshmart", "milk");
    const auto asked = std::chrono::steady_clock::now();
    fromService(OperationResult, 1, resultExtras("freshmart", "milk", "2"));
    const auto reply = service_->nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->result, 0);
    EXPECT_GE(std::chrono::steady_clock::now() - asked, 300ms);
}

TEST_F(TheUiApp, EndsWellWithAnAnswerStillHeldBack)
{
    start({"--confirm", "late", "--confirm-after", "3600000"});
    search("freshmart", "milk");
    fromService(OperationResult, 1, resultExtras("freshmart", "milk", "2"));
    EXPECT_TRUE(cardAfter(2));
}

}  // namespace
