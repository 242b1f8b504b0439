// The tool's waiting: Ecore's main loop, run until something is so.
#pragma once

#include <Ecore.h>

#include <chrono>
#include <functional>
#include <optional>

#include "FdWatch.h"

namespace Tool {

// One for the process, made before the first child is started and before the first message is sent.
// Main thread only, like everything below. Exceptions of callbacks, also of those of FdWatch and
// Ticker, come out of runUntil().
class EventLoop {
  public:
    enum class Outcome { Done, TimedOut, Interrupted };

    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    // Runs until `done` is true, the limit is over, or SIGINT, SIGTERM or SIGHUP has come (at any time since
    // the start or the last forgetInterrupt()). `done` is asked whenever the loop has handled something.
    Outcome runUntil(const std::function<bool()>& done,
                     std::optional<std::chrono::milliseconds> limit = std::nullopt);

    void forgetInterrupt() { interrupted_ = false; }

  private:
    static Eina_Bool onSignal(void* self, int type, void* event);

    Ecore_Event_Handler* exitSignals_ = nullptr;
    Ecore_Event_Handler* hangUps_ = nullptr;
    bool interrupted_ = false;
};

}  // namespace Tool
