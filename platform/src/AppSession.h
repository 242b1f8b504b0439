// A connection to the session bus and the thread that processes it.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "AppPort.h"
#include "VoicePort.h"

namespace HostPlatform {

/**
 * Connects, and processes the connection on a thread of its own, which alone touches it and keeps the
 * session alive. The session ends with stop(), or when the bus goes away or memory runs out: then the waiting
 * replies fail, and @p lost is called on that thread.
 */
class AppSession : public std::enable_shared_from_this<AppSession> {
  public:
    /** The objects on the connection; only the session's thread may use them. */
    struct Ports {
        AppPort app;
        VoicePort voice;
    };
    using Task = std::function<void(Ports&)>;

    /** Throws sdbus::Error where the bus cannot be reached, std::system_error where no thread or
     *  descriptor can be had. */
    static std::shared_ptr<AppSession> start(std::function<void()> lost);

    AppSession(const AppSession&) = delete;
    AppSession& operator=(const AppSession&) = delete;

    /** Any thread. Runs @p task on the session's thread, in order; once ended, drops it unrun. */
    void post(Task task);

    /** Any thread. */
    bool hasEnded() const;

    /** Any other thread, once; waits for the session's. What is sent is flushed, what is under way dropped.
     */
    void stop();

  private:
    explicit AppSession(std::function<void()> lost);

    void startThread();
    void run();
    void processUntilStopped();
    bool runTasks();
    void waitForWork();
    void end(bool lost);
    void wake() const;

    std::function<void()> lost_;
    sdbus::UnixFd wakeDescriptor_;
    std::unique_ptr<sdbus::IConnection> connection_;
    std::unique_ptr<Ports> ports_;
    mutable std::mutex mutex_;  // of what follows
    std::vector<Task> tasks_;
    bool stopping_ = false;
    bool ended_ = false;
    std::thread thread_;
};

}  // namespace HostPlatform
