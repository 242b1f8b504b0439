// JSON as the tool writes it: for people, too.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace Tool {

// What other programs sent may not be UTF-8: such bytes become U+FFFD.
inline std::string indentedJson(const nlohmann::json& json)
{
    const int indent = 2;
    return json.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace Tool
