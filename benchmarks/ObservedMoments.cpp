#include "ObservedMoments.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "ScratchRoot.h"

namespace Benchmarks {

ObservedMoments::ObservedMoments() : mFile(TestSupport::ScratchRoot::file("moments-XXXXXX"))
{
    const int descriptor = mkostemp(mFile.data(), O_CLOEXEC);
    void* page = MAP_FAILED;
    if (descriptor >= 0 && ftruncate(descriptor, sizeof(MomentsPage)) == 0)
        page = mmap(nullptr, sizeof(MomentsPage), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    const int error = errno;
    close(descriptor);
    if (page == MAP_FAILED)
        throw std::system_error(error, std::generic_category(), mFile);
    mPage.reset(static_cast<MomentsPage*>(page));
}

void ObservedMoments::Unmap::operator()(MomentsPage* page) const
{
    munmap(page, sizeof *page);
}

TestSupport::ChildProcess::Variables ObservedMoments::variables() const
{
    return {{"LD_PRELOAD", MOMENTS_LIBRARY}, {MOMENTS_VARIABLE, mFile}};
}

void ObservedMoments::forget()
{
    mPage->count = 0;
}

std::vector<std::int64_t> ObservedMoments::all(Moment moment) const
{
    std::vector<std::int64_t> times;
    const std::uint32_t count = std::min(mPage->count.load(), MomentsPage::CAPACITY);
    for (const Happened* noted = mPage->moments; noted != mPage->moments + count; ++noted) {
        if (noted->moment == moment && (moment != Moment::Waits || noted->onFirstThread))
            times.push_back(noted->nanoseconds);
    }
    std::sort(times.begin(), times.end());
    return times;
}

std::optional<std::int64_t> ObservedMoments::first(Moment moment, std::int64_t from) const
{
    const std::vector<std::int64_t> times = all(moment);
    const auto found = std::lower_bound(times.begin(), times.end(), from);
    return found == times.end() ? std::nullopt : std::optional(*found);
}

std::optional<std::int64_t> ObservedMoments::last(Moment moment, std::int64_t before) const
{
    const std::vector<std::int64_t> times = all(moment);
    const auto behind = std::lower_bound(times.begin(), times.end(), before);
    return behind == times.begin() ? std::nullopt : std::optional(*std::prev(behind));
}

}  // namespace Benchmarks
