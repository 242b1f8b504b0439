// JSON as text on one line.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace Screen {

// Bytes that are no UTF-8 become U+FFFD.
inline std::string jsonText(const nlohmann::json& json)
{
    return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace Screen
