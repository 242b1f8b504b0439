// Linked in place of pthread_mutex_lock with --wrap.
#include "LockStep.h"

#include <pthread.h>

#include <utility>

extern "C" {
int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex);
}

namespace {

thread_local LockStep* active = nullptr;

}  // namespace

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex)
{
    if (active)
        active->count();
    return __real_pthread_mutex_lock(mutex);
}

LockStep::LockStep(int nth, std::function<void()> step) : left_(nth), step_(std::move(step))
{
    active = this;
}

LockStep::~LockStep()
{
    active = nullptr;
}

void LockStep::count()
{
    if (--left_ > 0)
        return;
    // The step itself may lock what it likes.
    active = nullptr;
    step_();
}
