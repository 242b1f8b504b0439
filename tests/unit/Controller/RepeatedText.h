// Long texts for parsers.
#pragma once

#include <cstddef>
#include <string>

inline std::string repeat(const std::string& text, std::size_t count)
{
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}
