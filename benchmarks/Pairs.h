// Two pieces of work timed in turns, so that whatever else the machine does falls on both.
#pragma once

#include <algorithm>
#include <vector>

#include <benchmark/benchmark.h>

#include "Stopwatch.h"

namespace Benchmarks {

inline double medianOf(std::vector<double> values)
{
    auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/** Runs the benchmark's iterations in pairs; the counter "ratio" is the median of ours against theirs. */
template <typename Ours, typename Theirs>
void comparePairs(benchmark::State& state, Ours&& ours, Theirs&& theirs)
{
    std::vector<double> ratios;
    for (auto _ : state) {
        double our = secondsOf(ours);
        double their = secondsOf(theirs);
        state.SetIterationTime(our);
        ratios.push_back(our / their);
    }
    state.counters["ratio"] = medianOf(ratios);
}

}  // namespace Benchmarks
