// Questions to the bus itself, over its bare library.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <string>
#include <system_error>

namespace Appliance {

inline constexpr char BusName[] = "org.freedesktop.DBus";
inline constexpr char BusPath[] = "/org/freedesktop/DBus";

struct BusMessageFreer {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessageHandle = std::unique_ptr<sd_bus_message, BusMessageFreer>;

// Frees what the library put in.
class BusError {
  public:
    BusError() = default;
    ~BusError() { sd_bus_error_free(&error_); }
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;

    sd_bus_error* get() { return &error_; }
    bool isSet() const { return sd_bus_error_is_set(&error_) > 0; }
    std::string text() const { return error_.message != nullptr ? error_.message : error_.name; }

  private:
    sd_bus_error error_ = SD_BUS_ERROR_NULL;
};

// Throws std::system_error for a code of the library's that tells of a failure.
inline int required(int code, const std::string& what)
{
    if (code < 0) {
        throw std::system_error(-code, std::generic_category(), what);
    }
    return code;
}

// Calls a method of the bus, with arguments as sd_bus_call_method() takes them, and waits for its answer.
// Nothing where it answers with an error, which is in `error` then; throws std::system_error where it does
// not answer.
template <typename... Arguments>
BusMessageHandle askBus(sd_bus* bus, BusError& error, const char* interface, const char* member,
                        const char* types, Arguments... arguments)
{
    sd_bus_message* answer = nullptr;
    const int code = sd_bus_call_method(bus, BusName, BusPath, interface, member, error.get(), &answer, types,
                                        arguments...);
    BusMessageHandle owned(answer);
    if (code < 0 && !error.isSet()) {
        required(code, "the bus does not answer");
    }
    return owned;
}

}  // namespace Appliance
