// Shell completion, generated from the command line's own description.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace Tool {

// A script for the shell to source. `shell` is "bash" or "zsh".
std::string completionScript(const CLI::App& app, const std::string& shell);

}  // namespace Tool
