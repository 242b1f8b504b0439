// What the merchant bridge of this build has in stock.
#pragma once

#include <string>
#include <vector>

namespace Tool {

// The merchants that it sells for, in the order of its catalogue. Throws std::runtime_error where that
// cannot be read.
std::vector<std::string> merchantIds();

}  // namespace Tool
