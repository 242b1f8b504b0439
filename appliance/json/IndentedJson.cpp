#include "IndentedJson.h"

#include <cstdio>

namespace Appliance {

namespace {

constexpr unsigned char Delete = 0x7F;

bool isC1(unsigned char lead, unsigned char second)
{
    return lead == 0xC2 && second < 0xA0;
}

std::string escaped(unsigned char code)
{
    char text[8];
    std::snprintf(text, sizeof text, "\\u%04x", static_cast<unsigned>(code));
    return text;
}

// JSON lets DEL and U+0080 to U+009F stand in its texts as they are. `json` is UTF-8.
std::string withoutControls(const std::string& json)
{
    std::string clean;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const auto byte = static_cast<unsigned char>(json[i]);
        const auto next = static_cast<unsigned char>(i + 1 < json.size() ? json[i + 1] : '\xFF');
        if (byte == Delete) {
            clean += escaped(byte);
        } else if (isC1(byte, next)) {
            clean += escaped(next);
            ++i;
        } else {
            clean += json[i];
        }
    }
    return clean;
}

}  // namespace

std::string indentedJson(const nlohmann::json& json)
{
    const int indent = 2;
    return withoutControls(json.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace));
}

std::string jsonLine(const nlohmann::json& json)
{
    return withoutControls(json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

}  // namespace Appliance
