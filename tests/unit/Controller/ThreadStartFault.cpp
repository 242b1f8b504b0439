#include "ThreadStartFault.h"

#include <cerrno>
#include <memory>
#include <system_error>
#include <thread>

namespace {

thread_local bool isOutOfThreads = false;

// The C++ library's own start of a thread, by the name that its header's code calls it by: linked in between
// with --wrap. The state is a std::unique_ptr<std::thread::_State>, which is passed by reference.
using State = std::unique_ptr<std::thread::_State>;

}  // namespace

#define START_THREAD "_ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE"

void realStart(std::thread* thread, State state, void (*depend)()) __asm__("__real_" START_THREAD);
void wrappedStart(std::thread* thread, State state, void (*depend)()) __asm__("__wrap_" START_THREAD);

void wrappedStart(std::thread* thread, State state, void (*depend)())
{
    if (isOutOfThreads)
        throw std::system_error(EAGAIN, std::generic_category());
    realStart(thread, std::move(state), depend);
}

ThreadStartFault::ThreadStartFault()
{
    isOutOfThreads = true;
}

ThreadStartFault::~ThreadStartFault()
{
    isOutOfThreads = false;
}
