#include "VoiceView.h"

#include <gtest/gtest.h>

#include "Grammar.h"
#include "Names.h"
#include "VoiceStatus.h"

namespace {

using namespace Appliance;
using Tool::AwaitedMessage;
using Tool::VoiceTurn;

std::vector<std::string> awaitedFor(const std::vector<std::string>& nlu)
{
    std::vector<std::string> operations;
    for (const AwaitedMessage& message : Tool::messagesFor(nlu)) {
        operations.push_back(message.operation);
    }
    return operations;
}

// The choice of a product, and what came of it.
VoiceTurn chosen()
{
    VoiceTurn turn;
    turn.number = 1;
    turn.sentence = "the second one";
    turn.nlu = {Assistant::nluOf({Assistant::SearchedItem, "2"})};
    turn.shop.page = Partner::Page::Product;
    turn.shop.product = {"freshmart", "v2"};
    turn.toPartner = {{1, "", OperationShowProduct, ServiceAppId, {{KeyVariantRefs, "v2"}}, "taken"}};
    turn.toAssistant = {{1, "", OperationCloseApp, ServiceAppId, {}, "taken"}};
    return turn;
}

Ui::CardContent milk()
{
    Ui::CardContent card;
    card.state = Ui::CardState::Shown;
    card.merchant = "freshmart";
    card.products = {{"Whole Milk", "", "", "", "", "v1", ""}, {"Skim Milk", "", "", "", "", "v2", ""}};
    return card;
}

std::string plain(const VoiceTurn& turn)
{
    return Tool::turnText(turn, milk(), {});
}

std::string errors(const VoiceTurn& turn)
{
    return Tool::turnErrors(turn, milk(), {});
}

// Of which nothing came.
VoiceTurn chosenInVain(const std::string& item)
{
    VoiceTurn turn = chosen();
    turn.nlu = {Assistant::nluOf({Assistant::SearchedItem, item})};
    turn.toPartner.clear();
    turn.toAssistant.clear();
    turn.missing = Tool::messagesFor(turn.nlu);
    turn.limit = std::chrono::milliseconds(1500);
    return turn;
}

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST(AnAnswer, LeadsToTheMessagesOfItsAction)
{
    using Operations = std::vector<std::string>;
    EXPECT_EQ(awaitedFor({Assistant::nluOf({Assistant::AddToCart, ""})}), Operations{OperationAddToCart});
    EXPECT_EQ(awaitedFor({Assistant::nluOf({Assistant::CheckOut, ""})}), Operations{OperationCheckOut});
    EXPECT_EQ(awaitedFor({Assistant::nluOf({Assistant::ShowCart, ""})}), Operations{OperationShowCart});
    EXPECT_EQ(awaitedFor({Assistant::nluOf({Assistant::SearchedItem, "1"})}),
              (Operations{OperationShowProduct, OperationCloseApp}));
    EXPECT_EQ(awaitedFor({R"({"actionName": "\t Show Cart Success \n"})", "broken",
                          R"({"actionName": "Commerce Check Out"})"}),
              (Operations{OperationShowCart, OperationCheckOut}));
}

TEST(AnAnswer, ThatNamesNoActionLeadsToNothing)
{
    for (const char* nlu : {"", "{", "[]", "null", "{}", R"({"actionName": 1})", R"({"actionName": ""})",
                            R"({"actionName": " "})", R"({"actionName": "commerce check out"})"}) {
        EXPECT_TRUE(awaitedFor({nlu}).empty()) << nlu;
    }
}

TEST(AVoiceTurn, TellsWhatEachAppReceived)
{
    const std::string text = plain(chosen());
    EXPECT_TRUE(has(text, "“the second one”\n")) << text;
    EXPECT_TRUE(has(text, "✓ partner app  show_detailed_view  key_product_variant_refs=v2\n")) << text;
    EXPECT_TRUE(has(text, "✓ assistant    close_app\n")) << text;
    EXPECT_TRUE(has(text, "The partner app shows “Skim Milk” (freshmart, v2). The cart is empty.\n")) << text;
    EXPECT_TRUE(has(text, "The assistant's view is closed.\n")) << text;
}

TEST(AVoiceTurn, NamesNoProductOfAnotherMerchantOrSearch)
{
    VoiceTurn turn = chosen();
    turn.shop.product = {"greengrocer", "v2"};
    EXPECT_TRUE(has(plain(turn), "shows a product (greengrocer, v2)")) << plain(turn);
    turn.shop.product = {"freshmart", "v3"};
    EXPECT_TRUE(has(plain(turn), "shows a product (freshmart, v3)")) << plain(turn);
    EXPECT_TRUE(has(Tool::turnText(chosen(), std::nullopt, {}), "shows a product (freshmart, v2)"));
}

TEST(AVoiceTurn, ThatWentWellHasNoErrors)
{
    EXPECT_TRUE(chosen().isFine());
    EXPECT_EQ(errors(chosen()), "");
}

TEST(AVoiceTurn, TellsWhatDidNotCome)
{
    const VoiceTurn turn = chosenInVain("2");
    EXPECT_FALSE(turn.isFine());
    EXPECT_EQ(errors(turn),
              "✗ partner app  show_detailed_view did not come within 1.5 s\n"
              "✗ assistant    close_app did not come within 1.5 s\n");
    EXPECT_FALSE(has(plain(turn), "✓")) << plain(turn);
    EXPECT_TRUE(has(plain(turn), "delivered  {")) << plain(turn);
}

TEST(AVoiceTurn, TellsHowManyProductsThereAreToChooseFrom)
{
    for (const char* item : {"3", "0", "-1", "99999999999999999999", "none"}) {
        EXPECT_TRUE(has(errors(chosenInVain(item)), "The last search has 2 products.\n")) << item;
    }
    EXPECT_FALSE(has(errors(chosenInVain("1")), "last search"));
    VoiceTurn other = chosenInVain("3");
    other.nlu = {"broken",
                 "[]",
                 "{}",
                 R"({"actionData": 1})",
                 Assistant::nluOf({Assistant::CheckOut, ""}),
                 R"({"actionData": {"representativeCommerceData": {"id": 3}}})"};
    EXPECT_FALSE(has(errors(other), "last search"));
    EXPECT_FALSE(has(Tool::turnErrors(chosenInVain("3"), std::nullopt, {}), "last search"));
}

TEST(AVoiceTurn, DoesNotTakeTheRetailersCardForTheServices)
{
    Ui::CardContent card = milk();
    card.source = Ui::Source::Retailer;
    card.merchant = "";
    const VoiceTurn inVain = chosenInVain("9");
    EXPECT_NE(Tool::turnErrors(inVain, milk(), {}).find("The last search has"), std::string::npos);
    EXPECT_EQ(Tool::turnErrors(inVain, card, {}).find("The last search has"), std::string::npos);
    VoiceTurn turn = chosen();
    turn.shop.product.merchant = "";
    EXPECT_EQ(Tool::turnText(turn, card, {}).find("Skim Milk"), std::string::npos);
}

TEST(AVoiceTurn, TellsThatAnotherSentenceEndedTheWait)
{
    VoiceTurn turn = chosenInVain("2");
    turn.isOvertaken = true;
    EXPECT_TRUE(has(errors(turn), "close_app did not come before another sentence was said\n"))
        << errors(turn);
}

TEST(AVoiceTurn, TellsWhatAnAppDidNotActOn)
{
    VoiceTurn turn = chosen();
    turn.toPartner[0].outcome = "ignored: no product is shown";
    EXPECT_FALSE(turn.isFine());
    EXPECT_EQ(errors(turn), "✗ partner app  show_detailed_view ignored: no product is shown\n");
    EXPECT_FALSE(has(plain(turn), "✓ partner")) << plain(turn);
    EXPECT_TRUE(has(plain(turn), "✓ assistant")) << plain(turn);
}

TEST(AVoiceTurn, ListsTheSentencesOnlyWhereOneWasNotUnderstood)
{
    VoiceTurn turn;
    turn.sentence = "open the pod bay doors";
    turn.trouble = "it failed";
    EXPECT_EQ(errors(turn), "✗ it failed\n");
    turn.isUnderstood = false;
    const std::string text = errors(turn);
    EXPECT_TRUE(has(text, "✗ it failed\n")) << text;
    EXPECT_TRUE(has(text, "<nth> is first to tenth")) << text;
    for (const Assistant::Form& form : Assistant::Forms) {
        EXPECT_TRUE(has(text, std::string("  ") + form.words + "\n")) << form.words;
    }
}

TEST(AVoiceTurn, KeepsControlCharactersFromTheTerminal)
{
    VoiceTurn turn = chosen();
    turn.sentence = "a\x1B[2J";
    turn.nlu = {"b\x1B[2J"};
    turn.shop.product.variantRef = "c\x1B[2J";
    turn.toPartner[0].operation = "d\x1B[2J";
    turn.toPartner[0].extras = {{"e\x1B[2J", "f\x1B[2J"}};
    turn.toPartner[0].outcome = "g\x1B[2J";
    EXPECT_FALSE(has(plain(turn) + errors(turn), "\x1B"));
    turn.toPartner[0].outcome = Appliance::Taken;
    EXPECT_FALSE(has(plain(turn), "\x1B"));
    turn.trouble = "h\x1B[2J";
    EXPECT_FALSE(has(plain(turn) + errors(turn), "\x1B"));
}

TEST(AVoiceTurn, InJsonHoldsOnlyItsOwnMessages)
{
    VoiceTurn turn = chosen();
    turn.shop.messages.resize(7);
    const nlohmann::json json = Tool::turnJson(turn, milk());
    EXPECT_EQ(json["turn"], 1);
    EXPECT_EQ(json["partner"]["messages"].size(), 1U);
    EXPECT_EQ(json["partner"]["product"]["name"], "Skim Milk");
    EXPECT_EQ(json["assistant"]["view"], "closed");
    EXPECT_EQ(json["missing"].size(), 0U);
}

TEST(TheVoiceStatus, TellsWhatTheClientIs)
{
    const auto voiceText = [](const VoiceOnBus& client) { return Tool::voiceText({client, ""}); };
    EXPECT_EQ(voiceText({2, "Carvoy", {"#one", "#two"}}),
              "Voice control: ready, called “Carvoy”, commands: #one #two\n");
    EXPECT_EQ(voiceText({1, "", {}}), "Voice control: initialized, called “”, commands: –\n");
    EXPECT_EQ(voiceText({-7, "", {}}), "Voice control: -7, called “”, commands: –\n");
}

TEST(TheVoiceStatus, TellsWhyThereIsNoClient)
{
    const auto trouble = [](const std::string& error) {
        return Tool::voiceTrouble("org.freedesktop.DBus.Error." + error, "what the bus says");
    };
    EXPECT_EQ(trouble("ServiceUnknown"), "the service is not running");
    EXPECT_EQ(trouble("NoReply"), "the service does not answer");
    EXPECT_EQ(trouble("UnknownObject"), "the service has none");
    EXPECT_EQ(trouble("AccessDenied"), "what the bus says");
    EXPECT_EQ(Tool::voiceText({std::nullopt, "no\x1B[2J"}), "Voice control: no\xEF\xBF\xBD[2J\n");
    EXPECT_TRUE(Tool::voiceJson({std::nullopt, "no"}).is_null());
}

}  // namespace
