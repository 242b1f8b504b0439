// Callbacks from Ecore's main loop: for a descriptor, and again and again.
// Main loop only, while Ecore is initialised.
#pragma once

#include <Ecore.h>

#include <chrono>
#include <exception>
#include <functional>

namespace Appliance {

// Ecore is C: an exception must not pass through it. Calls back, and keeps the exception that comes of it,
// the latest one.
void guarded(const std::function<void()>& callback);

// Whether there is a kept exception.
bool hasCallbackError();

// The kept exception, which is forgotten here; null where there is none. Whoever runs the main loop asks.
std::exception_ptr takeCallbackError();

// Calls back, guarded, while the descriptor has something to read. Does not own the descriptor. Files and
// /dev/null cannot be watched: they always have something to read.
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

// Calls back again and again, guarded.
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

}  // namespace Appliance
