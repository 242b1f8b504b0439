// The client of voice control that the service is, as others see it on the bus.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <map>
#include <string>
#include <vector>

namespace Appliance {

inline constexpr char VoicePath[] = "/org/tizen/VoiceControl";
inline constexpr char VoiceInterface[] = "org.tizen.VoiceControl1";
inline constexpr char PropertiesInterface[] = "org.freedesktop.DBus.Properties";

struct VoiceOnBus {
    static constexpr int Ready = 2;

    int state = 0;  // 0 none, 1 initialised, 2 ready
    std::string invocationName;
    std::vector<std::string> commands;

    // Whether it would understand a result.
    bool listens() const { return state == Ready && !commands.empty(); }
};

// Of the answer to GetAll. What is missing stays as it is above. Throws sdbus::Error for values of other
// types.
VoiceOnBus voiceFrom(const std::map<std::string, sdbus::Variant>& properties);

}  // namespace Appliance
