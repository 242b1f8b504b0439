// Which process a connection to the bus belongs to.
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Appliance {

// Asks the bus, over a connection of its own, and waits for its answer, which it gives at once. One thread.
class BusProcesses {
  public:
    // Throws std::system_error where the bus cannot be reached.
    explicit BusProcesses(const std::string& address);

    // Nothing where the bus does not tell, such as of a connection that has gone. What it told is remembered
    // until it is to be forgotten.
    std::optional<std::uint32_t> processOf(const std::string& connection);

    void forget(const std::string& connection) { known_.erase(connection); }

  private:
    std::optional<std::uint32_t> ask(const std::string& connection);

    struct Closer {
        void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    };

    std::unique_ptr<sd_bus, Closer> bus_;
    std::map<std::string, std::uint32_t> known_;
};

}  // namespace Appliance
