// Random choices that can be made again: the seed is printed, and taken from CARVOY_STRESS_SEED where set.
#pragma once

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

namespace ServiceTest {

/** One thread. */
class Dice {
  public:
    Dice() : seed_(chooseSeed()), engine_(seed_) { std::cout << "CARVOY_STRESS_SEED=" << seed_ << std::endl; }

    /** A number from 0 to @p highest. */
    int upTo(int highest) { return std::uniform_int_distribution<int>(0, highest)(engine_); }

    /** True once in @p times. */
    bool onceIn(int times) { return upTo(times - 1) == 0; }

    std::chrono::milliseconds millisecondsUpTo(int highest)
    {
        return std::chrono::milliseconds(upTo(highest));
    }

  private:
    static unsigned chooseSeed()
    {
        const char* seed = std::getenv("CARVOY_STRESS_SEED");
        return seed ? static_cast<unsigned>(std::stoul(seed)) : std::random_device{}();
    }

    unsigned seed_;
    std::mt19937 engine_;
};

}  // namespace ServiceTest
