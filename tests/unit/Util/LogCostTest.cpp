// What a log statement costs: nothing of the heap.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "CapturedOutput.h"
#include "Log.h"

namespace {

// The log is opened once per process, at its first entry.
[[maybe_unused]] const int logIsAFile =
    setenv("APPLIANCE_DLOG", TestSupport::ScratchRoot::file("dlog").c_str(), 1);

thread_local long allocations = 0;

void noteAllocation(const volatile void*, size_t)
{
    ++allocations;
}

}  // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, size_t),
                                                         void (*onFree)(const volatile void*));

namespace {

[[maybe_unused]] const int installed =
    __sanitizer_install_malloc_and_free_hooks(noteAllocation, [](const volatile void*) {});

}  // namespace

#else

// In place of the library's, for every part of the process; operator new comes here too.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size)
{
    noteAllocation(nullptr, size);
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    noteAllocation(nullptr, size);
    return __libc_calloc(count, size);
}

void* realloc(void* block, size_t size)
{
    noteAllocation(nullptr, size);
    return __libc_realloc(block, size);
}
}

#endif

TEST(LogCost, TheCountSeesAllocations)
{
    const long before = allocations;
    const auto number = std::make_unique<int>(1);
    const std::unique_ptr<void, decltype(&free)> block(malloc(10), free);

    EXPECT_EQ(allocations - before, 2) << *number << block.get();
}

TEST(LogCost, AStatementAllocatesNothing)
{
    const CapturedOutput output;
    const std::string text(3000, 'x');
    // The first one opens the log and gives standard output its buffer.
    LOG_I("first");

    const long before = allocations;
    LOG_D("");
    LOG_I("_create");
    LOG_E("%s: %d", text.c_str(), 5);
    EXPECT_EQ(allocations, before);
}
