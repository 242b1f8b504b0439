// What keeps everything running: `up`, and `screen`, which serves the page besides.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

#include "Exit.h"

namespace Tool {

struct StayArguments {
    std::string root;
    std::string confirm = "now";
    int confirmAfter = 2000;
    std::optional<int> screenPort;  // nothing: no page
    bool bridgeLog = false;
    bool untilStdinCloses = false;
};

void addStayArguments(CLI::App& command, StayArguments& arguments);

// Starts everything, stays until it is ended, and ends everything.
Exit stay(const StayArguments& arguments);

}  // namespace Tool
