// Parses one answer and prints its bytes, how long that took, and by how many KiB the process grew meanwhile.
// What is done once in a process (types, first pages of the libraries) is done before, with a small answer.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>

#include "Answers.h"
#include "SearchControl.h"
#include "Stopwatch.h"

namespace {

using Parse = std::function<void(std::string)>;

/** A line of /proc/self/status, in KiB. */
long statusOf(const std::string& name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, name.size(), name) == 0)
            return std::stol(line.substr(name.size()));
    }
    throw std::runtime_error("no " + name + " in /proc/self/status");
}

/** From now on the peak is that of what follows. */
void forgetPeak()
{
    std::ofstream("/proc/self/clear_refs") << 5;
}

void parseByTheService(std::string text)
{
    static Carvoy::SearchControl control;
    if (control.parseResult(std::move(text)) != 0)
        throw std::runtime_error("the service refused an answer");
}

void parseByJsonGlib(std::string text)
{
    if (Benchmarks::parseWithJsonGlib(text) == 0)
        throw std::runtime_error("json-glib refused an answer");
}

}  // namespace

int main(int argc, char** argv)
try {
    if (argc != 3) {
        fprintf(stderr, "usage: %s service|json-glib PRODUCTS\n", argv[0]);
        return 2;
    }
    const Parse parse = strcmp(argv[1], "service") == 0 ? parseByTheService : parseByJsonGlib;
    parse(Benchmarks::answerWith(6));

    std::string text = Benchmarks::answerWith(strtoul(argv[2], nullptr, 10));
    const size_t bytes = text.size();
    const long before = statusOf("VmRSS:");
    forgetPeak();
    const double seconds = Benchmarks::secondsOf([&] { parse(std::move(text)); });
    printf("%zu %.6f %ld\n", bytes, seconds, statusOf("VmHWM:") - before);
    return 0;
} catch (const std::exception& error) {
    fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 1;
}
