#include "LockWait.h"

#include <optional>
#include <utility>

namespace Tool {

FileLock waitForLock(EventLoop& loop, const std::filesystem::path& file, std::chrono::milliseconds limit,
                     const Failure& failure, const std::function<void()>& onWait)
{
    using namespace std::chrono_literals;
    std::optional<FileLock> lock;
    const auto take = [&] {
        if (!lock) {
            std::optional<FileLock> taken = FileLock::take(file);
            taken ? (void)lock.emplace(std::move(*taken)) : (void)0;
        }
        return lock.has_value();
    };
    if (!take()) {
        onWait();
    }
    const Appliance::Ticker again(50ms, [] {});  // nobody tells that a lock is free
    switch (loop.runUntil(take, limit)) {
        case EventLoop::Outcome::Done:
            break;
        case EventLoop::Outcome::TimedOut:
            throw Failure(failure);
        case EventLoop::Outcome::Interrupted:
            throw Failure(Exit::Interrupted, "interrupted");
    }
    return std::move(*lock);
}

}  // namespace Tool
