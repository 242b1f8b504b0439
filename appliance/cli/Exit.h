// How the tool ends: the statuses that --help lists, and the error that carries one.
#pragma once

#include <stdexcept>
#include <string>

namespace Tool {

enum class Exit { Ok = 0, Failed = 1, Usage = 2, NotRunning = 3, TimedOut = 4, Interrupted = 130 };

// Ends the command: the text goes to standard error, the status to the shell.
class Failure : public std::runtime_error {
  public:
    Failure(Exit status, const std::string& text) : std::runtime_error(text), status_(status) {}
    Exit status() const { return status_; }

  private:
    Exit status_;
};

}  // namespace Tool
