// The observer's side of the moments.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "ChildProcess.h"
#include "moments/Moments.h"

namespace Benchmarks {

/** What one program that was started with the variables does. One thread. */
class ObservedMoments {
  public:
    /** Throws std::system_error where there can be no page. */
    ObservedMoments();
    ~ObservedMoments();
    ObservedMoments(const ObservedMoments&) = delete;

    /** What a program needs in its environment. */
    TestSupport::ChildProcess::Variables variables() const;

    /** Forgets what was noted so far. */
    void forget();

    /** Everything of that kind since then, in order. */
    std::vector<std::int64_t> all(Moment moment) const;

    /** The same, when there are so many. Throws std::runtime_error where that takes a minute. */
    std::vector<std::int64_t> waitFor(Moment moment, std::size_t count) const;

    /** Throws std::runtime_error where there is none. */
    std::int64_t first(Moment moment, std::int64_t from) const;

    std::optional<std::int64_t> last(Moment moment, std::int64_t before) const;

  private:
    struct Unmap {
        void operator()(MomentsPage* page) const;
    };

    int mDescriptor;
    std::unique_ptr<MomentsPage, Unmap> mPage;
};

}  // namespace Benchmarks
