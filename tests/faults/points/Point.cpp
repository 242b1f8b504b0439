#include "Point.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

// The linker's.
extern "C" const char __executable_start;

namespace Faults {

namespace {

Plan& mapped(const char* path)
{
    const int file = open(path, O_RDWR | O_CLOEXEC);
    void* const memory = mmap(nullptr, sizeof(Plan), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED) {
        perror(path);
        _exit(EXIT_FAILURE);
    }
    close(file);
    return *static_cast<Plan*>(memory);
}

Plan& find()
{
    // Each line is to be there when the test looks for it.
    setvbuf(stdout, nullptr, _IOLBF, 0);
    static Plan none;
    const char* const path = getenv(PlanVariable);
    return path ? mapped(path) : none;
}

// Functions keep their places in the plan from one process to the next.
Function& functionOf(const char* name)
{
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    Plan& all = plan();
    const std::uint32_t count = all.functions;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (strcmp(all.function[i].name, name) == 0)
            return all.function[i];
    }
    if (count == Plan::Capacity || strlen(name) >= sizeof(Function::name))
        abort();
    strcpy(all.function[count].name, name);
    all.functions = count + 1;
    return all.function[count];
}

// A program lies elsewhere in each process.
void note(const Function& function, const void* site)
{
    const auto offset = static_cast<std::uint64_t>(static_cast<const char*>(site) - &__executable_start);
    const auto index = static_cast<std::uint64_t>(&function - plan().function);
    const std::uint64_t key = (index + 1) << 40 | offset;
    for (std::atomic<std::uint64_t>& known : plan().site) {
        std::uint64_t seen = 0;
        if (known.compare_exchange_strong(seen, key) || seen == key)
            return;
    }
}

}  // namespace

Plan& plan()
{
    static Plan& found = find();
    return found;
}

void tell(Event& event, int change)
{
    event += static_cast<std::uint32_t>(change);
    syscall(SYS_futex, &event, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

Point::Point(const char* name) : function_(functionOf(name)) {}

bool Point::fails(const void* site)
{
    note(function_, site);
    Plan& all = plan();
    const std::uint32_t ofAll = ++all.calls;
    const std::uint32_t call = ++function_.calls;
    const std::uint32_t from = function_.from;
    const bool chosen = from != 0 && call >= from && call < function_.until;
    const bool fails = chosen || (all.from != 0 && ofAll >= all.from);
    if (fails)
        ++function_.failed;
    return fails;
}

}  // namespace Faults
