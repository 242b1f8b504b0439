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

struct Answer {
    app_control_result_e result;
    Appliance::Extras extras;
};

// Sends a request and waits for its reply.
// Throws Failure: NotRunning (no such app), TimedOut, Interrupted, Failed.
Answer ask(EventLoop& loop, const Appliance::Request& request, std::chrono::milliseconds limit);

// Sends a request without waiting for more than its delivery. Throws Failure as above.
void tell(const Appliance::Request& request);

// Asks the UI app for a search or for the current result. Throws Failure as above, and when the UI app
// could not reach the service.
CardMark askUi(EventLoop& loop, const std::string& operation, const Appliance::Extras& extras,
               std::chrono::milliseconds limit);

// The card as it is now; nothing before the UI app wrote one.
std::optional<Ui::CardContent> currentCard(const Root& root);

}  // namespace Tool
