// Threads of the platform's own, which leave signals to the app.
#pragma once

#include <pthread.h>
#include <signal.h>

namespace HostPlatform {

/** Signals are the app's: a thread that starts while this is there gets none but those of its own faults. */
class SignalsBlocked {
  public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        for (int fault : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP})
            sigdelset(&all, fault);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before_;
};

}  // namespace HostPlatform
