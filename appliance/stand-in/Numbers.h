// Numbers that come in from outside: their limits, and how they are read.
#pragma once

#include <charconv>
#include <chrono>
#include <optional>
#include <string_view>

namespace Appliance::StandIn {

// Lower ones are not final answers: a client goes on waiting.
constexpr int leastStatus = 200;
constexpr int mostStatus = 599;

constexpr std::chrono::milliseconds longestTime = std::chrono::minutes(10);

// The whole text as a decimal number from least to most, or nothing.
inline std::optional<int> parseNumber(std::string_view text, int least, int most)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < least || number > most)
        return std::nullopt;
    return number;
}

}  // namespace Appliance::StandIn
