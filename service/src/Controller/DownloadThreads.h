// The threads on which a controller downloads its pictures.
#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <thread>

namespace Carvoy {

/**
 * Runs functions on threads of their own and sees to it that none outlives the object: its destructor waits
 * for them all. A function must find out by itself, in bounded time, that it is not wanted any more. The
 * object is used by one thread; an exception must not leave a function.
 */
class DownloadThreads {
  public:
    DownloadThreads() = default;
    ~DownloadThreads();
    DownloadThreads(const DownloadThreads&) = delete;
    DownloadThreads& operator=(const DownloadThreads&) = delete;

    /** Starts `download` at once, beside those that still run. Throws std::system_error without a thread. */
    void start(std::function<void()> download);

  private:
    struct Download {
        std::atomic<bool> isOver{false};
        std::thread thread;
    };

    void forgetFinished();

    std::list<Download> mDownloads;
};

}  // namespace Carvoy
