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
    bool atRetailer = false;
    bool loggedOut = false;
    std::vector<std::string> term;
    std::chrono::milliseconds limit{75'000};
    bool withoutPictures = false;
    bool json = false;

    // The term where none was given is `milk`, or what that is at the retailer.
    SearchOptions options() const;
};

// Returns the term's option.
CLI::Option* addSearchArguments(CLI::App& command, SearchArguments& arguments);

}  // namespace Tool
