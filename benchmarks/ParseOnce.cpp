// Parses one answer and prints how long that took and the most memory that the process ever had.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/resource.h>

#include "Answers.h"
#include "SearchControl.h"
#include "Stopwatch.h"

int main(int argc, char** argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: %s service|json-glib PRODUCTS\n", argv[0]);
        return 2;
    }
    std::string text = Benchmarks::answerWith(strtoul(argv[2], nullptr, 10));
    const size_t bytes = text.size();
    Carvoy::SearchControl control;

    double seconds = strcmp(argv[1], "service") == 0
                         ? Benchmarks::secondsOf([&] { control.parseResult(std::move(text)); })
                         : Benchmarks::secondsOf([&] { Benchmarks::parseWithJsonGlib(text); });

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    printf("%zu %.6f %ld\n", bytes, seconds, usage.ru_maxrss);
    return 0;
}
