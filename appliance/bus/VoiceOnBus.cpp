#include "VoiceOnBus.h"

#include <cstdint>

namespace Appliance {

VoiceOnBus voiceFrom(const std::map<std::string, sdbus::Variant>& properties)
{
    VoiceOnBus client;
    for (const auto& [name, value] : properties) {
        if (name == "State") {
            client.state = value.get<std::int32_t>();
        } else if (name == "InvocationName") {
            client.invocationName = value.get<std::string>();
        } else if (name == "Commands") {
            client.commands = value.get<std::vector<std::string>>();
        }
    }
    return client;
}

}  // namespace Appliance
