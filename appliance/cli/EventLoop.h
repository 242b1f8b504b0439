// The tool's waiting: Ecore's main loop, run until something is so.
#pragma once

#include <Ecore.h>

#include <chrono>
#include <functional>
#include <optional>

namespace Tool {

// One for the process, made before the first child is started and before the first message is sent.
// Main thread only, like everything below. Exceptions of callbacks come out of runUntil().
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

// Calls back while the descriptor has something to read. Does not own the descriptor. Files and /dev/null
// cannot be watched: they always have something to read.
class FdWatch {
  public:
    FdWatch(int fd, std::function<void()> onReadable);
    ~FdWatch();
    FdWatch(const FdWatch&) = delete;
    FdWatch& operator=(const FdWatch&) = delete;

    // False: there will be no call.
    bool watches() const { return handler_ != nullptr; }

  private:
    static Eina_Bool onEvent(void* self, Ecore_Fd_Handler* handler);

    std::function<void()> onReadable_;
    Ecore_Fd_Handler* handler_ = nullptr;
};

// Calls back again and again.
class Ticker {
  public:
    Ticker(std::chrono::milliseconds period, std::function<void()> onTick);
    ~Ticker();
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

  private:
    static Eina_Bool onTimer(void* self);

    std::function<void()> onTick_;
    Ecore_Timer* timer_ = nullptr;
};

}  // namespace Tool
