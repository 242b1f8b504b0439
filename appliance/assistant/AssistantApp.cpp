#include "AssistantApp.h"

#include "ConversationJson.h"
#include "Grammar.h"
#include "Names.h"

namespace Assistant {

using namespace Appliance;

namespace {

// To answer a request after its callback has returned; null where there is no memory.
std::shared_ptr<app_control_s> kept(app_control_h message)
{
    app_control_h clone = nullptr;
    app_control_clone(&clone, message);
    return clone == nullptr ? nullptr : std::shared_ptr<app_control_s>(clone, HandleCloser());
}

std::string refuse(app_control_h message, const std::string& reason)
{
    Extras extras;
    extras.texts[KeyReason] = reason;
    reply(message, APP_CONTROL_RESULT_FAILED, extras);
    return "failed: " + reason;
}

Extras answerOf(const ConversationContent& conversation, const Heard& heard, const std::string& reason)
{
    Extras extras;
    extras.texts[KeyTurn] = std::to_string(conversation.turn);
    extras.texts[KeyUnderstood] = heard.understood ? Understood : NotUnderstood;
    extras.texts[KeyReason] = reason;
    extras.lists[KeyNlu] = heard.nlu;
    return extras;
}

}  // namespace

std::string AssistantApp::take(app_control_h message, const std::string& operation, const std::string& caller)
{
    if (operation == OperationSay) {
        return say(message);
    }
    const std::string outcome = outcomeOfOrder(operation, caller);
    reply(message, outcome == Taken ? APP_CONTROL_RESULT_SUCCEEDED : APP_CONTROL_RESULT_FAILED);
    return outcome;
}

std::string AssistantApp::outcomeOfOrder(const std::string& operation, const std::string& caller)
{
    const bool fromService = caller == ServiceAppId;
    if (operation == OperationCloseApp) {
        return fromService ? closeView() : outcomeOf("only the service closes the view");
    }
    if (operation == OperationRefreshView) {
        return outcomeOf(fromService ? "" : "only the service keeps the view open");
    }
    return outcomeOf("unknown operation");
}

std::string AssistantApp::say(app_control_h message)
{
    const Extras extras = extrasOf(message);
    const std::string sentence = extras.text(KeyUtterance);
    if (sentence.empty()) {
        return refuse(message, "there is no sentence");
    }
    if (recogniser_->busy()) {
        return refuse(message, "another sentence is under way");
    }
    Heard heard{sentence, true, extras.list(KeyNlu)};
    std::string action;
    if (heard.nlu.empty()) {
        const auto meaning = understand(sentence);
        heard.understood = meaning.has_value();
        action = meaning ? meaning->action : "";
        heard.nlu = meaning ? TextList{nluOf(*meaning)} : TextList{};
    }
    conversation_.begin(sentence, action, heard.nlu);
    save();  // before the service hears of it, so that what it sends finds the view open
    return deliver(message, heard);
}

std::string AssistantApp::deliver(app_control_h message, const Heard& heard)
{
    const std::shared_ptr<app_control_s> request = kept(message);
    recogniser_->deliver(heard, [this, request, heard](const std::string& trouble) {
        const bool isFine = trouble.empty() && heard.understood;
        const std::string reason =
            trouble.empty() && !isFine ? "not understood, and delivered as rejected" : trouble;
        conversation_.settle(reason);
        save();
        reply(request.get(), isFine ? APP_CONTROL_RESULT_SUCCEEDED : APP_CONTROL_RESULT_FAILED,
              answerOf(conversation_.content(), heard, reason));
    });
    return Taken;
}

std::string AssistantApp::closeView()
{
    conversation_.closeView();
    return Taken;
}

nlohmann::json AssistantApp::content() const
{
    return toJson(conversation_.content());
}

}  // namespace Assistant
