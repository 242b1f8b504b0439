#include "ObservedMoments.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <thread>

#include <sys/mman.h>
#include <unistd.h>

#include "Stopwatch.h"

namespace Benchmarks {

// In memory: a page of a file on disk would be one more for each sync() to write.
ObservedMoments::ObservedMoments() : mDescriptor(memfd_create("moments", MFD_CLOEXEC))
{
    void* page = MAP_FAILED;
    if (mDescriptor >= 0 && ftruncate(mDescriptor, sizeof(MomentsPage)) == 0)
        page = mmap(nullptr, sizeof(MomentsPage), PROT_READ | PROT_WRITE, MAP_SHARED, mDescriptor, 0);
    if (page == MAP_FAILED)
        throw std::system_error(errno, std::generic_category(), "no page for the moments");
    mPage.reset(static_cast<MomentsPage*>(page));
}

ObservedMoments::~ObservedMoments()
{
    close(mDescriptor);
}

void ObservedMoments::Unmap::operator()(MomentsPage* page) const
{
    munmap(page, sizeof *page);
}

TestSupport::ChildProcess::Variables ObservedMoments::variables() const
{
    const std::string file = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(mDescriptor);
    return {{"LD_PRELOAD", MOMENTS_LIBRARY}, {MOMENTS_VARIABLE, file}};
}

void ObservedMoments::forget()
{
    const std::uint32_t count = std::min(mPage->count.load(), MomentsPage::CAPACITY);
    for (Happened* noted = mPage->moments; noted != mPage->moments + count; ++noted)
        noted->nanoseconds = 0;
    mPage->count = 0;
}

std::vector<std::int64_t> ObservedMoments::all(Moment moment) const
{
    std::vector<std::int64_t> times;
    const std::uint32_t count = std::min(mPage->count.load(), MomentsPage::CAPACITY);
    for (const Happened* noted = mPage->moments; noted != mPage->moments + count; ++noted) {
        const std::int64_t time = noted->nanoseconds.load(std::memory_order_acquire);
        const bool counts = moment != Moment::Waits || noted->onFirstThread;
        if (time != 0 && noted->moment == moment && counts)
            times.push_back(time);
    }
    std::sort(times.begin(), times.end());
    return times;
}

// Looks now and then: a program that had to wake its observer would not be the one that is shipped.
std::vector<std::int64_t> ObservedMoments::waitFor(Moment moment, std::size_t count) const
{
    const std::int64_t begin = now();
    while (all(moment).size() < count) {
        if (secondsBetween(begin, now()) > std::chrono::duration<double>(TestSupport::Patience).count())
            throw std::runtime_error("what was to be observed did not happen");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return all(moment);
}

std::int64_t ObservedMoments::first(Moment moment, std::int64_t from) const
{
    const std::vector<std::int64_t> times = all(moment);
    const auto found = std::lower_bound(times.begin(), times.end(), from);
    if (found == times.end())
        throw std::runtime_error("what was to be observed did not happen");
    return *found;
}

std::optional<std::int64_t> ObservedMoments::last(Moment moment, std::int64_t before) const
{
    const std::vector<std::int64_t> times = all(moment);
    const auto behind = std::lower_bound(times.begin(), times.end(), before);
    return behind == times.begin() ? std::nullopt : std::optional(*std::prev(behind));
}

}  // namespace Benchmarks
