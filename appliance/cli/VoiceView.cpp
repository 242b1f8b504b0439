#include "VoiceView.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "ConversationJson.h"
#include "Grammar.h"
#include "Names.h"
#include "PlainText.h"
#include "ShopJson.h"

namespace Tool {

namespace {

using Appliance::printable;

const char Indent[] = "  ";

std::string countText(long count)
{
    return count == 1 ? "1 product" : std::to_string(count) + " products";
}

std::string appName(const std::string& appId)
{
    return appId == Appliance::PartnerAppId ? "partner app  " : "assistant    ";
}

std::string shortOperation(const std::string& operation)
{
    return printable(operation.substr(operation.rfind('/') + 1));
}

std::string takenText(const std::string& appId, const Appliance::ReceivedMessages& messages,
                      const Style& style)
{
    std::string text;
    for (const Appliance::Received& message : messages) {
        if (message.isTaken()) {
            text += style.green("✓ " + appName(appId)) + shortOperation(message.operation);
            for (const auto& [key, value] : message.extras) {
                text += Indent + style.dim(printable(key) + "=") + printable(value);
            }
            text += "\n";
        }
    }
    return text;
}

std::string ignoredText(const std::string& appId, const Appliance::ReceivedMessages& messages,
                        const Style& style)
{
    std::string text;
    for (const Appliance::Received& message : messages) {
        if (!message.isTaken()) {
            text += style.red("✗ " + appName(appId)) + shortOperation(message.operation) + " " +
                    printable(message.outcome) + "\n";
        }
    }
    return text;
}

std::string secondsText(std::chrono::milliseconds time)
{
    std::ostringstream text;
    text << std::chrono::duration<double>(time).count() << " s";
    return text.str();
}

std::string missingText(const VoiceTurn& turn, const Style& style)
{
    const std::string end = turn.isOvertaken ? " did not come before another sentence was said\n"
                                             : " did not come within " + secondsText(turn.limit) + "\n";
    std::string text;
    for (const AwaitedMessage& missing : turn.missing) {
        text += style.red("✗ " + appName(missing.appId)) + shortOperation(missing.operation) + end;
    }
    return text;
}

std::string receivedText(const VoiceTurn& turn, const Style& style)
{
    if (turn.toPartner.empty() && turn.toAssistant.empty() && turn.missing.empty()) {
        return "Nothing is awaited for it, and nothing came.\n\n";
    }
    const std::string text = takenText(Appliance::PartnerAppId, turn.toPartner, style) +
                             takenText(Appliance::AssistantAppId, turn.toAssistant, style);
    return text + (text.empty() ? "" : "\n");
}

// The position that an answer chooses, as the service reads it; nothing where it names none.
std::optional<long> positionIn(const std::string& nlu)
{
    const nlohmann::json json = nlohmann::json::parse(nlu, nullptr, false);
    const nlohmann::json::json_pointer id("/actionData/representativeCommerceData/id");
    if (!json.is_object() || !json.contains(id) || !json.at(id).is_string()) {
        return std::nullopt;
    }
    return std::strtol(json.at(id).get<std::string>().c_str(), nullptr, 10);
}

// Where a product was chosen that the card does not have.
std::string choiceText(const VoiceTurn& turn, const std::optional<Ui::CardContent>& card)
{
    const bool isOfService = card && card->source == Ui::Source::Merchant;  // nobody chooses at the retailer
    if (turn.missing.empty() || !isOfService || card->state != Ui::CardState::Shown) {
        return "";
    }
    const auto count = static_cast<long>(card->products.size());
    const bool isBeyond = std::any_of(turn.nlu.begin(), turn.nlu.end(), [count](const std::string& nlu) {
        const std::optional<long> position = positionIn(nlu);
        return position && (*position < 1 || *position > count);
    });
    return isBeyond ? "The last search has " + countText(count) + ".\n" : "";
}

// Empty where the card does not know it.
std::string nameOf(const Partner::Product& product, const std::optional<Ui::CardContent>& card)
{
    if (!card || card->source != Ui::Source::Merchant || card->merchant != product.merchant) {
        return {};
    }
    for (const Ui::Product& shown : card->products) {
        if (shown.variantRef == product.variantRef) {
            return shown.name;
        }
    }
    return {};
}

std::string productText(const Partner::Product& product, const std::optional<Ui::CardContent>& card)
{
    const std::string name = nameOf(product, card);
    return (name.empty() ? "a product" : "“" + printable(name) + "”") + " (" + printable(product.merchant) +
           ", " + printable(product.variantRef) + ")";
}

std::string pageText(const VoiceTurn& turn, const std::optional<Ui::CardContent>& card)
{
    switch (turn.shop.page) {
        case Partner::Page::None:
            break;
        case Partner::Page::Product:
            return productText(turn.shop.product, card);
        case Partner::Page::Cart:
            return "the cart";
        case Partner::Page::CheckOut:
            return "the check-out";
    }
    return "nothing";
}

std::string cartText(const Partner::ShopContent& shop)
{
    long count = 0;
    for (const Partner::CartLine& line : shop.cart) {
        count += line.quantity;
    }
    if (count == 0) {
        return "is empty";
    }
    return "holds " + countText(count);
}

std::string endText(const VoiceTurn& turn, const std::optional<Ui::CardContent>& card, const Style& style)
{
    const bool open = turn.conversation.view == Assistant::View::Open;
    return "The partner app shows " + style.bold(pageText(turn, card)) + ". The cart " + cartText(turn.shop) +
           ".\nThe assistant's view is " + (open ? "open" : "closed") + ".\n";
}

std::string troubleText(const VoiceTurn& turn, const Style& style)
{
    if (turn.trouble.empty()) {
        return "";
    }
    const std::string text = style.red("✗ ") + printable(turn.trouble) + "\n";
    return turn.isUnderstood ? text : text + "\nThe assistant understands:\n" + sentencesText();
}

}  // namespace

std::string turnText(const VoiceTurn& turn, const std::optional<Ui::CardContent>& card, const Style& style)
{
    std::string text = style.bold("“" + printable(turn.sentence) + "”") + "\n\n";
    if (!turn.trouble.empty()) {
        return text;
    }
    for (const std::string& nlu : turn.nlu) {
        text += style.dim("delivered") + Indent + printable(nlu) + "\n";
    }
    return text + "\n" + receivedText(turn, style) + endText(turn, card, style);
}

std::string turnErrors(const VoiceTurn& turn, const std::optional<Ui::CardContent>& card, const Style& style)
{
    return troubleText(turn, style) + ignoredText(Appliance::PartnerAppId, turn.toPartner, style) +
           ignoredText(Appliance::AssistantAppId, turn.toAssistant, style) + missingText(turn, style) +
           choiceText(turn, card);
}

nlohmann::json turnJson(const VoiceTurn& turn, const std::optional<Ui::CardContent>& card)
{
    nlohmann::json missing = nlohmann::json::array();
    for (const AwaitedMessage& message : turn.missing) {
        missing.push_back({{"to", message.appId}, {"operation", message.operation}});
    }
    nlohmann::json shop = Partner::toJson(turn.shop);
    shop["messages"] = turn.toPartner;
    shop["product"]["name"] = nameOf(turn.shop.product, card);
    nlohmann::json assistant = Assistant::toJson(turn.conversation);
    assistant["messages"] = turn.toAssistant;
    return {{"turn", turn.number},
            {"sentence", turn.sentence},
            {"delivered", turn.nlu},
            {"trouble", turn.trouble},
            {"understood", turn.isUnderstood},
            {"missing", missing},
            {"overtaken", turn.isOvertaken},
            {"partner", shop},
            {"assistant", assistant}};
}

std::string sentencesText()
{
    std::string text =
        "a|b is either word, [a] may be left out; <nth> is first to tenth, or digits such as 2nd;\n"
        "<number> is one to ten, or digits\n";
    for (const Assistant::Form& form : Assistant::Forms) {
        text += std::string(Indent) + form.words + "\n";
    }
    return text;
}

}  // namespace Tool
