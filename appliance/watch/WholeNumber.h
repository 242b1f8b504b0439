// Numbers in lines of text.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace Appliance {

// The whole text as a number without a sign.
template <typename Number>
std::optional<Number> numberFrom(std::string_view text)
{
    Number value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    const bool whole = error == std::errc() && stop == end && text[0] != '-';
    return whole ? std::optional<Number>(value) : std::nullopt;
}

}  // namespace Appliance
