// A line of the platform log, part by part.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace Tool {

// level (its name), tag, pid, thread, file, function, line and message, without colours and other control
// characters; null where the line does not tell. Of a line of another form the message is all.
nlohmann::json logJson(const std::string& line);

}  // namespace Tool
