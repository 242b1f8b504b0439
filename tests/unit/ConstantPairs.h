// Constants next to what they must be.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

/** The first of each pair is the constant, the second its value. */
inline void expectEqual(const std::vector<std::pair<std::string, std::string>>& pairs)
{
    for (const auto& [constant, value] : pairs)
        EXPECT_EQ(constant, value);
}
