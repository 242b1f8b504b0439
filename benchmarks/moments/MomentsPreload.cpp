// The library: stands in front of the calls that the moments are told by. Allocates nothing and changes
// nothing.
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Moments.h"

#define PRELOADED extern "C" __attribute__((visibility("default")))

namespace {

using Benchmarks::Moment;
using Benchmarks::MomentsPage;

MomentsPage* page = nullptr;

// What the program starts (a shell, say) is not what is observed.
__attribute__((constructor)) void mapPage()
{
    const char* file = getenv(Benchmarks::MOMENTS_VARIABLE);
    const int descriptor = file ? open(file, O_RDWR | O_CLOEXEC) : -1;
    unsetenv(Benchmarks::MOMENTS_VARIABLE);
    unsetenv("LD_PRELOAD");
    if (descriptor < 0)
        return;
    void* mapped = mmap(nullptr, sizeof *page, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    close(descriptor);
    if (mapped != MAP_FAILED)
        page = static_cast<MomentsPage*>(mapped);
}

void note(Moment moment)
{
    if (!page)
        return;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const std::uint32_t place = page->count.fetch_add(1);
    if (place >= MomentsPage::CAPACITY)
        return;
    Benchmarks::Happened& noted = page->moments[place];
    noted.moment = moment;
    noted.onFirstThread = syscall(SYS_gettid) == getpid();
    noted.nanoseconds.store(now.tv_sec * 1'000'000'000LL + now.tv_nsec, std::memory_order_release);
}

template <typename Function>
Function next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

PRELOADED ssize_t recvmsg(int descriptor, msghdr* message, int flags)
{
    static const auto real = next<decltype(&recvmsg)>("recvmsg");
    const ssize_t length = real(descriptor, message, flags);
    if (length > 0)
        note(Moment::Received);
    return length;
}

PRELOADED int select(int count, fd_set* read, fd_set* write, fd_set* exceptional, timeval* limit)
{
    static const auto real = next<decltype(&select)>("select");
    if (!limit || limit->tv_sec > 0 || limit->tv_usec > 0)
        note(Moment::Waits);
    return real(count, read, write, exceptional, limit);
}

PRELOADED int nanosleep(const timespec* wanted, timespec* left)
{
    static const auto real = next<decltype(&nanosleep)>("nanosleep");
    const int result = real(wanted, left);
    note(Moment::WokeUp);
    return result;
}

PRELOADED int rename(const char* from, const char* to) noexcept
{
    static const auto real = next<decltype(&rename)>("rename");
    const int result = real(from, to);
    if (result == 0)
        note(Moment::Replaced);
    return result;
}

PRELOADED void sync() noexcept
{
    static const auto real = next<decltype(&sync)>("sync");
    real();
    note(Moment::Synced);
}
