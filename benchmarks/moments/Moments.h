// When a program does what only itself can see: noted by a library that is loaded in front of it, in memory
// that its observer shares.
#pragma once

#include <atomic>
#include <cstdint>

namespace Benchmarks {

/** The file that both sides map. */
constexpr const char* MOMENTS_VARIABLE = "BENCHMARK_MOMENTS";

enum class Moment : std::int32_t {
    Received,  // bytes of a message came in
    Waits,     // the first thread waits for its next event
    WokeUp,    // from nanosleep()
    Replaced,  // a file took another one's name
    Synced,    // everything is on disk
};

struct Happened {
    std::atomic<std::int64_t>
        nanoseconds;  // of CLOCK_MONOTONIC, which all processes share; written last, 0 until then
    Moment moment;
    bool onFirstThread;
};

/** One megabyte that both sides map. What comes when it is full is not noted. Zero bytes are empty. */
struct MomentsPage {
    static constexpr std::uint32_t CAPACITY = 1 << 16;

    std::atomic<std::uint32_t> count;  // of places taken; may go beyond the capacity
    Happened moments[CAPACITY];
};

}  // namespace Benchmarks
