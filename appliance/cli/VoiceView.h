// A spoken sentence and what came of it, as text and as JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "Card.h"
#include "Terminal.h"
#include "VoiceTurn.h"

namespace Tool {

// What was delivered, what the apps acted on, and what they show in the end. The card tells the name of the
// product that the partner app shows.
std::string turnText(const VoiceTurn& turn, const std::optional<Ui::CardContent>& card, const Style& style);
// What went wrong; empty where nothing did. The card tells how many products there are to choose from.
std::string turnErrors(const VoiceTurn& turn, const std::optional<Ui::CardContent>& card, const Style& style);
nlohmann::json turnJson(const VoiceTurn& turn, const std::optional<Ui::CardContent>& card);

// What the assistant understands: the grammar's notation, and a form on each line.
std::string sentencesText();

}  // namespace Tool
