// The file in which the retailer's service reads whether the user is logged in. Its path is fixed when the
// service is built: an absolute one is shared by all appliances of a build, a relative one lies in each one's
// root.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "EventLoop.h"
#include "FileLock.h"
#include "Root.h"

namespace Tool {

// Of this build, for this appliance. Absolute.
std::filesystem::path loginFile(const Root& root);

// The login file for one search. While it lives no other holds the file, so that one that is logged out does
// not log out another. Main thread only.
class LoginHold {
  public:
    // Waits for the one before and puts back what a killed one has left. Logs in where there is no file yet;
    // what somebody wrote there stays, unless it is to be logged out meanwhile. `onWait` is called where
    // another holds it. Throws Failure: TimedOut; Interrupted; Failed where the file cannot be written.
    LoginHold(
        EventLoop& loop, std::filesystem::path file, bool loggedOut, std::chrono::milliseconds limit,
        const std::function<void()>& onWait = [] {});
    // Puts back what was there, unless somebody has written to the file meanwhile.
    ~LoginHold();
    LoginHold(const LoginHold&) = delete;
    LoginHold& operator=(const LoginHold&) = delete;

    // Why the service takes the user for logged out, or nothing.
    std::optional<std::string> whyLoggedOut() const;

  private:
    std::filesystem::path file_;
    FileLock lock_;
};

}  // namespace Tool
