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

TestSupport::Extras retailerSearch(const std::string& term)
{
    return {{KeySource, sdbus::Variant(std::string("retailer"))}, {KeySearchTerm, sdbus::Variant(term)}};
}

TestSupport::Extras retailerResult(const std::string& term, const std::string& total)
{
    TestSupport::Extras extras;
    extras[KeySearchTerm] = sdbus::Variant(term);
    extras[KeyTotal] = sdbus::Variant(total);
    extras[KeyNames] = sdbus::Variant(Texts{"초코 우유", "두유"});
    extras[KeyPrices] = sdbus::Variant(Texts{"2,480원", "990원"});
    extras[KeyFormerPrices] = sdbus::Variant(Texts{"", ""});
    extras[KeyDiscountTypes] = sdbus::Variant(Texts{"60", ""});
    extras[KeyDiscountTexts] = sdbus::Variant(Texts{"2+1", ""});
    extras[KeyIds] = sdbus::Variant(Texts{"1000", "2000"});
    return extras;
}

TestSupport::Extras retailerPicture(const std::string& number, const std::string& type,
                                    const std::string& path)
{
    return {{KeyImageNumber, sdbus::Variant(number)},
            {KeyImageType, sdbus::Variant(type)},
            {KeyImagePath, sdbus::Variant(path)}};
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

    // With a peer in the place of the retailer's service, which has got both requests.
    void searchAtRetailer(const std::string& term)
    {
        retailer_ = std::make_unique<RawPeer>(RetailerServiceAppId);
        ASSERT_EQ(tool_->launch(UiAppId, OperationSearch, 0, retailerSearch(term)), "");
        ASSERT_TRUE(retailer_->nextLaunch());
        ASSERT_TRUE(retailer_->nextLaunch());
    }

    std::string fromRetailer(const char* operation, std::uint32_t id, const TestSupport::Extras& extras)
    {
        return retailer_->launch(UiAppId, operation, id, extras, RetailerServiceAppId);
    }

    std::unique_ptr<RawPeer> service_;
    std::unique_ptr<RawPeer> retailer_;
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

TEST_F(TheUiApp, PassesASearchAtTheRetailerToItsService)
{
    start();
    retailer_ = std::make_unique<RawPeer>(RetailerServiceAppId);
    ASSERT_EQ(tool_->launch(UiAppId, OperationSearch, 9, retailerSearch("우유")), "");
    const auto search = retailer_->nextLaunch();
    ASSERT_TRUE(search);
    EXPECT_EQ(search->operation, OperationSearch);
    EXPECT_EQ(search->extras.size(), 1U);
    EXPECT_EQ(textIn(*search, KeySearchTerm), "우유");
    const auto result = retailer_->nextLaunch();
    ASSERT_TRUE(result);
    EXPECT_EQ(result->operation, OperationResult);
    EXPECT_TRUE(result->extras.empty());
    const auto reply = tool_->nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->result, 0);
    EXPECT_EQ(textIn(*reply, KeyCardSequence), "1");
    const auto card = cardAfter(1);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->source, Ui::Source::Retailer);
    EXPECT_EQ(card->term, "우유");
}

TEST_F(TheUiApp, TellsTheToolThatTheRetailersServiceIsNotThere)
{
    start();
    for (const char* operation : {OperationSearch, OperationShow}) {
        ASSERT_EQ(tool_->launch(UiAppId, operation, 5, retailerSearch("우유")), "");
        const auto reply = tool_->nextReply();
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->result, -1) << operation;
    }
}

TEST_F(TheUiApp, AsksTheOneWhoIsMeantForTheResult)
{
    start();
    retailer_ = std::make_unique<RawPeer>(RetailerServiceAppId);
    const auto whose = [](const char* source) {
        return TestSupport::Extras{{KeySource, sdbus::Variant(std::string(source))}};
    };
    ASSERT_EQ(tool_->launch(UiAppId, OperationShow, 0, whose("retailer")), "");
    EXPECT_EQ(retailer_->nextLaunch()->operation, OperationResult);
    ASSERT_EQ(tool_->launch(UiAppId, OperationShow, 0, whose("merchant")), "");
    EXPECT_EQ(service_->nextLaunch()->operation, OperationResult);
}

TEST_F(TheUiApp, RefusesASourceThatThereIsNot)
{
    start();
    search("freshmart", "milk");
    std::uint32_t id = 0;
    const std::vector<sdbus::Variant> sources = {sdbus::Variant(std::string("greengrocer")),
                                                 sdbus::Variant(std::string()),
                                                 sdbus::Variant(Texts{"retailer"})};
    for (const char* operation : {OperationSearch, OperationShow}) {
        for (const sdbus::Variant& source : sources) {
            ASSERT_EQ(tool_->launch(UiAppId, operation, ++id, {{KeySource, source}}), "");
            const auto reply = tool_->nextReply();
            ASSERT_TRUE(reply);
            EXPECT_EQ(reply->result, -1);
            EXPECT_EQ(textIn(*reply, KeyCardSequence), "1");
        }
    }
    const auto card = cardAfter(1 + id);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->term, "milk");
    EXPECT_EQ(card->messages.back().outcome, "ignored: it is neither for a merchant nor for the retailer");
}

