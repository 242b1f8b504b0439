// Threads that leave the process's signals to the main loop.
#pragma once

#include <csignal>

namespace Util {

/**
 * Blocks the calling thread's signals while it lives. A thread that is created in the meantime has them
 * blocked for good, so that the platform's handlers of SIGTERM and the like do not run on it: they write to
 * what the main loop has, which may be there no more. A fault of the thread's own (SIGSEGV and its kind) is
 * reported as ever.
 */
class BlockedSignals {
  public:
    BlockedSignals()
    {
        sigset_t all;
        sigfillset(&all);
        for (int fault : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP})
            sigdelset(&all, fault);
        pthread_sigmask(SIG_SETMASK, &all, &mBefore);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

  private:
    sigset_t mBefore;
};

}  // namespace Util
