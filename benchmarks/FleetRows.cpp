// Many searches, and many services: what they need in memory and time.
#include <algorithm>
#include <list>
#include <stdexcept>

#include <sched.h>

#include "Bare.h"
#include "Rig.h"
#include "Rows.h"
#include "ScratchRoot.h"
#include "Together.h"

namespace Benchmarks {

namespace {

constexpr int SEARCHES = 1000;
constexpr int SERVICES = 50;
constexpr int ROUNDS = 5;
constexpr double FLAT = 1.05;  // what the allocator's own rhythm may add
constexpr double LIMIT_KIB = 3 * 1024;

/** Rigs whose files are in memory: what counts here is not the disk. */
std::list<Rig> rigs(const Market& market, int count)
{
    Rig::Options options;
    options.parentFolder = memoryFolder();
    options.variables = {{"APPLIANCE_DLOG", "/dev/null"}};
    std::list<Rig> all;
    for (int i = 0; i < count; ++i)
        all.emplace_back(market, options);
    return all;
}

/** The last one with its pictures, so that nothing is on its way at the end. */
void searchOften(Rig& rig)
{
    for (int i = 0; i < SEARCHES / 2; ++i)
        rig.search();
    rig.showCard();
}

std::vector<long> memoryOf(const std::list<Rig>& rigs)
{
    std::vector<long> all;
    for (const Rig& rig : rigs)
        all.push_back(privateMemory(rig.pid()));
    return all;
}

/** So often each, all at once. Seconds for one each. */
template <typename Each, typename Work>
double rounds(std::list<Each>& all, Work&& work)
{
    return together(all,
                    [&](Each& each) {
                        for (int i = 0; i < ROUNDS; ++i)
                            work(each);
                    }) /
           ROUNDS;
}

void search(Rig& rig)
{
    rig.search();
}

void showCard(Rig& rig)
{
    rig.showCard();
}

/** Removing it is the shell's work, and no more. */
std::string noFolder()
{
    return TestSupport::ScratchRoot::file("no-such-folder");
}

int usableCores()
{
    cpu_set_t cores;
    if (sched_getaffinity(0, sizeof cores, &cores) != 0)
        throw std::runtime_error("the number of cores is not known");
    return CPU_COUNT(&cores);
}

// Without products there are no pictures to be fetched beside it.
void searchInVain(Rig& rig)
{
    rig.search("no such thing");
}

void get(Bare& bare)
{
    bare.ask<double>("Get", Bare::searchUrl(), Bare::searchHeaders());
}

void wipeAndGet(Bare& bare)
{
    bare.ask<double>("WipeAndGet", Bare::searchUrl(), Bare::searchHeaders(), noFolder());
}

std::list<Bare> baresOf(std::list<Rig>& rigs)
{
    std::list<Bare> all;
    for (Rig& rig : rigs)
        all.emplace_back(rig.bus(), rig.variables());
    return all;
}

}  // namespace

void measureMemory(Report& report, int pairs)
{
    report.announce("memory, after 1,000 searches");
    const Market market;
    std::list<Rig> services = rigs(market, pairs);
    together(services, searchOften);
    const std::vector<long> half = memoryOf(services);
    together(services, searchOften);
    const std::vector<long> all = memoryOf(services);

    Pairs againstBare;
    Pairs flat;
    std::size_t i = 0;
    for (const Rig& rig : services) {
        const Bare bare(rig.bus(), rig.variables());
        againstBare.add(static_cast<double>(all[i]), static_cast<double>(privateMemory(bare.pid())));
        flat.add(static_cast<double>(all[i]), static_cast<double>(half[i]));
        ++i;
    }
    report.add(
        {"private memory after 1,000 searches", "the bare program", Unit::KiB, Figure::Difference, LIMIT_KIB},
        againstBare);
    report.add({"private memory after 1,000 searches", "after 500", Unit::KiB, Figure::Ratio, FLAT}, flat);
}

void measureFleet(Report& report, int pairs)
{
    report.announce("50 services at once");
    const Market market;
    std::list<Rig> one = rigs(market, 1);
    std::list<Rig> fleet = rigs(market, SERVICES);
    std::list<Bare> bareOne = baresOf(one);
    std::list<Bare> bareFleet = baresOf(fleet);

    const double share = std::max(1.0, static_cast<double>(SERVICES) / usableCores());
    Pairs searches;
    Pairs pictures;
    Pairs bareSearches;
    Pairs gets;
    for (int i = 0; i < pairs; ++i) {
        const double alone = rounds(one, searchInVain);
        searches.add(rounds(fleet, searchInVain), alone * share);
        const double bareAlone = rounds(bareOne, wipeAndGet);
        bareSearches.add(rounds(bareFleet, wipeAndGet), bareAlone * share);
        const double getAlone = rounds(bareOne, get);
        gets.add(rounds(bareFleet, get), getAlone * share);
    }
    const long memoryOfOne = memoryOf(one).front();
    Pairs memory;
    for (const long each : memoryOf(fleet))
        memory.add(static_cast<double>(each), static_cast<double>(memoryOfOne));

    for (int i = 0; i < pairs; ++i) {
        const double alone = rounds(one, search);
        pictures.add(rounds(fleet, search), alone * share);
        // What is still on its way would be in the way of the next pair.
        together(one, showCard);
        together(fleet, showCard);
    }

    const std::string theirs = "50 of one's, shared by the cores";
    report.add({"50 services, a search each that finds nothing", theirs, Unit::Seconds, Figure::Ratio, 1.1},
               searches);
    report.add(
        {"context: 50 services, a search each with pictures", theirs, Unit::Seconds, Figure::Ratio, {}},
        pictures);
    report.add({"context: 50 bare programs, rm -rf and GET", theirs, Unit::Seconds, Figure::Ratio, {}},
               bareSearches);
    report.add({"context: 50 bare programs, GET", theirs, Unit::Seconds, Figure::Ratio, {}}, gets);
    report.add({"private memory of one of 50 services", "of one alone", Unit::KiB, Figure::Ratio, FLAT},
               memory);
}

}  // namespace Benchmarks
