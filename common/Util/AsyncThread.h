// A worker thread whose completions come back to the platform's main loop.
#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>

namespace Util {

/**
 * Runs blocking work off the main loop: first in, first out, one task at a time and at least 50 ms apart. The
 * pace is part of the contract, because it also spaces out what the work sends to other apps.
 *
 * Any thread may queue. The worker polls its queue; nothing wakes it. Destroying the object waits for the
 * work in progress, then drops what is still queued; completions already on their way to the main loop
 * still run.
 */
class AsyncThread {
  public:
    /** Where the worker cannot be started, which is logged, the next asyncCall() tries again. */
    AsyncThread();
    virtual ~AsyncThread();
    AsyncThread(const AsyncThread&) = delete;
    AsyncThread& operator=(const AsyncThread&) = delete;

    /**
     * Queues `work` for the worker thread. If it returns true, `done` (which may be empty) is called on the
     * main loop. `work` must not be empty: an empty one ends the process. Throws std::system_error when the
     * queue cannot be locked.
     */
    void asyncCall(const std::function<bool()>& work, const std::function<void()>& done);

    /** Calls `func` (which may be empty) on the main loop and waits until it has returned. */
    void syncCallEcore(const std::function<void()>& func);

  private:
    struct Task {
        std::function<bool()> work;
        std::function<void()> done;
    };

    void start();
    void run();
    std::unique_ptr<Task> takeTask();
    static void complete(void* data);

    std::unique_ptr<std::thread> mThread;  // null where it could not be started
    std::mutex mMutex;                     // guards mQueue and mThread
    std::list<std::unique_ptr<Task>> mQueue;
    std::atomic<bool> mStop{false};
};

}  // namespace Util
