// Queues a hundred messages, returns from main as soon as one is sent, and tells at its very end whether all
// were.
#include <cstdio>

#include "AppControl.h"
#include "Calls.h"

namespace {

constexpr size_t kMessages = 100;

__attribute__((destructor(101))) void tell()
{
    const bool all = TestSupport::Calls::launches().size() == kMessages;
    std::printf("dropped some: %s\n", all ? "no" : "yes");
    std::fflush(stdout);
}

}  // namespace

int main()
{
    Util::AppControlData data;
    data.setPackageName("org.example.app");
    for (size_t i = 0; i < kMessages; ++i)
        Util::AppControl::performAppControl(data);
    return TestSupport::Calls::waitForLaunches(1) ? 0 : 1;
}
