// The private session bus: its configuration, and who is on it.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <memory>
#include <optional>
#include <set>
#include <string>

#include "BusWatch.h"

namespace Tool {

// For dbus-daemon. The address is an abstract socket's: it leaves no file, and no path is too long for it.
std::string busConfiguration(const std::string& address);

// A fresh address that nobody can have guessed or taken.
std::string freshBusAddress();

// Knows which names are owned. Main loop only. Throws sdbus::Error where the bus cannot be reached.
class BusNames {
  public:
    explicit BusNames(const std::string& address);

    bool isOwned(const std::string& name) const { return owned_.count(name) > 0; }
    // False once the bus has gone away; nobody owns a name there.
    bool isConnected() const { return connected_; }

  private:
    void readNames();

    std::unique_ptr<sdbus::IConnection> connection_;
    std::unique_ptr<sdbus::IProxy> bus_;
    std::set<std::string> owned_;
    bool connected_ = true;
    std::optional<Appliance::BusWatch> watch_;
};

}  // namespace Tool
