#include "Commands.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "Refusal.h"

namespace Screen {

namespace {

using Appliance::StandIn::Refusal;

constexpr int BadRequest = 400;

[[noreturn]] void refuse(const std::string& why)
{
    throw Refusal(BadRequest, why);
}

const nlohmann::json& member(const nlohmann::json& json, const char* name)
{
    const auto found = json.find(name);
    if (found == json.end()) {
        refuse("\"" + std::string(name) + "\" is missing");
    }
    return *found;
}

bool isControl(char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    return value < 0x20 || value == 0x7F;
}

std::string text(const nlohmann::json& json, const char* name)
{
    const nlohmann::json& value = member(json, name);
    if (!value.is_string()) {
        refuse("\"" + std::string(name) + "\" is no text");
    }
    std::string words = value.get<std::string>();
    if (words.size() > TextBytes) {
        refuse("\"" + std::string(name) + "\" is longer than " + std::to_string(TextBytes) + " bytes");
    }
    if (std::any_of(words.begin(), words.end(), isControl)) {
        refuse("\"" + std::string(name) + "\" has control characters");
    }
    if (words.find_first_not_of(' ') == std::string::npos) {
        refuse("\"" + std::string(name) + "\" is empty");
    }
    return words;
}

Command search(const nlohmann::json& json)
{
    const auto source = Ui::sourceNamed(text(json, "source"));
    if (!source) {
        refuse("\"source\" is neither merchant nor retailer");
    }
    return SearchCommand{*source, *source == Ui::Source::Merchant ? text(json, "merchant") : "",
                         text(json, "term")};
}

Command say(const nlohmann::json& json)
{
    return SayCommand{text(json, "sentence")};
}

Command turn(const nlohmann::json& json)
{
    const nlohmann::json& on = member(json, "on");
    if (!on.is_boolean()) {
        refuse("\"on\" is neither true nor false");
    }
    return SwitchCommand{text(json, "id"), on.get<bool>()};
}

Command confirm(const nlohmann::json& json)
{
    const std::string mode = text(json, "mode");
    const auto& modes = Ui::Confirmation::Modes;
    const auto found =
        std::find_if(modes.begin(), modes.end(), [&](const auto& known) { return known.first == mode; });
    if (found == modes.end()) {
        refuse("\"mode\" is none of now, late, fail and never");
    }
    return ConfirmCommand{found->second};
}

using Parser = Command (*)(const nlohmann::json& json);

const std::map<std::string, Parser>& parsers()
{
    static const std::map<std::string, Parser> all = {
        {"/api/search", search}, {"/api/say", say}, {"/api/switch", turn}, {"/api/confirm", confirm}};
    return all;
}

}  // namespace

bool isCommandPath(const std::string& path)
{
    return parsers().count(path) > 0;
}

Command parseCommand(const std::string& path, const std::string& body)
{
    const nlohmann::json json = nlohmann::json::parse(body, nullptr, false);
    if (!json.is_object()) {
        refuse("the body is no JSON object");
    }
    return parsers().at(path)(json);
}

}  // namespace Screen
