// The merchant bridge of the appliance as a program of its own.
#pragma once

#include <string>

#include "ChildProcess.h"

namespace TestSupport {

/** Serves when the constructor returns; killed at the end where the test has not ended it. One thread. */
class BridgeProgram {
  public:
    /** Takes its tokens from the file, and writes its authority into the folder. Throws std::runtime_error
     * where it does not come up. */
    BridgeProgram(const std::string& folder, const std::string& tokenFile);

    /** What leads a service here. */
    ChildProcess::Variables variables() const;

    ChildProcess& process() { return process_; }

  private:
    std::string authorityFile_;
    ChildProcess process_;
    int port_ = 0;
};

}  // namespace TestSupport
