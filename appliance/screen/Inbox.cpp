#include "Inbox.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace Screen {

Inbox::Inbox(std::function<void(const Command&)> onCommand)
    : onCommand_(std::move(onCommand)), descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (descriptor_ < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    watch_.emplace(descriptor_, [this] { handOut(); });
}

Inbox::~Inbox()
{
    watch_.reset();
    close(descriptor_);
}

bool Inbox::put(Command command)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (waiting_.size() >= Waiting) {
            return false;
        }
        waiting_.push_back(std::move(command));
    }
    eventfd_write(descriptor_, 1);
    return true;
}

void Inbox::handOut()
{
    eventfd_t ignored = 0;
    eventfd_read(descriptor_, &ignored);
    std::deque<Command> commands;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        commands.swap(waiting_);
    }
    for (const Command& command : commands) {
        onCommand_(command);
    }
}

}  // namespace Screen
