// What stands in a message of the bare bus that anybody may have sent.
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <optional>
#include <string>

#include "Message.h"

namespace Appliance {

// Empty or 0 where the message has none.
std::string senderOf(sd_bus_message* message);
std::string destinationOf(sd_bus_message* message);
std::string memberOf(sd_bus_message* message);
std::uint64_t cookieOf(sd_bus_message* message);
std::uint64_t answeredCookieOf(sd_bus_message* message);

// What is too long in these is cut as BusReader says.
struct LaunchArguments {
    std::string claimed;                     // who the sender says that it is
    std::optional<std::uint32_t> requestId;  // of one that wants a reply
    std::string operation;
    std::string uri;
    Extras extras;
};

struct ReplyArguments {
    std::uint32_t requestId;
    std::string result;  // in words: "succeeded", "failed" or "canceled", "" for another number
    Extras extras;
};

// Nothing for a call of another signature. Each reads a message's arguments once.
std::optional<LaunchArguments> launchArguments(sd_bus_message* call);
std::optional<ReplyArguments> replyArguments(sd_bus_message* call);
// By name; numbers are decimal texts. Empty for an unknown method or another signature.
Extras voiceArguments(sd_bus_message* call);

// The error's name, and ": " and its text where it has one; empty where the message is no error.
std::string errorOf(sd_bus_message* answer);

// That a name, which may be that of a connection, changes hands; empty: nobody's.
struct OwnerChange {
    std::string name;
    std::string before;
    std::string now;
};

// Nothing for another signal, and for one that does not come from the bus.
std::optional<OwnerChange> ownerChangeOf(sd_bus_message* signal);

}  // namespace Appliance
