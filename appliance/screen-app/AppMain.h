// The main() of an app on the screen.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <functional>
#include <memory>

#include "ScreenApp.h"

namespace Appliance {

using AppMaker = std::function<std::unique_ptr<ScreenApp>()>;
using OptionAdder = std::function<void(CLI::App& options)>;

inline int parseAndRun(CLI::App& options, int argc, char** argv, const AppMaker& makeApp)
{
    try {
        options.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int wrongUsage = 2;
        return options.exit(error) == 0 ? 0 : wrongUsage;
    }
    return makeApp()->run(argc, argv) == 0 ? 0 : 1;
}

// Parses the options, makes the app and runs it to its end. Returns the status to exit with.
inline int runApp(
    const char* description, int argc, char** argv, const AppMaker& makeApp,
    const OptionAdder& addOptions = [](CLI::App&) {})
{
    try {
        CLI::App options(description);
        addOptions(options);
        options.footer(
            "Exit status:\n"
            "  0  ended as asked\n"
            "  1  it could not run as an app\n"
            "  2  wrong usage\n");
        return parseAndRun(options, argc, argv, makeApp);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}

}  // namespace Appliance
