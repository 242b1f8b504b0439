// One sentence from its saying to what the apps on the screen received for it.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Conversation.h"
#include "EventLoop.h"
#include "Root.h"
#include "Shop.h"

namespace Tool {

struct SayOptions {
    std::string sentence;
    std::vector<std::string> nlu;  // delivered as they are; none: what the assistant's grammar makes of it
    // For an earlier sentence of the tool's to be over, and then for what the delivered sentence leads to.
    std::chrono::milliseconds limit{5'000};
};

// More answers may lead to more messages than the apps' files keep.
inline constexpr std::size_t MostAnswers = Appliance::MessagesKept / 2;

// A message that a sentence leads to, by the app that gets it.
struct AwaitedMessage {
    std::string appId;
    std::string operation;
};

struct VoiceTurn {
    int number = 0;  // as the assistant counts
    std::string sentence;
    std::vector<std::string> nlu;             // what was delivered
    std::string trouble;                      // why it was not delivered, or delivered as rejected
    bool isUnderstood = true;                 // false: delivered as rejected
    Appliance::ReceivedMessages toPartner;    // during this turn, from the service
    Appliance::ReceivedMessages toAssistant;  // likewise
    std::vector<AwaitedMessage> missing;      // what did not come in time
    std::chrono::milliseconds limit{};        // of the wait for the messages
    bool isOvertaken = false;                 // the wait ended early: another sentence was said
    Partner::ShopContent shop;                // as they are at the end
    Assistant::ConversationContent conversation;

    // Delivered, and each app acted on all that came; nothing is missing.
    bool isFine() const;
};

// What the service sends for these answers; nothing for one that names no action of its.
std::vector<AwaitedMessage> messagesFor(const std::vector<std::string>& nlu);

// Needs the entered session. Two of them in one root are done one after the other. Throws Failure:
// NotRunning, also where the bus or an app goes away meanwhile; Interrupted; TimedOut where the assistant
// does not reply; Failed where an app's file cannot be read, or an earlier sentence is not over in time.
VoiceTurn say(EventLoop& loop, const Root& root, const SayOptions& options);

}  // namespace Tool
