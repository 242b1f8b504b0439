// What services do while nobody asks for anything.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <list>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "Bare.h"
#include "Rig.h"
#include "Rows.h"
#include "Stopwatch.h"

namespace Benchmarks {

namespace {

constexpr double PACE = 0.05;  // seconds between two polls
constexpr std::chrono::seconds PERIOD(60);

/** What a program's threads have done since its start. */
struct Work {
    double seconds = 0;                   // on a core, all together
    std::map<std::string, long> wakeUps;  // by thread
};

/** What they have done in a while. */
struct Idleness {
    double seconds = 0;
    long polls = 0;    // of the thread that wakes up most
    long wakeUps = 0;  // of all others
};

std::string firstLine(const std::filesystem::path& file)
{
    std::ifstream stream(file);
    std::string line;
    if (!std::getline(stream, line))
        throw std::runtime_error(file.string() + " cannot be read");
    return line;
}

long wakeUpsOf(const std::filesystem::path& thread)
{
    const std::string name = "voluntary_ctxt_switches:";
    std::ifstream status(thread / "status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, name.size(), name) == 0)
            return std::stol(line.substr(name.size()));
    }
    throw std::runtime_error(thread.string() + " does not tell how often it woke up");
}

Work workOf(pid_t process)
{
    Work work;
    const auto tasks = std::filesystem::path("/proc") / std::to_string(process) / "task";
    for (const auto& thread : std::filesystem::directory_iterator(tasks)) {
        std::istringstream statistics(firstLine(thread.path() / "schedstat"));
        double nanoseconds = 0;
        statistics >> nanoseconds;
        work.seconds += nanoseconds / 1e9;
        work.wakeUps[thread.path().filename()] = wakeUpsOf(thread.path());
    }
    return work;
}

Idleness between(const Work& begin, const Work& end)
{
    Idleness idleness;
    idleness.seconds = end.seconds - begin.seconds;
    for (const auto& [thread, wakeUps] : end.wakeUps) {
        const auto before = begin.wakeUps.find(thread);
        const long more = wakeUps - (before == begin.wakeUps.end() ? 0 : before->second);
        idleness.wakeUps += std::min(idleness.polls, more);
        idleness.polls = std::max(idleness.polls, more);
    }
    return idleness;
}

std::vector<Work> workOf(const std::vector<pid_t>& processes)
{
    std::vector<Work> all;
    for (const pid_t process : processes)
        all.push_back(workOf(process));
    return all;
}

}  // namespace

void measureIdle(Report& report, int pairs)
{
    report.announce("idleness, for a minute");
    const Market market;
    std::list<Rig> rigs;
    std::list<Bare> bares;
    std::vector<pid_t> services;
    std::vector<pid_t> programs;
    for (int i = 0; i < pairs; ++i) {
        services.push_back(rigs.emplace_back(market).pid());
        programs.push_back(bares.emplace_back(rigs.back().bus(), rigs.back().variables()).pid());
    }

    const std::vector<Work> before = workOf(services);
    const std::vector<Work> bareBefore = workOf(programs);
    const std::int64_t begin = now();
    std::this_thread::sleep_for(PERIOD);
    const double seconds = secondsBetween(begin, now());
    const std::vector<Work> after = workOf(services);
    const std::vector<Work> bareAfter = workOf(programs);

    Pairs polls;
    Pairs wakeUps;
    Pairs cores;
    for (int i = 0; i < pairs; ++i) {
        const Idleness ours = between(before[i], after[i]);
        const Idleness theirs = between(bareBefore[i], bareAfter[i]);
        polls.add(static_cast<double>(ours.polls), seconds / PACE);
        wakeUps.add(static_cast<double>(ours.wakeUps), static_cast<double>(theirs.wakeUps + theirs.polls));
        cores.add(100 * ours.seconds / seconds, 100 * theirs.seconds / seconds);
    }
    report.add({"idle for 60 s: polls", "one each 50 ms", Unit::Count, Figure::Ratio, 1.0}, polls);
    report.add({"idle for 60 s: other wake-ups", "the bare program", Unit::Count, Figure::Difference, 0.0},
               wakeUps);
    report.add({"idle for 60 s: share of a core", "the bare program", Unit::Percent, Figure::Difference, 0.1},
               cores);
}

}  // namespace Benchmarks
