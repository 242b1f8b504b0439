// What happened to downloads and has yet to be told.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "Download.h"

namespace HostPlatform {

/**
 * The events of all downloads, in order, and the one callback that may be running. Every function is called
 * with the mutex that guards the downloads held; those that take the lock let go of it in between.
 */
class DownloadEvents {
  public:
    using Record = std::shared_ptr<Download>;
    using Lock = std::unique_lock<std::mutex>;

    void addState(const Record& download, download_state_e state);
    void addProgress(const Record& download, std::size_t received);

    /**
     * Calls the callback that the oldest event is for, if it is still set, and @p before in front of it, both
     * without the lock. False when there is no event. One thread.
     */
    bool tellNext(Lock& lock, const std::function<void()>& before);

    /** Waits until the callback of the download that is running now, if one is, has returned. */
    void awaitRunning(Lock& lock, const Download& download);

  private:
    struct Event {
        Record download;
        download_state_e state;  // NONE: progress
        std::size_t received;
    };
    using Call = std::function<void()>;

    static Call callOf(const Event& event);

    std::deque<Event> events_;
    const Download* running_ = nullptr;  // whose callback is running
    std::uint64_t callsEnded_ = 0;
    std::condition_variable callEnded_;
};

}  // namespace HostPlatform
