// A result request through the service against the same two messages without it.
#include <algorithm>
#include <atomic>
#include <stdexcept>

#include "Bare.h"
#include "ObservedMoments.h"
#include "Rig.h"
#include "Rows.h"
#include "Stopwatch.h"

namespace Benchmarks {

namespace {

class Results {
  public:
    Results()
        : mRig(mMarket,
               {mMoments.variables(), [this](const TestSupport::RawMessage&) { mReceived = now(); }, {}}),
          mBare(mRig.bus(), mRig.variables())
    {
        mRig.search();
        mRig.showCard();
        mBare.hold(mRig.showResult().extras);
    }

    /** Without the wait for the worker's poll: from the moment at which the request has been handled and the
     * first thread waits again, to the one at which the worker wakes up. */
    double result()
    {
        mMoments.forget();
        const std::int64_t asked = now();
        mRig.showResult();
        const std::int64_t received = mReceived;
        const std::int64_t polled = mMoments.last(Moment::WokeUp, received).value();
        const std::int64_t queued = std::max(asked, mMoments.last(Moment::Waits, polled).value_or(polled));
        return secondsBetween(asked, received) - std::max(0.0, secondsBetween(queued, polled));
    }

    double echo()
    {
        const std::int64_t asked = now();
        if (!mRig.client().launch(BARE_ID, "echo", 0, {}, "org.example.raw", UI_ID).empty())
            throw std::runtime_error("the bare program refused a request");
        mRig.nextUiMessage();
        return secondsBetween(asked, mReceived);
    }

  private:
    std::atomic<std::int64_t> mReceived{0};
    Market mMarket;
    ObservedMoments mMoments;
    Rig mRig;
    Bare mBare;
};

}  // namespace

void measureResult(Report& report, int pairs)
{
    report.announce("results");
    Results world;
    world.echo();
    Pairs results;
    for (int i = 0; i < 2 * pairs; ++i) {
        const double ours = world.result();
        results.add(ours, world.echo());
    }
    report.add({"result request to the UI app, less the poll", "two legs of bare sdbus-c++", Unit::Seconds,
                Figure::Difference, 0.001},
               results);
}

}  // namespace Benchmarks
