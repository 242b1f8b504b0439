#include "FaultControl.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>
#include <utility>

#include "Patience.h"

namespace Faults {

namespace {

// How often it is looked whether the service still lives.
constexpr timespec Look{0, 100'000'000};

}  // namespace

FaultControl::FaultControl(std::string path) : path_(std::move(path))
{
    const int file = open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    void* memory = MAP_FAILED;
    if (ftruncate(file, sizeof(Plan)) == 0)
        memory = mmap(nullptr, sizeof(Plan), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (memory == MAP_FAILED)
        throw std::runtime_error("no plan of faults");
    plan_ = static_cast<Plan*>(memory);
}

FaultControl::~FaultControl()
{
    munmap(plan_, sizeof(Plan));
}

void FaultControl::clear()
{
    plan_->from = 0;
    for (Function& function : plan_->function) {
        function.from = 0;
        function.calls = 0;
        function.failed = 0;
    }
    plan_->calls = 0;
}

void FaultControl::stopFailing()
{
    plan_->from = 0;
    for (Function& function : plan_->function)
        function.from = 0;
}

void FaultControl::fail(const std::string& function, std::uint32_t from, std::uint32_t until)
{
    Function& chosen = functionOf(function);
    chosen.until = until;
    chosen.from = from;
}

bool FaultControl::hasFailed() const
{
    for (const Function& function : plan_->function) {
        if (function.failed != 0)
            return true;
    }
    return false;
}

std::uint32_t FaultControl::failed(const std::string& function) const
{
    for (const Function& known : plan_->function) {
        if (known.name == function)
            return known.failed;
    }
    return 0;
}

std::map<std::string, std::uint32_t> FaultControl::calls() const
{
    std::map<std::string, std::uint32_t> all;
    for (const Function& function : plan_->function) {
        if (function.calls != 0)
            all[function.name] = function.calls;
    }
    return all;
}

std::size_t FaultControl::sites() const
{
    std::size_t count = 0;
    while (count < Plan::SiteCapacity && plan_->site[count] != 0)
        ++count;
    return count;
}

void FaultControl::expectProcess(std::function<bool()> hasEnded)
{
    for (Event* event : {&plan_->starts, &plan_->requests, &plan_->results, &plan_->polls, &plan_->threads})
        *event = 0;
    hasEnded_ = std::move(hasEnded);
}

bool FaultControl::waitForStart()
{
    return wait(plan_->starts, [](std::uint32_t starts) { return starts > 0; });
}

bool FaultControl::waitForRequests(std::uint32_t count)
{
    return wait(plan_->requests, [count](std::uint32_t requests) { return requests >= count; });
}

bool FaultControl::waitForResults(std::uint32_t count)
{
    return wait(plan_->results, [count](std::uint32_t results) { return results >= count; });
}

bool FaultControl::waitForThreads(std::uint32_t count)
{
    return wait(plan_->threads, [count](std::uint32_t threads) { return threads <= count; });
}

// A look at the queue that is under way may have missed what was put there last; the next one does not. Where
// the worker could not be started it sends nothing.
bool FaultControl::waitForSender()
{
    const std::uint32_t before = plan_->polls;
    return wait(plan_->polls,
                [&](std::uint32_t polls) { return polls - before >= 2 || plan_->threads == 0; });
}

bool FaultControl::wait(const Event& event, const std::function<bool(std::uint32_t)>& fits) const
{
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::Patience;
    while (true) {
        const std::uint32_t seen = event;
        if (fits(seen))
            return true;
        if (hasEnded_() || std::chrono::steady_clock::now() > deadline)
            return false;
        syscall(SYS_futex, &event, FUTEX_WAIT, seen, &Look, nullptr, 0);
    }
}

// No service runs that could add a function at the same time: names are added before it starts, or are there.
Function& FaultControl::functionOf(const std::string& name)
{
    const std::uint32_t count = plan_->functions;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (plan_->function[i].name == name)
            return plan_->function[i];
    }
    if (count == Plan::Capacity || name.size() >= sizeof(Function::name))
        throw std::runtime_error("no room for the faults of " + name);
    std::strcpy(plan_->function[count].name, name.c_str());
    plan_->functions = count + 1;
    return plan_->function[count];
}

}  // namespace Faults
