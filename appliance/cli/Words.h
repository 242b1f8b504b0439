// Lists of words, as command lines have them.
#pragma once

#include <string>
#include <vector>

namespace Tool {

// With a blank between each two.
inline std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

}  // namespace Tool
