#include "VoiceStatus.h"

#include <sdbus-c++/sdbus-c++.h>

#include <array>
#include <chrono>
#include <map>

#include "Names.h"
#include "PlainText.h"
#include "Words.h"

namespace Tool {

namespace {

using Appliance::printable;
using Appliance::VoiceOnBus;

std::string stateName(int state)
{
    constexpr std::array<const char*, 3> names = {"none", "initialized", "ready"};
    const auto index = static_cast<std::size_t>(state);
    return state >= 0 && index < names.size() ? names[index] : std::to_string(state);
}

}  // namespace

VoiceStatus readVoice()
{
    try {
        const std::chrono::seconds limit{3};
        const auto connection = sdbus::createSessionBusConnection();
        const auto client = sdbus::createProxy(*connection, Appliance::ServiceAppId, Appliance::VoicePath);
        std::map<std::string, sdbus::Variant> properties;
        client->callMethod("GetAll")
            .onInterface(Appliance::PropertiesInterface)
            .withTimeout(limit)
            .withArguments(std::string(Appliance::VoiceInterface))
            .storeResultsTo(properties);
        return {Appliance::voiceFrom(properties), ""};
    } catch (const sdbus::Error& error) {
        return {std::nullopt, voiceTrouble(error.getName(), error.getMessage())};
    }
}

std::string voiceTrouble(const std::string& errorName, const std::string& message)
{
    static const std::map<std::string, std::string> troubles = {
        {"org.freedesktop.DBus.Error.ServiceUnknown", "the service is not running"},
        {"org.freedesktop.DBus.Error.NameHasNoOwner", "the service is not running"},
        {"org.freedesktop.DBus.Error.NoReply", "the service does not answer"},
        {"org.freedesktop.DBus.Error.Timeout", "the service does not answer"},
        {"org.freedesktop.DBus.Error.UnknownObject", "the service has none"},
        {"org.freedesktop.DBus.Error.UnknownMethod", "the service has none"},
        {"org.freedesktop.DBus.Error.UnknownInterface", "the service has none"},
    };
    const auto found = troubles.find(errorName);
    return found == troubles.end() ? message : found->second;
}

std::string voiceText(const VoiceStatus& voice)
{
    if (!voice.client) {
        return "Voice control: " + printable(voice.trouble) + "\n";
    }
    const VoiceOnBus& client = *voice.client;
    return "Voice control: " + stateName(client.state) + ", called “" + printable(client.invocationName) +
           "”, commands: " + (client.commands.empty() ? "–" : printable(joined(client.commands))) + "\n";
}

nlohmann::json voiceJson(const VoiceStatus& voice)
{
    if (!voice.client) {
        return nullptr;
    }
    const VoiceOnBus& client = *voice.client;
    return {
        {"state", client.state}, {"invocationName", client.invocationName}, {"commands", client.commands}};
}

}  // namespace Tool
