#include "Face.h"

#include <utility>

#include "CardFace.h"
#include "Guarded.h"
#include "LogLine.h"
#include "Message.h"
#include "Names.h"
#include "UiLog.h"

namespace Screen {

namespace {

// By what a person calls it.
std::string nameOf(Ui::Confirmation::Mode mode)
{
    for (const auto& [name, known] : Ui::Confirmation::Modes) {
        if (known == mode) {
            return name;
        }
    }
    return "";
}

}  // namespace

Face::Face(const Settings& settings, const ConfirmSettings& confirmation, Actions actions)
    : settings_(settings),
      actions_(std::move(actions)),
      confirmation_(confirmation),
      switches_(settings.untrustedFile),
      timeline_(EventStream::Beat),
      surroundings_(timeline_, placesHere(), [this](const std::string& line) { noteLine(line); }),
      inbox_([this](const Command& command) { take(command); }),
      server_({settings.port, settings.pageFolder, surroundings_.pictures().path()}, timeline_,
              [this](Command command) { return inbox_.put(std::move(command)); })
{
    putSettings();
}

std::string Face::address() const
{
    return "http://127.0.0.1:" + std::to_string(server_.port()) + "/";
}

void Face::show(const Ui::CardContent& card)
{
    const bool isNew = card.sequence != card_.sequence || card.results != card_.results;
    card_ = card;
    if (isNew) {
        surroundings_.catchUp();  // what the service said of it stands in the log by now
        verdict_ = witness_.verdictOn(card_, surroundings_.record());
    }
    putCard();
}

void Face::putCard()
{
    timeline_.put("card", faceOf(card_, verdict_, surroundings_.pictures()));
}

void Face::noteLine(const std::string& line)
{
    if (const auto parsed = Appliance::parseLogLine(line)) {
        witness_.note(*parsed);
    }
}

void Face::take(const Command& command)
{
    guarded("A command failed", [&] {
        tell("");
        std::visit([this](const auto& known) { obey(known); }, command);
    });
}

void Face::obey(const SearchCommand& command)
{
    const std::string whyNot =
        actions_.search(command.source, command.merchant, command.term + switches_.words());
    if (!whyNot.empty()) {
        verdict_ = {Outcome::Failed, {whyNot}};
        putCard();
    }
}

void Face::obey(const SayCommand& command)
{
    Appliance::Extras extras;
    extras.texts[Appliance::KeyUtterance] = command.sentence;
    const auto onReply = [this](app_control_result_e result, const Appliance::Extras& answer) {
        if (result != APP_CONTROL_RESULT_SUCCEEDED) {
            const std::string reason = answer.text(Appliance::KeyReason);
            tell("The assistant: " + (reason.empty() ? "it gave no answer" : reason));
        }
    };
    // Waits where the assistant stands still, as every app does that sends.
    const int code =
        Appliance::send({Appliance::AssistantAppId, Appliance::OperationSay, "", extras}, onReply);
    if (code != APP_CONTROL_ERROR_NONE) {
        tell("The assistant was not reached: " + std::string(Appliance::reasonOf(code)));
    }
}

void Face::obey(const SwitchCommand& command)
{
    try {
        if (!switches_.turn(command.id, command.on)) {
            tell("There is no switch \"" + command.id + "\"");
        }
    } catch (const std::exception& error) {
        tell(error.what());
    }
    putSettings();
}

void Face::obey(const ConfirmCommand& command)
{
    confirmation_.mode = command.mode;
    actions_.confirm(command.mode);
    putSettings();
}

void Face::tell(const std::string& text)
{
    timeline_.put("notice",
                  text.empty() ? nlohmann::json() : nlohmann::json({{"text", text}, {"level", "error"}}));
}

void Face::putSettings()
{
    timeline_.put("settings", {{"confirm", nameOf(confirmation_.mode)},
                               {"delay", confirmation_.delay},
                               {"merchants", settings_.merchants},
                               {"partner", Appliance::PartnerAppId},
                               {"switches", switches_.toJson()}});
}

}  // namespace Screen
