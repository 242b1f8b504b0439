// App-control messages as values: read from a handle that arrived, or sent to another app.
#pragma once

#include <app_control.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Appliance {

using TextList = std::vector<std::string>;

// Extra data. Entries that the platform refuses (an empty key, text or list) are left out when sent.
struct Extras {
    std::map<std::string, std::string> texts;
    std::map<std::string, TextList> lists;

    // Empty where the key is not there or is of the other kind.
    std::string text(const std::string& key) const;
    TextList list(const std::string& key) const;
};

struct Request {
    std::string appId;
    std::string operation;
    std::string uri;
    Extras extras;
};

// For smart pointers to a handle.
struct HandleCloser {
    void operator()(app_control_h handle) const { app_control_destroy(handle); }
};

// Called once on the main loop.
using ReplyHandler = std::function<void(app_control_result_e result, const Extras& reply)>;

std::string operationOf(app_control_h message);
// Empty where the sender is not known.
std::string callerOf(app_control_h message);
Extras extrasOf(app_control_h message);

// Sends a request; with a handler the receiver is asked for a reply. Blocks until the receiver has it in
// its queue. Returns the platform's code; only after NONE is the handler ever called.
int send(const Request& request, ReplyHandler onReply = nullptr);

// Answers a request that arrived (or a clone of it). Returns the platform's code.
int reply(app_control_h request, app_control_result_e result, const Extras& extras = {});

// A short reason in words for a code of send() or reply().
const char* reasonOf(int code);

}  // namespace Appliance
