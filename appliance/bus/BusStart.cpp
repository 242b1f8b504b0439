#include "BusStart.h"

#include <memory>
#include <system_error>

namespace Appliance {

sd_bus* startBus(const std::string& address, BusRole role)
{
    const auto require = [&address](int code) {
        if (code < 0) {
            throw std::system_error(-code, std::generic_category(), "cannot reach the bus at " + address);
        }
    };
    sd_bus* raw = nullptr;
    require(sd_bus_new(&raw));
    std::unique_ptr<sd_bus, decltype(&sd_bus_close_unref)> bus(raw, sd_bus_close_unref);
    require(sd_bus_set_address(raw, address.c_str()));
    require(sd_bus_set_bus_client(raw, 1));
    require(sd_bus_set_monitor(raw, role == BusRole::Monitor ? 1 : 0));
    require(sd_bus_start(raw));
    return bus.release();
}

}  // namespace Appliance
