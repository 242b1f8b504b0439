// What the stand-ins have in common as programs: options, signals, exit statuses.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace Appliance::StandIn {

// The end of --help: what it prints when ready, the trouble words and the exit statuses.
std::string footer(const std::string& readyLine, const std::string& causesOfFailure);

// Blocks SIGTERM and SIGINT; to be called before the first thread, so that all threads inherit it.
void holdEndSignals();
// Blocks until one of them comes.
void waitForEndSignal();

// Parses the options and serves. The exit status: 0; 1 where `serve` threw, which is told on standard error;
// 2 for wrong usage.
int run(CLI::App& app, int argc, char** argv, const std::function<void()>& serve);

}  // namespace Appliance::StandIn
