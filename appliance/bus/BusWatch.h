// Lets a connection to the bus work on Ecore's main loop, without a thread of its own.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <functional>

#include "BusPoll.h"

namespace Appliance {

// Main loop only, while Ecore is initialised. The connection outlives it.
class BusWatch {
  public:
    // `onLost` is called once, when the bus has gone away; the connection does nothing more then.
    BusWatch(sdbus::IConnection& connection, std::function<void()> onLost);

    // To be called after calls were made outside the connection's own callbacks: sends what is still to be
    // sent, and minds the calls' time limits.
    void update() { poll_.update(); }

  private:
    BusPoll::Wish wish() const;
    void work();

    sdbus::IConnection& connection_;
    std::function<void()> onLost_;
    BusPoll poll_;
};

}  // namespace Appliance
