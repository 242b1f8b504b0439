// The arguments that `run` and `search` share.
#pragma once

#include <CLI/CLI.hpp>

#include <chrono>
#include <string>
#include <vector>

#include "SearchRun.h"

namespace Tool {

struct SearchArguments {
    std::string merchant = "freshmart";
    std::vector<std::string> term;
    std::chrono::milliseconds limit{75'000};
    bool withoutPictures = false;
    bool json = false;

    // `fallback` is the term where none was given.
    SearchOptions options(const std::string& fallback) const;
};

// Returns the term's option.
CLI::Option* addSearchArguments(CLI::App& command, SearchArguments& arguments);

}  // namespace Tool
