// A fresh connection of the bare bus library.
#pragma once

#include <systemd/sd-bus.h>

#include <string>

namespace Appliance {

enum class BusRole { Client, Monitor };

// The caller closes it. Throws std::system_error where the bus cannot be reached.
sd_bus* startBus(const std::string& address, BusRole role);

}  // namespace Appliance
