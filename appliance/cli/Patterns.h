// Names as command lines filter by them.
#pragma once

#include <fnmatch.h>

#include <algorithm>
#include <string>
#include <vector>

namespace Tool {

// Whether one of the shell's patterns (*, ? and [...]) fits the whole text. Without patterns every text fits.
inline bool fitsOneOf(const std::vector<std::string>& patterns, const std::string& text)
{
    return patterns.empty() ||
           std::any_of(patterns.begin(), patterns.end(), [&text](const std::string& pattern) {
               return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
           });
}

}  // namespace Tool
