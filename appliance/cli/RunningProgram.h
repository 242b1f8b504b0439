// A program that this tool starts and ends.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "EventLoop.h"

namespace Tool {

struct Program {
    std::string name;                  // for messages
    std::vector<std::string> command;  // the program's path (or its name on PATH), then its arguments
    std::map<std::string, std::string> environment;  // in addition to this process's own
    std::filesystem::path output;                    // its standard output and error, appended
};

// Started by the constructor, in a process group of its own (Ctrl-C in the terminal is not for it), with
// nothing on standard input. The kernel kills it when this process dies in whatever way. Main thread only.
class RunningProgram {
  public:
    // `onEnd` is called once, from the loop. Throws std::system_error when there is no such program, or the
    // system has no descriptor left.
    RunningProgram(Program program, std::function<void(RunningProgram&)> onEnd);
    // Kills and reaps what still runs.
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    const Program& program() const { return program_; }
    pid_t pid() const { return pid_; }
    bool running() const { return !status_; }
    bool endedWell() const;
    // Such as "exit status 1" or "killed by signal 9 (Killed)".
    std::string endText() const;

    void signal(int number) const;

  private:
    void reap();
    void killNow() const;

    Program program_;
    std::function<void(RunningProgram&)> onEnd_;
    pid_t pid_ = -1;
    int pidFd_ = -1;
    std::optional<int> status_;  // as of waitpid()
    std::optional<Appliance::FdWatch> watch_;
};

}  // namespace Tool
