#include "FolderWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <set>
#include <system_error>
#include <utility>

namespace Appliance {

namespace {

int watchingDescriptor(const std::filesystem::path& folder)
{
    const int fd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (fd < 0) {
        throw std::system_error(errno, std::generic_category(), "inotify");
    }
    const std::uint32_t changes =
        IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
    if (inotify_add_watch(fd, folder.c_str(), changes) < 0) {
        const int error = errno;
        close(fd);
        throw std::system_error(error, std::generic_category(), "cannot watch " + folder.string());
    }
    return fd;
}

void collectNames(const char* events, ssize_t length, std::set<std::string>& names)
{
    for (const char* at = events; at < events + length;) {
        const auto* event = reinterpret_cast<const inotify_event*>(at);
        if (event->len > 0) {
            names.insert(event->name);
        } else if ((event->mask & IN_Q_OVERFLOW) != 0) {
            names.insert("");
        }
        at += sizeof(inotify_event) + event->len;
    }
}

}  // namespace

FolderWatch::FolderWatch(const std::filesystem::path& folder,
                         std::function<void(const std::string&)> onChange)
    : onChange_(std::move(onChange)), fd_(watchingDescriptor(folder))
{
    watch_.emplace(fd_, [this] { readEvents(); });
}

FolderWatch::~FolderWatch()
{
    watch_.reset();
    close(fd_);
}

void FolderWatch::readEvents()
{
    std::set<std::string> names;
    alignas(inotify_event) char buffer[4096];
    for (ssize_t length = 0; (length = read(fd_, buffer, sizeof buffer)) > 0;) {
        collectNames(buffer, length, names);
    }
    for (const std::string& name : names) {
        onChange_(name);
    }
}

}  // namespace Appliance
