// What the process writes to standard output while a test listens.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "ScratchRoot.h"

/** Standard output goes to a file from construction until destruction. */
class CapturedOutput {
  public:
    CapturedOutput()
    {
        std::fflush(stdout);
        const int file = open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        dup2(file, STDOUT_FILENO);
        close(file);
    }

    ~CapturedOutput()
    {
        std::fflush(stdout);
        dup2(original_, STDOUT_FILENO);
        close(original_);
    }

    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    /** All of it so far. */
    std::string text() const
    {
        std::fflush(stdout);
        std::ifstream file(path_, std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        return bytes.str();
    }

  private:
    const std::string path_ = TestSupport::ScratchRoot::file("stdout");
    const int original_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
};
