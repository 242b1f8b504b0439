// The messages that an app received, as its file tells them.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace Appliance {

// The outcome of a message that was acted on.
inline constexpr char Taken[] = "taken";

struct Received {
    int number = 0;    // counts all messages of this run of the app from 1; set by note()
    std::string time;  // UTC, ISO 8601 with milliseconds
    std::string operation;
    std::string from;                           // the sender's app id
    std::map<std::string, std::string> extras;  // the single texts
    std::string outcome;                        // Taken, or why the message was ignored

    bool isTaken() const { return outcome == Taken; }
};

using ReceivedMessages = std::deque<Received>;

inline constexpr std::size_t MessagesKept = 100;
inline constexpr std::size_t ExtrasKept = 20;   // of one message
inline constexpr std::size_t BytesKept = 2000;  // of one text

// Adds a message at the end and drops the oldest beyond MessagesKept. What is too long in it is cut.
void note(ReceivedMessages& messages, Received received);

// The text, or what fits into BytesKept of it and "…".
std::string shortened(const std::string& text);

// Whether note() can have made the numbers: one after the other, and no more messages than are kept.
bool areCounted(const ReceivedMessages& messages);

// 0 where there is none.
int lastNumber(const ReceivedMessages& messages);

std::string timeNow();

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Received, number, time, operation, from, extras, outcome)

}  // namespace Appliance
