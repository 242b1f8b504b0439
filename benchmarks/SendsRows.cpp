// Many sends in a row against the pace that is laid down for them.
#include <list>
#include <mutex>

#include "Rig.h"
#include "Rows.h"
#include "Together.h"

namespace Benchmarks {

namespace {

constexpr int SENDS = 200;
constexpr double PACE = 0.05;  // seconds
constexpr int AT_ONCE = 2;     // services that mostly wait

}  // namespace

void measureSends(Report& report, int pairs)
{
    report.announce("sends");
    const Market market;
    std::list<Rig> rigs;
    for (int i = 0; i < AT_ONCE; ++i)
        rigs.emplace_back(market);

    Pairs sends;
    while (sends.count() < static_cast<std::size_t>(pairs)) {
        std::mutex mutex;
        together(rigs, [&](Rig& rig) {
            const double seconds = secondsOf([&] { rig.showResults(SENDS); });
            const std::lock_guard lock(mutex);
            sends.add(seconds, SENDS * PACE);
        });
    }
    report.add({"200 queued sends", "200 x 50 ms", Unit::Seconds, Figure::Ratio, 1.02}, sends);
}

}  // namespace Benchmarks
