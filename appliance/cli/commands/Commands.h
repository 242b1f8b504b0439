// The sub-commands: each adds itself to the command line.
#pragma once

#include <CLI/CLI.hpp>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Exit.h"

namespace Tool {

// What the chosen sub-command does; set while the command line is parsed.
using Action = std::function<Exit()>;

void addUpCommand(CLI::App& app, Action& chosen);
void addScreenCommand(CLI::App& app, Action& chosen);
void addRunCommand(CLI::App& app, Action& chosen);
void addSearchCommand(CLI::App& app, Action& chosen);
void addResultCommand(CLI::App& app, Action& chosen);
void addSayCommand(CLI::App& app, Action& chosen);
void addStatusCommand(CLI::App& app, Action& chosen);
void addLogCommand(CLI::App& app, Action& chosen);
void addMonitorCommand(CLI::App& app, Action& chosen);
void addSendCommand(CLI::App& app, Action& chosen);
void addEnvCommand(CLI::App& app, Action& chosen);
void addCompletionCommand(CLI::App& app, Action& chosen);

// All of them, with what --help says of the whole.
void buildCommandLine(CLI::App& app, Action& chosen);

// Options that several sub-commands have. What they are written to outlives the command line.
void addRootOption(CLI::App& command, std::string& root);
// `limit` is what holds where the option is not given; `what` tells what it bounds.
CLI::Option* addTimeoutOption(CLI::App& command, std::chrono::milliseconds& limit, const std::string& what);

// Texts that are taken as they are, also "[a,b]" and "{}", which CLI11's own lists read as lists. A name
// without dashes is that of words, any number of them; an option may be given again and again, each time with
// one text.
CLI::Option* addTexts(CLI::App& command, const std::string& name, std::vector<std::string>& texts,
                      const std::string& what);

// For a text that must not be empty.
CLI::Validator notEmpty();

// A number of seconds from 0.001 to 3600; nothing for any other text.
std::optional<std::chrono::milliseconds> limitOf(const std::string& seconds);

}  // namespace Tool
