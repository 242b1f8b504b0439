// What is measured: each function adds the rows of one theme to the report.
#pragma once

#include <string>

#include "Report.h"

namespace Benchmarks {

struct Theme {
    std::string name;
    void (*measure)(Report& report, int pairs);  // at least that many pairs for each row
};

void measureSearch(Report& report, int pairs);
void measureResult(Report& report, int pairs);
void measureParsing(Report& report, int pairs);
void measurePictures(Report& report, int pairs);
void measureLog(Report& report, int pairs);
void measureSends(Report& report, int pairs);
void measureStart(Report& report, int pairs);
void measureIdle(Report& report, int pairs);
void measureMemory(Report& report, int pairs);
void measureFleet(Report& report, int pairs);

}  // namespace Benchmarks
