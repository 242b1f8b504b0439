// Who is behind the names on the bus.
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "BusDecoding.h"
#include "BusProcesses.h"

namespace Appliance {

// The names of apps and the connections that own them, kept up to date by whoever hears of the changes. One
// thread.
class BusOwners {
  public:
    // Every well-known name counts as an app's but the bus's own.
    static bool isApp(const std::string& name);

    // Throws std::system_error where the bus cannot be reached.
    explicit BusOwners(const std::string& address) : processes_(address) {}

    // Asks, over this connection, who is there, and waits for the answers. Throws std::system_error where the
    // bus does not answer, std::runtime_error where it does not tell.
    void learn(sd_bus* bus);

    std::vector<std::string> apps() const;

    // Of an app's name. Whether somebody owns it from now on; nothing where that is as it was before.
    std::optional<bool> change(const OwnerChange& change);

    // A connection that has gone.
    void forget(const std::string& connection) { processes_.forget(connection); }

    // The app id of whom a connection or well-known name belongs to: the name that it owns, the claimed one
    // if that is among them; where it owns none, what it claims to be; else the one app that lives in its
    // process, of which the bus is asked. This and the next give back a name for which they know nothing
    // else.
    std::string appOf(const std::string& name, const std::string& claimed = "");
    std::string connectionOf(const std::string& name) const;

  private:
    void own(const std::string& name, const std::string& connection);
    void disown(const std::string& name, const std::string& connection);
    std::string appOfProcess(std::optional<std::uint32_t> process);

    BusProcesses processes_;
    std::map<std::string, std::string> owners_;           // well-known name, connection
    std::map<std::string, std::set<std::string>> names_;  // the other way round
};

}  // namespace Appliance
