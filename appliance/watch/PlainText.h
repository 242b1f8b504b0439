// Text from elsewhere, made fit to be shown.
#pragma once

#include <string>

namespace Appliance {

// Without SGR sequences (ESC [ ... m).
std::string withoutColours(const std::string& text);

// Control characters become U+FFFD; nothing that is printed can move the cursor.
std::string printable(const std::string& text);

// For a terminal: SGR sequences stay, other control characters become U+FFFD.
std::string printableWithColours(const std::string& text);

}  // namespace Appliance