TEST_F(TheUiApp, ShowsTheRetailersListsAndConfirmsThem)
{
    start();
    searchAtRetailer("우유");
    ASSERT_EQ(fromRetailer(OperationResult, 7, retailerResult("우유", "2")), "");
    const auto reply = retailer_->nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->id, 7U);
    EXPECT_EQ(reply->result, 0);
    const auto card = cardAfter(2);
    ASSERT_TRUE(card);
    ASSERT_EQ(card->products.size(), 2U);
    EXPECT_EQ(card->products[0].name, "초코 우유");
    EXPECT_EQ(card->products[0].discount, "2+1");
    EXPECT_EQ(card->products[0].discountType, "60");
    EXPECT_EQ(card->products[0].price, "2,480원");
    EXPECT_EQ(card->products[1].id, "2000");
    EXPECT_EQ(card->products[1].size, "");
}

// A user who was logged out: the answer to an earlier request comes while a search is under way.
TEST_F(TheUiApp, DoesNotTakeAnEarlierEmptyAnswerForItsSearch)
{
    start();
    searchAtRetailer("zz");
    fromRetailer(OperationResult, 1, retailerResult("", "0"));
    ASSERT_EQ(tool_->launch(UiAppId, OperationShow, 0, retailerSearch("")), "");
    ASSERT_TRUE(retailer_->nextLaunch());
    ASSERT_EQ(tool_->launch(UiAppId, OperationSearch, 0, retailerSearch("우유")), "");
    ASSERT_TRUE(retailer_->nextLaunch());
    ASSERT_TRUE(retailer_->nextLaunch());
    fromRetailer(OperationResult, 2, retailerResult("", "0"));
    const auto waiting = cardAfter(5);
    ASSERT_TRUE(waiting);
    EXPECT_EQ(waiting->state, Ui::CardState::Searching);
    EXPECT_EQ(waiting->messages.back().outcome, "ignored: it belongs to another search");
    fromRetailer(OperationResult, 3, retailerResult("우유", "2"));
    EXPECT_EQ(retailer_->nextReply()->id, 1U);
    EXPECT_EQ(retailer_->nextReply()->id, 3U);
    const auto card = cardAfter(6);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->term, "우유");
    EXPECT_EQ(card->products.size(), 2U);
}

TEST_F(TheUiApp, NotesBothPicturesOfTheRetailersProducts)
{
    start();
    searchAtRetailer("우유");
    fromRetailer(OperationResult, 1, retailerResult("우유", "2"));
    fromRetailer(OperationRetailerImage, 0, retailerPicture("1", "0", "/media/tmp/20.jpg"));
    fromRetailer(OperationRetailerImage, 0, retailerPicture("1", "2", "/media/tmp/22.png"));
    const auto card = cardAfter(4);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->products[0].picture, "");
    EXPECT_EQ(card->products[1].picture, "/media/tmp/20.jpg");
    EXPECT_EQ(card->products[1].badge, "/media/tmp/22.png");
}

TEST_F(TheUiApp, IgnoresWhatMakesNoSenseFromTheRetailer)
{
    start();
    searchAtRetailer("우유");
    fromRetailer(OperationResult, 1, retailerResult("우유", "2"));
    const std::size_t before = cardAfter(2)->messages.size();
    std::size_t sent = 0;
    for (const char* type : {"1", "3", "", "x", "-2"}) {
        ASSERT_EQ(fromRetailer(OperationRetailerImage, 0, retailerPicture("0", type, "/media/tmp/bad.png")),
                  "");
        ++sent;
    }
    for (const char* number : {"2", "-1", "", "one"}) {
        ASSERT_EQ(fromRetailer(OperationRetailerImage, 0, retailerPicture(number, "2", "/media/tmp/bad.png")),
                  "");
        ++sent;
    }
    TestSupport::Extras broken = retailerPicture("0", "0", "/media/tmp/bad.png");
    broken[KeyImagePath] = sdbus::Variant(Texts{"/media/tmp/bad.png"});
    fromRetailer(OperationRetailerImage, 0, broken);
    broken = retailerPicture("0", "0", "/media/tmp/bad.png");
    broken.erase(KeyImageType);
    fromRetailer(OperationRetailerImage, 0, broken);
    fromRetailer(OperationResult, 0, retailerResult("우유", "two"));
    // The right messages from the wrong side.
    fromRetailer(OperationProductImage, 0, pictureExtras("0", "/media/tmp/bad.png"));
    fromService(OperationRetailerImage, 0, retailerPicture("0", "0", "/media/tmp/bad.png"));
    fromService(OperationProductImage, 0, pictureExtras("0", "/media/tmp/bad.png"));
    tool_->launch(UiAppId, OperationRetailerImage, 0, retailerPicture("0", "0", "/media/tmp/bad.png"));
    sent += 7;
    const auto card = cardAfter(before + sent);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->products.size(), 2U);
    for (const Ui::Product& product : card->products) {
        EXPECT_EQ(product.picture + product.badge, "");
    }
    for (std::size_t i = before; i < card->messages.size(); ++i) {
        EXPECT_EQ(card->messages[i].outcome.rfind("ignored", 0), 0U) << card->messages[i].outcome;
    }
}

TEST_F(TheUiApp, DoesNotConfirmListsOfAnotherSource)
{
    start();
    searchAtRetailer("우유");
    fromService(OperationResult, 1, resultExtras("", "우유", "2"));
    fromRetailer(OperationResult, 2, retailerResult("우유", "2"));
    EXPECT_EQ(retailer_->nextReply()->id, 2U);
    search("freshmart", "milk");
    fromRetailer(OperationResult, 3, retailerResult("milk", "2"));
    fromService(OperationResult, 4, resultExtras("freshmart", "milk", "2"));
    EXPECT_EQ(service_->nextReply()->id, 4U);
}

}  // namespace
