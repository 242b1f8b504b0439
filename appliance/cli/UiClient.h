// Asks the UI app, and looks at its card.
#pragma once

#include <chrono>
#include <optional>

#include "Card.h"
#include "EventLoop.h"
#include "Message.h"
#include "Root.h"

namespace Tool {

// Which state of the card an answered request speaks of.
struct CardMark {
    int sequence = 0;  // of the search
    int results = 0;   // product lists taken until then
};

// Asks the UI app for a search or for the current result. Throws Failure as ask() does, and when the UI app
// could not reach the service.
CardMark askUi(EventLoop& loop, const std::string& operation, const Appliance::Extras& extras,
               std::chrono::milliseconds limit);

// The card as it is now; nothing before the UI app wrote one.
std::optional<Ui::CardContent> currentCard(const Root& root);

}  // namespace Tool
