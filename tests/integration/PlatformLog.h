// What the service wrote into the platform's log, statement by statement.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "LogText.h"
#include "Patience.h"

namespace ServiceTest {

using LogText::contentOf;
using LogText::linesOf;

/** Waits until what the file holds fits; false when the time is over. Its folder must be there. */
bool waitForContent(const std::string& path, const std::function<bool(const std::string&)>& fits,
                    std::chrono::milliseconds limit = TestSupport::Patience);

/** One entry. An entry that is not in the service's form has all of its text in `message`, and no file. */
struct LogLine {
    std::string level;  // "debug", "info" or "error", where priority and colour agree
    int thread = 0;
    std::string file;
    std::string function;
    int line = 0;
    std::string message;

    /** The place and the text, without what differs from run to run: "main.cpp:29 main info: main". */
    std::string text() const;

    /** What the same statement writes to standard output. */
    std::string plain() const;
};

/** Reads the file anew at each call, so that it always tells what is there. Any thread. */
class PlatformLog {
  public:
    explicit PlatformLog(std::string path) : path_(std::move(path)) {}

    std::vector<LogLine> lines() const;
    std::vector<std::string> texts() const;

    /** How often this message was logged. */
    std::size_t count(const std::string& message) const;

    /** Waits until the message was logged so often. */
    bool waitFor(const std::string& message, std::size_t count = 1,
                 std::chrono::milliseconds limit = TestSupport::Patience) const;

  private:
    std::string path_;
};

}  // namespace ServiceTest
