#include "UiApp.h"

#include <cstdio>

#include "CardJson.h"
#include "Message.h"
#include "Names.h"
#include "UiLog.h"

namespace Ui {

namespace {

using namespace Appliance;

// What both services send of a result.
ProductLists commonLists(const Extras& extras)
{
    ProductLists lists;
    lists.term = extras.text(KeySearchTerm);
    lists.total = extras.text(KeyTotal);
    lists.names = extras.list(KeyNames);
    lists.formerPrices = extras.list(KeyFormerPrices);
    lists.prices = extras.list(KeyPrices);
    return lists;
}

ProductLists merchantLists(const Extras& extras)
{
    ProductLists lists = commonLists(extras);
    lists.merchant = extras.text(KeyMerchant);
    lists.sizes = extras.list(KeySizes);
    lists.discounts = extras.list(KeyDiscounts);
    lists.variantRefs = extras.list(KeyVariantRefs);
    return lists;
}

ProductLists retailerLists(const Extras& extras)
{
    ProductLists lists = commonLists(extras);
    lists.source = Source::Retailer;
    lists.discounts = extras.list(KeyDiscountTexts);
    lists.discountTypes = extras.list(KeyDiscountTypes);
    lists.ids = extras.list(KeyIds);
    return lists;
}

// Whom a tool's request means; nothing for a name that nobody has.
std::optional<Source> sourceIn(const Extras& extras)
{
    const bool isNamed = extras.texts.count(KeySource) > 0 || extras.lists.count(KeySource) > 0;
    return isNamed ? sourceNamed(extras.text(KeySource)) : Source::Merchant;
}

const char* serviceOf(Source source)
{
    return source == Source::Retailer ? RetailerServiceAppId : ServiceAppId;
}

double secondsOf(int milliseconds)
{
    constexpr double millisecondsPerSecond = 1000;
    return milliseconds / millisecondsPerSecond;
}

const char NoSuchSource[] = "ignored: it is neither for a merchant nor for the retailer";

}  // namespace

UiApp::UiApp(UiSettings settings)
    : ScreenApp(UI_TAG, "card.json"),
      settings_(std::move(settings)),
      confirmation_(settings_.confirmation.mode, secondsOf(settings_.confirmation.delay))
{
}

void UiApp::start()
{
    if (!settings_.face) {
        return;
    }
    face_ = std::make_unique<Screen::Face>(
        *settings_.face, settings_.confirmation,
        Screen::Actions{[this](Source source, const std::string& merchant, const std::string& term) {
                            return searchForFace(source, merchant, term);
                        },
                        [this](Confirmation::Mode mode) { confirmation_.change(mode); }});
    std::printf("%s\n", nlohmann::json({{"screen", face_->address()}}).dump().c_str());
    std::fflush(stdout);
}

void UiApp::end()
{
    face_.reset();
    confirmation_.drop();
}

void UiApp::onSaved()
{
    if (face_) {
        face_->show(card_.content());
    }
}

nlohmann::json UiApp::content() const
{
    return toJson(card_.content());
}

std::string UiApp::take(app_control_h message, const std::string& operation, const std::string& caller)
{
    if (operation == OperationSearch) {
        return search(message);
    }
    if (operation == OperationShow) {
        return show(message);
    }
    const bool fromService = caller == ServiceAppId;
    const bool fromRetailer = caller == RetailerServiceAppId;
    if (operation == OperationResult) {
        return fromService || fromRetailer
                   ? takeResult(message, fromRetailer ? Source::Retailer : Source::Merchant)
                   : "ignored: only the services send product lists";
    }
    if (operation == OperationProductImage) {
        return fromService ? takePicture(message) : "ignored: only the service sends pictures";
    }
    if (operation == OperationRetailerImage) {
        return fromRetailer ? takeRetailerPicture(message)
                            : "ignored: only the retailer's service sends its pictures";
    }
    return "ignored: unknown operation";
}

std::string UiApp::search(app_control_h message)
{
    const Extras extras = extrasOf(message);
    const std::optional<Source> source = sourceIn(extras);
    if (!source) {
        answerTool(message, APP_CONTROL_RESULT_FAILED);
        return NoSuchSource;
    }
    startSearch(*source, extras.text(KeyMerchant), extras.text(KeySearchTerm));
    return answerSent(message, askForSearch());
}

std::string UiApp::searchForFace(Source source, const std::string& merchant, const std::string& term)
{
    startSearch(source, merchant, term);
    const int code = askForSearch();
    return code == APP_CONTROL_ERROR_NONE ? "" : reasonOf(code);
}

void UiApp::startSearch(Source source, const std::string& merchant, const std::string& term)
{
    confirmation_.drop();
    if (source == Source::Retailer) {
        card_.startRetailerSearch(term);
    } else {
        card_.startSearch(merchant, term);
    }
    save();  // before a tool hears of this card, so that it finds it
}

int UiApp::askForSearch()
{
    const CardContent& card = card_.content();
    Extras wanted;
    if (card.source == Source::Merchant) {
        wanted.texts[KeyMerchant] = card.merchant;
    }
    wanted.texts[KeySearchTerm] = card.term;
    const int code = send({serviceOf(card.source), OperationSearch, "", wanted});
    return code == APP_CONTROL_ERROR_NONE ? askForResult(card.source) : code;
}

int UiApp::askForResult(Source source)
{
    const int code = send({serviceOf(source), OperationResult, "", {}});
    if (code == APP_CONTROL_ERROR_NONE) {
        card_.noteAsked(source);
    }
    return code;
}

std::string UiApp::show(app_control_h message)
{
    const std::optional<Source> source = sourceIn(extrasOf(message));
    if (!source) {
        answerTool(message, APP_CONTROL_RESULT_FAILED);
        return NoSuchSource;
    }
    return answerSent(message, askForResult(*source));
}

// What came of sending, told to the tool and to whoever notes the outcome.
std::string UiApp::answerSent(app_control_h message, int sendCode) const
{
    const bool sent = sendCode == APP_CONTROL_ERROR_NONE;
    answerTool(message, sent ? APP_CONTROL_RESULT_SUCCEEDED : APP_CONTROL_RESULT_FAILED);
    return sent ? Taken : "failed: " + std::string(reasonOf(sendCode));
}

std::string UiApp::takeResult(app_control_h message, Source source)
{
    const Extras extras = extrasOf(message);
    const auto whyIgnored =
        card_.showResult(source == Source::Retailer ? retailerLists(extras) : merchantLists(extras));
    if (!whyIgnored) {
        save();
        confirmation_.answer(message);
    }
    return outcomeOf(whyIgnored.value_or(""));
}

std::string UiApp::takePicture(app_control_h message)
{
    const Extras extras = extrasOf(message);
    return outcomeOf(card_.notePicture(extras.text(KeyImageNumber), extras.text(KeyImagePath)).value_or(""));
}

std::string UiApp::takeRetailerPicture(app_control_h message)
{
    const Extras extras = extrasOf(message);
    const auto whyIgnored = card_.noteRetailerPicture(extras.text(KeyImageNumber), extras.text(KeyImageType),
                                                      extras.text(KeyImagePath));
    return outcomeOf(whyIgnored.value_or(""));
}

// A tool that wants a reply learns which card its request made, to find it among later ones.
void UiApp::answerTool(app_control_h message, app_control_result_e result) const
{
    bool wanted = false;
    app_control_is_reply_requested(message, &wanted);
    if (!wanted) {
        return;
    }
    Extras extras;
    extras.texts[KeyCardSequence] = std::to_string(card_.content().sequence);
    extras.texts[KeyCardResults] = std::to_string(card_.content().results);
    reply(message, result, extras);
}

}  // namespace Ui
