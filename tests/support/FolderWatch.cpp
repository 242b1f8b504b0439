#include "FolderWatch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace TestSupport {

FolderWatch::FolderWatch(const std::string& folder, std::uint32_t events)
    : notifier_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
    if (inotify_add_watch(notifier_, folder.c_str(), events) < 0) {
        const int error = errno;
        close(notifier_);
        throw std::system_error(error, std::generic_category(), "cannot watch " + folder);
    }
}

FolderWatch::~FolderWatch()
{
    close(notifier_);
}

bool FolderWatch::waitFor(const std::string& beginning, std::chrono::milliseconds limit)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + limit;
    const auto fits = [&](const std::string& name) {
        return name.compare(0, beginning.size(), beginning) == 0;
    };
    pollfd watch{notifier_, POLLIN, 0};
    for (;;) {
        const std::vector<std::string> names = read();
        if (std::any_of(names.begin(), names.end(), fits))
            return true;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return false;
        poll(&watch, 1, static_cast<int>(left));
    }
}

std::vector<std::string> FolderWatch::read()
{
    std::vector<std::string> names;
    alignas(inotify_event) char events[4096];
    for (ssize_t length = 0; (length = ::read(notifier_, events, sizeof events)) > 0;) {
        for (const char* at = events; at < events + length;) {
            const auto* event = reinterpret_cast<const inotify_event*>(at);
            if (event->len > 0)
                names.emplace_back(event->name);
            at += sizeof(inotify_event) + event->len;
        }
    }
    return names;
}

}  // namespace TestSupport
