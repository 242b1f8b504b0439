// What a service under faults and the test that makes them have in common: a file that both map.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Faults {

/** Names the plan's file to the service. */
constexpr const char* PlanVariable = "FAULT_PLAN";

/** A function that the service calls, and which of its calls fail: those from `from` up to `until`. */
struct Function {
    char name[64];
    std::atomic<std::uint32_t> calls;
    std::atomic<std::uint32_t> failed;
    std::atomic<std::uint32_t> from;   // counted from 1; 0: none fails
    std::atomic<std::uint32_t> until;  // the first that does not fail any more
};

/** A number that the service changes, and that the test can wait for: its address is a futex. */
using Event = std::atomic<std::uint32_t>;

/** A file of zeros is a plan by which nothing fails. */
struct Plan {
    static constexpr std::size_t Capacity = 192;
    static constexpr std::size_t SiteCapacity = 1024;
    static constexpr std::uint32_t Never = UINT32_MAX;

    std::atomic<std::uint32_t> functions;  // how many of the array are in use
    Function function[Capacity];

    std::atomic<std::uint32_t> calls;  // of all functions
    std::atomic<std::uint32_t> from;   // from this one on every call of every function fails; 0: none

    std::atomic<std::uint64_t> site[SiteCapacity];  // places that calls came from, each once; 0: no more

    Event starts;    // the lifecycle's create has returned
    Event requests;  // an app-control request has been handled
    Event results;   // a result of voice control has been handled
    Event polls;     // the sender's worker has found nothing to send
    Event threads;   // that run now, the process's own and the platform's apart
};

}  // namespace Faults
