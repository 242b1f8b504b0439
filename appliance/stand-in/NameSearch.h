// The search over the names of what a shop sells.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Appliance::StandIn {

// The positions of the names that hold every word of the term: whole words first, then beginnings, then the
// rest; shorter names first among equals, then in order. No word at all finds everything. For any thread.
std::vector<std::size_t> searchNames(const std::vector<std::string>& names, std::string_view term);

}  // namespace Appliance::StandIn
