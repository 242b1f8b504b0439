// Lets a connection to the bus work on Ecore's main loop, without a thread of its own.
#pragma once

#include <Ecore.h>
#include <sdbus-c++/sdbus-c++.h>

#include <functional>

namespace Appliance {

// Main loop only, while Ecore is initialised. The connection outlives it.
class BusWatch {
  public:
    // `onLost` is called once, when the bus has gone away; the connection does nothing more then.
    BusWatch(sdbus::IConnection& connection, std::function<void()> onLost);
    ~BusWatch() { stop(); }
    BusWatch(const BusWatch&) = delete;
    BusWatch& operator=(const BusWatch&) = delete;

    // To be called after calls were made outside the connection's own callbacks: sends what is still to be
    // sent, and minds the calls' time limits.
    void update();

  private:
    static Eina_Bool onReady(void* self, Ecore_Fd_Handler* handler);
    static Eina_Bool onTime(void* self);

    void work();
    void stop();
    void stopTimer();

    sdbus::IConnection& connection_;
    std::function<void()> onLost_;
    Ecore_Fd_Handler* handler_ = nullptr;
    Ecore_Timer* timer_ = nullptr;
};

}  // namespace Appliance
