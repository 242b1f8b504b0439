// JSON as text for people, too.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace Appliance {

// What other programs sent may not be UTF-8: such bytes become U+FFFD. No control character is in the text
// but the line breaks between the values, so that a terminal may be shown it.
std::string indentedJson(const nlohmann::json& json);

// The same on one line, without a line break.
std::string jsonLine(const nlohmann::json& json);

}  // namespace Appliance
