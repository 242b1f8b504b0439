// The command-line tool as a process, and an appliance that it keeps running.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ChildProcess.h"

namespace TestSupport {

using Words = std::vector<std::string>;

/** How the tool ended: its exit status, and all that it wrote. */
struct Ended {
    int status;
    std::string output;
    std::string errors;
};

/** Runs the tool to its end. */
Ended tool(const Words& arguments, const ChildProcess::Variables& variables = {});

/** How often, and whether, the part stands in the text. */
std::size_t count(const std::string& text, const std::string& part);
bool has(const std::string& text, const std::string& part);

/** A running appliance in a root of the test's own. */
class ARunningAppliance : public testing::Test {
  protected:
    void up(const Words& options = {});

    /** Runs a sub-command on it. */
    Ended on(Words arguments) const;

    std::map<std::string, pid_t> processes() const;

    void down();

    std::string root_;
    std::unique_ptr<ChildProcess> up_;
};

}  // namespace TestSupport
