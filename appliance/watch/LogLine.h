// What a line of the platform log says.
#pragma once

#include <optional>
#include <string>

namespace Appliance {

// P/TAG     (  pid): text
struct LogLine {
    char priority;  // one of V D I W E F
    std::string tag;
    int pid;
    std::string text;  // without colours and other control characters
};

// Nothing for a line of another form.
std::optional<LogLine> parseLogLine(const std::string& line);

// Where in a service's source a line was logged.
struct LogPlace {
    int thread;  // the kernel's id
    std::string file;
    std::string function;  // "operator()" in a lambda
    int line;
};

// What stands in front of a service's message: "[thread] file: function(line) > ". Nothing for a line of
// another form.
std::optional<LogPlace> placeOf(const LogLine& line);

// The message itself, without the service's "[thread] file: function(line) > " in front of it.
std::string messageOf(const LogLine& line);

// The kernel's id of the service's thread that wrote the line; nothing for a line of another form.
std::optional<int> threadOf(const LogLine& line);

// Of the service, or of the retailer's, which logs by the same tag.
bool isServiceError(const LogLine& line);

}  // namespace Appliance
