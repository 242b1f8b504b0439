// How long a piece of work takes.
#pragma once

#include <chrono>

namespace Benchmarks {

template <typename Work>
double secondsOf(Work&& work)
{
    auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace Benchmarks
