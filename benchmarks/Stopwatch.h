// Time, by the one clock that all processes share (CLOCK_MONOTONIC).
#pragma once

#include <chrono>
#include <cstdint>

namespace Benchmarks {

/** Nanoseconds. */
inline std::int64_t now()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

inline double secondsBetween(std::int64_t begin, std::int64_t end)
{
    return static_cast<double>(end - begin) / 1e9;
}

/** How long a piece of work takes. */
template <typename Work>
double secondsOf(Work&& work)
{
    const std::int64_t begin = now();
    work();
    return secondsBetween(begin, now());
}

}  // namespace Benchmarks
