// Threads that leave the process's signals to the main loop.
#pragma once

#include <csignal>

namespace Util {

/**
 * Blocks all signals on the calling thread while it lives. A thread that is created in the meantime has them
 * blocked for good: the platform's signal handlers then run on the main thread only, which made what they
 * use.
 */
class BlockedSignals {
  public:
    BlockedSignals()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &mBefore);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

  private:
    sigset_t mBefore;
};

}  // namespace Util
