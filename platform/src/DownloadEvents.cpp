#include "DownloadEvents.h"

#include <utility>

namespace HostPlatform {

void DownloadEvents::addState(const Record& download, download_state_e state)
{
    events_.push_back({download, state, 0});
}

void DownloadEvents::addProgress(const Record& download, std::size_t received)
{
    events_.push_back({download, DOWNLOAD_STATE_NONE, received});
}

bool DownloadEvents::tellNext(Lock& lock, const std::function<void()>& before)
{
    if (events_.empty())
        return false;
    const Event event = std::move(events_.front());
    events_.pop_front();
    const Call call = callOf(event);
    if (!call)
        return true;
    running_ = event.download.get();
    lock.unlock();
    before();
    call();
    lock.lock();
    running_ = nullptr;
    ++callsEnded_;
    callEnded_.notify_all();
    return true;
}

void DownloadEvents::awaitRunning(Lock& lock, const Download& download)
{
    if (running_ != &download)
        return;
    const std::uint64_t ended = callsEnded_;
    callEnded_.wait(lock, [&] { return callsEnded_ != ended; });
}

DownloadEvents::Call DownloadEvents::callOf(const Event& event)
{
    const Download& download = *event.download;
    if (event.state == DOWNLOAD_STATE_NONE) {
        if (!download.progress.function)
            return nullptr;
        return [listener = download.progress, id = download.id, received = event.received] {
            listener.function(id, received, listener.userData);
        };
    }
    if (!download.stateChanged.function)
        return nullptr;
    return [listener = download.stateChanged, id = download.id, state = event.state] {
        listener.function(id, state, listener.userData);
    };
}

}  // namespace HostPlatform
