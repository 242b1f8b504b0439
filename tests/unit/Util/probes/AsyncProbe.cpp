// A worker that is given work it cannot do (empty-work), or whose queue cannot be locked (no-lock).
#include <errno.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "AsyncThread.h"

extern "C" int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex);

namespace {

thread_local bool refusesLocks = false;

int giveEmptyWork()
{
    Util::AsyncThread worker;
    worker.asyncCall(nullptr, nullptr);
    pause();
    return 0;
}

int queueWithoutLock()
{
    Util::AsyncThread worker;
    refusesLocks = true;
    try {
        worker.asyncCall([] { return false; }, nullptr);
        std::puts("no error");
    } catch (const std::system_error&) {
        std::puts("system error");
    }
    refusesLocks = false;
    return 0;
}

}  // namespace

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex)
{
    return refusesLocks ? EDEADLK : __real_pthread_mutex_lock(mutex);
}

int main(int, char** arguments)
{
    return std::strcmp(arguments[1], "no-lock") == 0 ? queueWithoutLock() : giveEmptyWork();
}
