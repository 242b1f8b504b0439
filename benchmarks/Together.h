// The same work at the same time.
#pragma once

#include <future>
#include <list>
#include <vector>

#include "Stopwatch.h"

namespace Benchmarks {

/** Does the work with each of them, on a thread each, and waits for all. Seconds for the whole. Throws what
 * one of them throws. */
template <typename Each, typename Work>
double together(std::list<Each>& all, Work&& work)
{
    return secondsOf([&] {
        std::vector<std::future<void>> running;
        for (Each& each : all)
            running.push_back(std::async(std::launch::async, [&] { work(each); }));
        for (std::future<void>& one : running)
            one.get();
    });
}

}  // namespace Benchmarks
