#include "ScreenWatch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>

namespace TestSupport {

ScreenWatch::ScreenWatch(const std::string& root)
    : folder_(root + "/screen"), notifier_(inotify_init1(IN_CLOEXEC))
{
    std::filesystem::create_directories(folder_);
    inotify_add_watch(notifier_, folder_.c_str(), IN_MOVED_TO);
}

ScreenWatch::~ScreenWatch()
{
    close(notifier_);
}

// False when the time is over.
bool ScreenWatch::waitForChange(Clock::time_point deadline) const
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd watch{notifier_, POLLIN, 0};
    if (left <= 0 || poll(&watch, 1, static_cast<int>(left)) <= 0) {
        return false;
    }
    char events[4096];
    (void)!read(notifier_, events, sizeof events);
    return true;
}

}  // namespace TestSupport
