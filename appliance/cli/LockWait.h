// Waiting for a lock that another process holds.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>

#include "EventLoop.h"
#include "Exit.h"
#include "FileLock.h"

namespace Tool {

// Takes the lock as soon as it is free. Calls `onWait` first where somebody holds it. Throws `failure` when
// it is not free in time, and Failure: Interrupted. Throws std::system_error when the file cannot be opened
// or locked.
FileLock waitForLock(
    EventLoop& loop, const std::filesystem::path& file, std::chrono::milliseconds limit,
    const Failure& failure, const std::function<void()>& onWait = [] {});

}  // namespace Tool
