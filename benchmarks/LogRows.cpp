// One log statement against the two formatting calls and the thread id call that it stands for.
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>

#include "Log.h"
#include "Rows.h"
#include "Stopwatch.h"

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
                   static_cast<int>(syscall(SYS_gettid)), "LogRows.cpp", "bareCalls", 30, i);
        printf("[%s:%d] download_id is not used: %d\n", "bareCalls", 30, i);
    }
}

/** Standard output goes nowhere while it lives. */
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

}  // namespace

void measureLog(Report& report, int pairs)
{
    report.announce("log statements");
    Pairs times;
    {
        const Silence silence;
        statements();  // the first one opens the log
        for (int i = 0; i < 10 * pairs; ++i) {
            const double ours = secondsOf(statements) / STATEMENTS;
            times.add(ours, secondsOf(bareCalls) / STATEMENTS);
        }
    }
    report.add({"a log statement", "its two formatting calls and thread id call", Unit::Seconds,
                Figure::Ratio, 1.05},
               times);
}

}  // namespace Benchmarks
