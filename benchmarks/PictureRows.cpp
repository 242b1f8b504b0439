// A picture of the running service against a bare download of it that is made durable in the same way.
#include "Bare.h"
#include "ObservedMoments.h"
#include "Rig.h"
#include "Rows.h"
#include "Stopwatch.h"

namespace Benchmarks {

void measurePictures(Report& report, int pairs)
{
    report.announce("pictures");
    const Market market;
    ObservedMoments moments;
    Rig rig(market, {moments.variables(), {}, {}});
    Bare bare(rig.bus(), rig.variables());
    const std::vector<std::string> urls = bare.pictureUrls();
    Pairs pictures;
    while (pictures.count() < static_cast<std::size_t>(5 * pairs)) {
        moments.forget();
        rig.search();
        const std::vector<std::int64_t> ends = moments.waitFor(Moment::Synced, urls.size());
        const auto theirs = bare.ask<std::vector<double>>("Download", urls, rig.root() + "/bare");
        // From one picture being on disk to the next: request, download, flush, record, queue.
        for (std::size_t i = 0; i < theirs.size() && i + 1 < ends.size(); ++i)
            pictures.add(secondsBetween(ends[i], ends[i + 1]), theirs[i]);
    }
    report.add({"a picture", "bare libcurl, fflush, fsync, sync", Unit::Seconds, Figure::Ratio, 1.05},
               pictures);
}

}  // namespace Benchmarks
