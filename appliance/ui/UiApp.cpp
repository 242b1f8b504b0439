#include "UiApp.h"

#include "CardJson.h"
#include "Message.h"
#include "Names.h"
#include "UiLog.h"

namespace Ui {

namespace {

using namespace Appliance;

ProductLists listsOf(const Extras& extras)
{
    return {extras.text(KeyMerchant),     extras.text(KeySearchTerm), extras.text(KeyTotal),
            extras.list(KeyNames),        extras.list(KeySizes),      extras.list(KeyDiscounts),
            extras.list(KeyFormerPrices), extras.list(KeyPrices),     extras.list(KeyVariantRefs)};
}

}  // namespace

UiApp::UiApp(Confirmation::Mode mode, double delay)
    : ScreenApp(UI_TAG, "card.json"), confirmation_(mode, delay)
{
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
    if (operation == OperationResult) {
        return fromService ? takeResult(message) : "ignored: only the service sends product lists";
    }
    if (operation == OperationProductImage) {
        return fromService ? takePicture(message) : "ignored: only the service sends pictures";
    }
    return "ignored: unknown operation";
}

std::string UiApp::search(app_control_h message)
{
    const Extras extras = extrasOf(message);
    confirmation_.drop();
    card_.startSearch(extras.text(KeyMerchant), extras.text(KeySearchTerm));
    save();  // before the tool hears of this card, so that it finds it

    Extras wanted;
    wanted.texts[KeyMerchant] = card_.content().merchant;
    wanted.texts[KeySearchTerm] = card_.content().term;
    int code = send({ServiceAppId, OperationSearch, "", wanted});
    if (code == APP_CONTROL_ERROR_NONE) {
        code = askForResult();
    }
    answerTool(message, code);
    return code == APP_CONTROL_ERROR_NONE ? Taken : "failed: " + std::string(reasonOf(code));
}

std::string UiApp::show(app_control_h message)
{
    const int code = askForResult();
    answerTool(message, code);
    return code == APP_CONTROL_ERROR_NONE ? Taken : "failed: " + std::string(reasonOf(code));
}

std::string UiApp::takeResult(app_control_h message)
{
    const auto whyIgnored = card_.showResult(listsOf(extrasOf(message)));
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

int UiApp::askForResult() const
{
    return send({ServiceAppId, OperationResult, "", {}});
}

// A tool that wants a reply learns which card its request made, to find it among later ones.
void UiApp::answerTool(app_control_h message, int sendCode) const
{
    bool wanted = false;
    app_control_is_reply_requested(message, &wanted);
    if (!wanted) {
        return;
    }
    Extras extras;
    extras.texts[KeyCardSequence] = std::to_string(card_.content().sequence);
    extras.texts[KeyCardResults] = std::to_string(card_.content().results);
    const bool sent = sendCode == APP_CONTROL_ERROR_NONE;
    reply(message, sent ? APP_CONTROL_RESULT_SUCCEEDED : APP_CONTROL_RESULT_FAILED, extras);
}

}  // namespace Ui
