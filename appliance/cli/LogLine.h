// What a line of the platform log says.
#pragma once

#include <optional>
#include <string>

namespace Tool {

// P/TAG     (  pid): text
struct LogLine {
    char priority;  // one of V D I W E F
    std::string tag;
    int pid;
    std::string text;  // without colours and other control characters
};

// Nothing for a line of another form.
std::optional<LogLine> parseLogLine(const std::string& line);

// The message itself, without the service's "[thread] file: function(line) > " in front of it.
std::string messageOf(const LogLine& line);

bool isServiceError(const LogLine& line);

// The product position whose picture this line of the service gives up, counting from 0.
std::optional<std::size_t> pictureGivenUp(const LogLine& line);

}  // namespace Tool
