// Extra data and operations as they are written on the command line.
#pragma once

#include <string>
#include <vector>

#include "Message.h"

namespace Tool {

// "KEY=VALUE" (the value may be anything, "=" included) and "KEY=A,B,C"; a backslash takes the next
// character as it stands, so that "\," puts a comma into an element.
// Throws Failure (Usage) for an empty key, an empty value, a text without "=", or a key used twice.
Appliance::Extras parseExtras(const std::vector<std::string>& texts, const std::vector<std::string>& lists);

// "service:search", "platform:view" and "assistant:close_app" as their full URIs; a URI stays as it is.
// Throws Failure (Usage) for anything else.
std::string operationUri(const std::string& operation);

// The other way round; what has no short form stays as it is.
std::string shortOperation(const std::string& uri);

}  // namespace Tool
