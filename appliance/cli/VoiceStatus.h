// Where the service's client of voice control stands.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "VoiceOnBus.h"

namespace Tool {

struct VoiceStatus {
    std::optional<Appliance::VoiceOnBus> client;
    std::string trouble;  // in words, why there is no client
};

// Needs the entered session.
VoiceStatus readVoice();

// Why there is no client, for the error that asking for it was answered with.
std::string voiceTrouble(const std::string& errorName, const std::string& message);

// One line.
std::string voiceText(const VoiceStatus& voice);
// Null where there is no client.
nlohmann::json voiceJson(const VoiceStatus& voice);

}  // namespace Tool
