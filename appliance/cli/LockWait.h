// Waiting for a lock that another process holds.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "EventLoop.h"
#include "FileLock.h"

namespace Tool {

// Takes the lock as soon as it is free. Throws Failure: Failed, with that text, when it is not in time;
// Interrupted. Throws std::system_error when the file cannot be opened.
FileLock waitForLock(EventLoop& loop, const std::filesystem::path& file, std::chrono::milliseconds limit,
                     const std::string& failure);

}  // namespace Tool
