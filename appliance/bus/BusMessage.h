// A message of apps to one another, as somebody saw it pass on the bus (docs/bus-contract.md).
#pragma once

#include <cstdint>
#include <string>

#include "Message.h"

namespace Appliance {

// What is too long in it is cut: a text to what Appliance::shortened() leaves, all together as BusReader
// says.
struct BusMessage {
    enum class Kind {
        Launch,   // a request
        Reply,    // what a receiver says to a request
        Refusal,  // an error in answer to one of the others, which was not delivered
        Voice,    // a call to a client of voice control
    };

    std::uint64_t number = 0;  // counts all messages from 1
    std::int64_t at = 0;       // milliseconds since 1970
    Kind kind = Kind::Launch;
    // App ids: the name that the connection owns; of one that owns none what it claims to be (`caller`), else
    // the one app that lives in its process, else its unique bus name. What the bus itself refuses comes from
    // org.freedesktop.DBus.
    std::string from;
    std::string to;
    std::string operation;      // of a launch; the method of a voice call; else that of what is answered
    std::string uri;            // of a launch
    Extras extras;              // of a voice call its arguments by name; numbers are decimal texts
    std::string result;         // of a reply: "succeeded", "failed" or "canceled", "" for another number
    std::string error;          // of a refusal: the error's name, and ": " and its text where it has one
    std::uint64_t answers = 0;  // the message that a reply or refusal answers; 0: not known
};

// In words: "launch", "reply", "refusal", "voice".
const char* nameOf(BusMessage::Kind kind);

}  // namespace Appliance
