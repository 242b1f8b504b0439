// What a fuzzer demands of the code under it.
#pragma once

#include <cstdio>
#include <cstdlib>

/** Ends the process where `condition` does not hold, which fuzzers and replays take for a finding. */
#define DEMAND(condition)                                                                  \
    do {                                                                                   \
        if (!(condition)) {                                                                \
            fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
            abort();                                                                       \
        }                                                                                  \
    } while (0)
