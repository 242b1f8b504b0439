// One search of the running service against the GET that it cannot do without.
#include <optional>

#include "Bare.h"
#include "ObservedMoments.h"
#include "Rig.h"
#include "Rows.h"
#include "Stopwatch.h"

namespace Benchmarks {

namespace {

constexpr int PICTURES = 6;  // of a search for milk

/** Both in one world, each woken by a message on the bus. */
class Searches {
  public:
    explicit Searches(const std::string& parentFolder)
        : mRig(mMarket, {mMoments.variables(), {}, parentFolder}), mBare(mRig.bus(), mRig.variables())
    {
    }

    /** From the request's arrival to the status record and the flag. The pictures are waited for afterwards.
     */
    double search()
    {
        mMoments.forget();
        const std::int64_t asked = now();
        mRig.search();
        mRig.showCard(PICTURES);
        const std::int64_t arrived = mMoments.first(Moment::Received, asked);
        const std::int64_t written = mMoments.first(Moment::Replaced, asked);
        return secondsBetween(arrived, written);
    }

    double get() { return mBare.ask<double>("Get", mUrl, mHeaders); }
    double getOverKeptConnection() { return mBare.ask<double>("GetOverKeptConnection", mUrl, mHeaders); }
    double wipeAndGet()
    {
        mBare.ask<std::vector<double>>("Download", mPictures, mFolder);
        return mBare.ask<double>("WipeAndGet", mUrl, mHeaders, mFolder);
    }

  private:
    const std::string mUrl = Bare::searchUrl();
    const std::vector<std::string> mHeaders = Bare::searchHeaders();
    Market mMarket;
    ObservedMoments mMoments;
    Rig mRig;
    Bare mBare;
    const std::vector<std::string> mPictures = mBare.pictureUrls();
    const std::string mFolder = mRig.root() + "/bare";
};

void addSearches(Report& report, int pairs, const std::string& what, const std::string& parentFolder,
                 std::optional<double> goal)
{
    Searches world(parentFolder);
    world.search();
    Pairs bare;
    Pairs wiped;
    for (int i = 0; i < 2 * pairs; ++i) {
        const double ours = world.search();
        bare.add(ours, world.get());
        wiped.add(ours, world.wipeAndGet());
    }
    report.add({what, "GET of bare libcurl", Unit::Seconds, Figure::Difference, goal}, bare);
    report.add(
        {"context: " + what, "rm -rf by the shell, and that GET", Unit::Seconds, Figure::Difference, {}},
        wiped);
}

void addKeptConnection(Report& report, int pairs)
{
    Searches world({});
    Pairs kept;
    for (int i = 0; i < pairs; ++i) {
        const double fresh = world.get();
        kept.add(fresh, world.getOverKeptConnection());
    }
    report.add({"context: GET, fresh handle", "GET, kept connection", Unit::Seconds, Figure::Difference, {}},
               kept);
}

}  // namespace

void measureSearch(Report& report, int pairs)
{
    report.announce("searches");
    addSearches(report, pairs, "one search", {}, 0.001);
    if (!memoryFolder().empty())
        addSearches(report, pairs, "one search, its files in memory", memoryFolder(), {});
    addKeptConnection(report, pairs);
}

}  // namespace Benchmarks
