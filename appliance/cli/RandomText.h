// Text that nobody can guess.
#pragma once

#include <string>

namespace Tool {

// `length` lower-case hexadecimal digits from the system's random source.
std::string randomHex(std::size_t length);

}  // namespace Tool
