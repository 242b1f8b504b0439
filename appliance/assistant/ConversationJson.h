// The conversation as JSON, in the form that docs/voice-assistant.md describes.
#pragma once

#include <nlohmann/json.hpp>

#include "Conversation.h"

namespace Assistant {

nlohmann::json toJson(const ConversationContent& content);

// Throws nlohmann::json::exception or std::runtime_error for anything that toJson() cannot have written.
ConversationContent conversationFromJson(const nlohmann::json& json);

}  // namespace Assistant
