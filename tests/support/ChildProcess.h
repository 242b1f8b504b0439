// A program that a test runs beside itself.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "Patience.h"

namespace TestSupport {

/** How a process ended: an exit status, or the signal that killed it. */
struct ProcessEnd {
    bool inTime;  // false: it still ran when the wait was over
    int status;   // of exit(); -1 where a signal ended it
    int signal;   // 0 where it exited
};

/**
 * Starts a program, with this process's environment and what is added to it, and keeps what it writes.
 * The program dies with the test, and is killed when the object is destroyed. One thread.
 */
class ChildProcess {
  public:
    using Variables = std::vector<std::pair<std::string, std::string>>;

    /** Throws std::runtime_error where the program cannot be started. */
    explicit ChildProcess(const std::vector<std::string>& command, const Variables& added = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }
    void signal(int number) const;

    /** Waits for the end. Asking again gives the same answer. */
    ProcessEnd wait(std::chrono::milliseconds limit = Patience);

    /** Waits until standard output holds @p text; false when it ended or the time is over. */
    bool waitForOutput(const std::string& text, std::chrono::milliseconds limit = Patience);
    /** The same for standard error. */
    bool waitForErrors(const std::string& text, std::chrono::milliseconds limit = Patience);

    /** Everything written so far. */
    std::string output() const;
    std::string errors() const;

  private:
    bool waitForText(const char* stream, const std::string& text, std::chrono::milliseconds limit);

    std::string folder_;
    pid_t pid_ = -1;
    int handle_ = -1;
    bool ended_ = false;
    ProcessEnd end_{};
};

}  // namespace TestSupport
