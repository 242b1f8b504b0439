// A running appliance as other commands find it: its bus and its environment, kept in session.json.
#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>

#include "Root.h"

namespace Tool {

struct Session {
    Root root;
    std::map<std::string, std::string> environment;  // what a program needs to be part of it
    std::map<std::string, pid_t> processes;

    // Throws std::runtime_error when the file cannot be written.
    void write() const;

    // Makes this process part of it.
    void enter() const;
};

// The session of a live appliance in this root, or nothing.
std::optional<Session> findSession(const Root& root);

// The same, entered; throws Failure (NotRunning) when there is none.
Session enterSession(const std::string& rootOption);

// The same, entered, or nothing where there is none and the bus that the caller's environment names will do.
// Throws Failure (NotRunning) when there is no such bus either, or the option names a root.
std::optional<Session> enterSessionOrBus(const std::string& rootOption);

// Text as one word for a POSIX shell.
std::string shellWord(const std::string& text);

}  // namespace Tool
