// carvoy-benchmarks: prints one table, in which every figure is a ratio or a difference of one run.
#include <algorithm>
#include <cstdio>
#include <exception>

#include <CLI/CLI.hpp>

#include "Rows.h"

namespace {

using Benchmarks::Theme;

const std::vector<Theme> THEMES = {
    {"search", Benchmarks::measureSearch}, {"result", Benchmarks::measureResult},
    {"parse", Benchmarks::measureParsing}, {"picture", Benchmarks::measurePictures},
    {"log", Benchmarks::measureLog},       {"sends", Benchmarks::measureSends},
    {"start", Benchmarks::measureStart},   {"idle", Benchmarks::measureIdle},
    {"memory", Benchmarks::measureMemory}, {"fleet", Benchmarks::measureFleet},
};

std::vector<std::string> names()
{
    std::vector<std::string> all;
    for (const Theme& theme : THEMES)
        all.push_back(theme.name);
    return all;
}

/** What the others measure is not lost with one that fails. */
bool measured(const Theme& theme, Benchmarks::Report& report, int pairs)
try {
    theme.measure(report, pairs);
    return true;
} catch (const std::exception& error) {
    fprintf(stderr, "carvoy-benchmarks: %s: %s\n", theme.name.c_str(), error.what());
    return false;
}

}  // namespace

int main(int argc, char** argv)
try {
    CLI::App app("Measures the service against the bare libraries.", "carvoy-benchmarks");
    int pairs = 20;
    bool markdown = false;
    std::vector<std::string> chosen;
    app.add_option("THEME", chosen, "What to measure; all, if none is named")->check(CLI::IsMember(names()));
    app.add_option("--pairs", pairs,
                   "How many pairs make a row, at least; below 20 nothing is said of the goals")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_flag("--markdown", markdown, "Print the table for a document");
    CLI11_PARSE(app, argc, argv);

    // What is measured inside this program logs as well.
    setenv("APPLIANCE_DLOG", "/dev/null", 1);
    Benchmarks::Report report;
    bool failed = false;
    for (const Theme& theme : THEMES) {
        if (chosen.empty() || std::find(chosen.begin(), chosen.end(), theme.name) != chosen.end())
            failed = !measured(theme, report, pairs) || failed;
    }
    fputs((markdown ? report.markdown() : report.table()).c_str(), stdout);
    return failed ? 1 : 0;
} catch (const std::exception& error) {
    fprintf(stderr, "carvoy-benchmarks: %s\n", error.what());
    return 1;
}
