// Writes to the log from a process of its own, in the way that its first argument says.
#include <dlog.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// Logs before main and after it.
struct EarlyAndLate {
    EarlyAndLate() { log("early"); }
    ~EarlyAndLate() { log("late"); }

    static void log(const char* when)
    {
        if (std::getenv("LOG_AT_START_AND_END") != nullptr)
            dlog_print(DLOG_INFO, "probe", "%s", when);
    }
} earlyAndLate;

int logOnce(const char* text)
{
    std::printf("%d\n", dlog_print(DLOG_WARN, "probe", "%s", text));
    return EXIT_SUCCESS;
}

int logManyTimes(const char* text, int times)
{
    for (int i = 0; i < times; ++i)
        if (dlog_print(DLOG_INFO, "probe", "%s", text) < 0)
            return EXIT_FAILURE;
    return EXIT_SUCCESS;
}

// Standard error becomes a pipe that nobody reads any more.
int logToABrokenPipe()
{
    int ends[2];
    if (::pipe(ends) != 0 || ::dup2(ends[1], STDERR_FILENO) < 0)
        return EXIT_FAILURE;
    ::close(ends[0]);
    return logOnce("nobody reads this");
}

}  // namespace

int main(int argc, char** argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "once" && argc == 3)
        return logOnce(argv[2]);
    if (command == "many" && argc == 4)
        return logManyTimes(argv[2], std::atoi(argv[3]));
    if (command == "broken-pipe")
        return logToABrokenPipe();
    return command == "nothing" ? EXIT_SUCCESS : EXIT_FAILURE;
}
