// Requests of the tool's own to the apps on the bus.
#pragma once

#include <chrono>
#include <functional>

#include "EventLoop.h"
#include "Message.h"

namespace Tool {

struct Answer {
    app_control_result_e result;
    Appliance::Extras extras;
};

// Sends a request and waits for its reply; handing it over is not interrupted by Ctrl-C. `check` is called
// again and again until the reply is there, and ends the wait by throwing. Throws Failure: NotRunning (no
// such app), TimedOut, Interrupted, Failed.
Answer ask(
    EventLoop& loop, const Appliance::Request& request, std::chrono::milliseconds limit,
    const std::function<void()>& check = [] {});

// Sends a request without waiting for more than its delivery. Throws Failure as above.
void tell(const Appliance::Request& request);

}  // namespace Tool
