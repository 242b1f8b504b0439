// Ecore's main loop for a bus library that tells what it waits for as for poll().
#pragma once

#include <Ecore.h>

#include <chrono>
#include <functional>
#include <optional>

namespace Appliance {

// Main loop only, while Ecore is initialised.
class BusPoll {
  public:
    struct Wish {
        short events = 0;                                // of poll()
        std::optional<std::chrono::microseconds> limit;  // from now; nothing: there is none
    };

    // `wish` is asked whenever it may have changed. `work` is called when the descriptor, which is not owned,
    // is ready or the time is over; it ends with update() or stop(), and must not throw.
    BusPoll(int fd, std::function<Wish()> wish, std::function<void()> work);
    ~BusPoll() { stop(); }
    BusPoll(const BusPoll&) = delete;
    BusPoll& operator=(const BusPoll&) = delete;

    void update();

    // There will be no more calls.
    void stop();

  private:
    static Eina_Bool onReady(void* self, Ecore_Fd_Handler* handler);
    static Eina_Bool onTime(void* self);

    void stopTimer();

    std::function<Wish()> wish_;
    std::function<void()> work_;
    Ecore_Fd_Handler* handler_ = nullptr;
    Ecore_Timer* timer_ = nullptr;
};

}  // namespace Appliance
