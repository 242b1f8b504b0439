// The sub-commands: each adds itself to the command line.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

#include "Exit.h"

namespace Tool {

// What the chosen sub-command does; set while the command line is parsed.
using Action = std::function<Exit()>;

void addUpCommand(CLI::App& app, Action& chosen);
void addRunCommand(CLI::App& app, Action& chosen);
void addSearchCommand(CLI::App& app, Action& chosen);
void addResultCommand(CLI::App& app, Action& chosen);
void addStatusCommand(CLI::App& app, Action& chosen);
void addLogCommand(CLI::App& app, Action& chosen);
void addSendCommand(CLI::App& app, Action& chosen);
void addEnvCommand(CLI::App& app, Action& chosen);
void addCompletionCommand(CLI::App& app, Action& chosen);

// All of them, with what --help says of the whole.
void buildCommandLine(CLI::App& app, Action& chosen);

// Options that several sub-commands have.
void addRootOption(CLI::App& command, std::string& root);
CLI::Option* addTimeoutOption(CLI::App& command, double& seconds);

}  // namespace Tool
