#include "BusProcesses.h"

#include "BusStart.h"

namespace Appliance {

namespace {

// A bus that stands still must not hold up the main loop for long.
constexpr std::uint64_t AnswerMicroseconds = 1'000'000;

}  // namespace

BusProcesses::BusProcesses(const std::string& address) : bus_(startBus(address, BusRole::Client))
{
    sd_bus_set_method_call_timeout(bus_.get(), AnswerMicroseconds);
}

std::optional<std::uint32_t> BusProcesses::processOf(const std::string& connection)
{
    const auto known = known_.find(connection);
    if (known != known_.end()) {
        return known->second;
    }
    const auto process = ask(connection);
    if (process) {
        known_[connection] = *process;
    }
    return process;
}

std::optional<std::uint32_t> BusProcesses::ask(const std::string& connection)
{
    sd_bus_message* answer = nullptr;
    std::uint32_t process = 0;
    const int asked = sd_bus_call_method(bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus", "GetConnectionUnixProcessID", nullptr,
                                         &answer, "s", connection.c_str());
    const bool told = asked >= 0 && sd_bus_message_read_basic(answer, SD_BUS_TYPE_UINT32, &process) > 0;
    sd_bus_message_unref(answer);
    return told ? std::optional<std::uint32_t>(process) : std::nullopt;
}

}  // namespace Appliance
