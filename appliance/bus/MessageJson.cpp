#include "MessageJson.h"

namespace Appliance {

nlohmann::json toJson(const BusMessage& message)
{
    nlohmann::json extras = message.extras.texts;
    for (const auto& [key, texts] : message.extras.lists) {
        extras[key] = texts;
    }
    return {{"number", message.number},       {"kind", nameOf(message.kind)},
            {"from", message.from},           {"to", message.to},
            {"operation", message.operation}, {"uri", message.uri},
            {"extras", std::move(extras)},    {"result", message.result},
            {"error", message.error},         {"answers", message.answers}};
}

}  // namespace Appliance
