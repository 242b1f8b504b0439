// One log statement against the two formatting calls and the thread id call that it stands for.
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <malloc.h>

#include "Log.h"
#include "Pairs.h"

namespace Benchmarks {

namespace {

constexpr int STATEMENTS = 1000;  // timed together: one is not much longer than the clock's own call

void statements()
{
    for (int i = 0; i < STATEMENTS; ++i)
        LOG_E("download_id is not used: %d", i);
}

void bareCalls()
{
    for (int i = 0; i < STATEMENTS; ++i) {
        dlog_print(DLOG_ERROR, "carvoy-service",
                   "\033[31m[%d] %s: %s(%d) > download_id is not used: %d\033[0m",
                   static_cast<int>(syscall(SYS_gettid)), "LogBenchmark.cpp", "bareCalls", 30, i);
        printf("[%s:%d] download_id is not used: %d\n", "bareCalls", 30, i);
    }
}

/** Both outputs go nowhere while it lives: the results are printed on the standard output that was there
 * before. */
class Silence {
  public:
    Silence()
    {
        fflush(stdout);
        mStandardOutput = dup(STDOUT_FILENO);
        int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    ~Silence()
    {
        fflush(stdout);
        dup2(mStandardOutput, STDOUT_FILENO);
        close(mStandardOutput);
    }

  private:
    int mStandardOutput;
};

void logStatement(benchmark::State& state)
{
    Silence silence;
    statements();  // the first one opens the log
    size_t before = mallinfo2().uordblks;
    comparePairs(state, statements, bareCalls);
    state.counters["heap_bytes"] = static_cast<double>(mallinfo2().uordblks) - static_cast<double>(before);
}

BENCHMARK(logStatement)->UseManualTime()->MinTime(1.0);

}  // namespace

}  // namespace Benchmarks
