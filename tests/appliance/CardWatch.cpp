#include "CardWatch.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>

#include "CardStore.h"
#include "Patience.h"

namespace TestSupport {

CardWatch::CardWatch(const std::string& root)
    : folder_(root + "/screen"), notifier_(inotify_init1(IN_CLOEXEC))
{
    std::filesystem::create_directories(folder_);
    inotify_add_watch(notifier_, folder_.c_str(), IN_MOVED_TO);
}

CardWatch::~CardWatch()
{
    close(notifier_);
}

std::optional<Ui::CardContent> CardWatch::waitFor(const std::function<bool(const Ui::CardContent&)>& wanted)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + Patience;
    const Ui::CardStore store(folder_ + "/card.json");
    for (;;) {
        const auto card = store.read();
        if (card && wanted(*card)) {
            return card;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd watch{notifier_, POLLIN, 0};
        if (left <= 0 || poll(&watch, 1, static_cast<int>(left)) <= 0) {
            return std::nullopt;
        }
        char events[4096];
        (void)!read(notifier_, events, sizeof events);
    }
}

}  // namespace TestSupport
