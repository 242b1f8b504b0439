#include "UiApp.h"

#include <service_app.h>
#include <tzplatform_config.h>

#include <chrono>
#include <ctime>
#include <filesystem>

#include "Names.h"
#include "UiLog.h"

namespace Ui {

namespace {

using namespace Appliance;

const std::string Taken = "taken";

// The screen's folder lies beside the user's media.
std::filesystem::path cardFile()
{
    const char* media = tzplatform_getenv(TZ_USER_CONTENT);
    return std::filesystem::path(media != nullptr ? media : ".").parent_path() / "screen" / "card.json";
}

std::string timeNow()
{
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t seconds = system_clock::to_time_t(now);
    const auto milliseconds = duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char date[32];
    char time[48];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(time, sizeof time, "%s.%03dZ", date, static_cast<int>(milliseconds));
    return time;
}

ProductLists listsOf(const Extras& extras)
{
    return {extras.text(KeyMerchant),     extras.text(KeySearchTerm), extras.text(KeyTotal),
            extras.list(KeyNames),        extras.list(KeySizes),      extras.list(KeyDiscounts),
            extras.list(KeyFormerPrices), extras.list(KeyPrices),     extras.list(KeyVariantRefs)};
}

std::string outcome(const std::optional<std::string>& whyIgnored)
{
    return whyIgnored ? "ignored: " + *whyIgnored : Taken;
}

}  // namespace

UiApp::UiApp(Confirmation::Mode mode, double delay) : store_(cardFile()), confirmation_(mode, delay) {}

int UiApp::run(int argc, char** argv)
{
    service_app_lifecycle_callback_s callbacks = {onCreate, onTerminate, onMessage};
    return service_app_main(argc, argv, &callbacks, this);
}

bool UiApp::onCreate(void* self)
{
    static_cast<UiApp*>(self)->save();
    return true;
}

void UiApp::onTerminate(void* self)
{
    static_cast<UiApp*>(self)->confirmation_.drop();
}

void UiApp::onMessage(app_control_h message, void* self)
{
    static_cast<UiApp*>(self)->handle(message);
}

void UiApp::handle(app_control_h message)
{
    const std::string operation = operationOf(message);
    const std::string caller = callerOf(message);
    const std::string outcome = outcomeOf(message, operation, caller);
    if (outcome != Taken) {
        UI_ERROR("%s from %s %s", operation.c_str(), caller.c_str(), outcome.c_str());
    }
    card_.noteReceived({timeNow(), operation, caller, outcome});
    save();
}

std::string UiApp::outcomeOf(app_control_h message, const std::string& operation, const std::string& caller)
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
    return outcome(whyIgnored);
}

std::string UiApp::takePicture(app_control_h message)
{
    const Extras extras = extrasOf(message);
    return outcome(card_.notePicture(extras.text(KeyImageNumber), extras.text(KeyImagePath)));
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

void UiApp::save() const
{
    try {
        store_.write(card_.content());
    } catch (const std::exception& error) {
        UI_ERROR("Card not written: %s", error.what());
    }
}

}  // namespace Ui
