// From the start of the program to its name on the bus. The clock begins before the fork, for both: what that
// takes (half a millisecond) draws the ratio to 1 a little.
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>

#include <signal.h>

#include "Rig.h"
#include "Rows.h"
#include "Stopwatch.h"

namespace Benchmarks {

namespace {

using TestSupport::ChildProcess;

/** Knows when a name gets an owner. Waits on the thread that asks. */
class NameWatch {
  public:
    explicit NameWatch(const std::string& name) : mConnection(sdbus::createSessionBusConnection())
    {
        const auto onChange = [this](sdbus::Message& message) {
            std::string changed;
            std::string before;
            std::string owner;
            message >> changed >> before >> owner;
            const std::lock_guard lock(mMutex);
            mOwnedSince = owner.empty() ? 0 : now();
            mChanged.notify_all();
        };
        mSlot = mConnection->addMatch(
            "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + name + "'",
            onChange);
        mConnection->enterEventLoopAsync();
    }
    ~NameWatch() { mConnection->leaveEventLoop(); }

    std::int64_t waitUntilOwned()
    {
        std::unique_lock lock(mMutex);
        if (!mChanged.wait_for(lock, TestSupport::Patience, [this] { return mOwnedSince != 0; }))
            throw std::runtime_error("a program did not take its name");
        return std::exchange(mOwnedSince, 0);
    }

  private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::int64_t mOwnedSince = 0;
    std::unique_ptr<sdbus::IConnection> mConnection;
    sdbus::Slot mSlot;
};

double startOf(const std::string& program, NameWatch& watch, const ChildProcess::Variables& variables)
{
    const std::int64_t asked = now();
    ChildProcess process({program}, variables);
    const std::int64_t owned = watch.waitUntilOwned();
    process.signal(SIGKILL);
    process.wait();
    return secondsBetween(asked, owned);
}

}  // namespace

void measureStart(Report& report, int pairs)
{
    report.announce("starts");
    const TestSupport::PrivateBus bus;
    NameWatch service(SERVICE_ID);
    NameWatch bare(BARE_ID);
    const ChildProcess::Variables quiet = {{"APPLIANCE_DLOG", "/dev/null"}};
    startOf(CARVOY_SERVICE, service, quiet);
    startOf(BARE_PROGRAM, bare, quiet);

    Pairs starts;
    for (int i = 0; i < 2 * pairs; ++i) {
        const double ours = startOf(CARVOY_SERVICE, service, quiet);
        starts.add(ours, startOf(BARE_PROGRAM, bare, quiet));
    }
    report.add({"start, until its name is on the bus", "the same libraries and a name", Unit::Seconds,
                Figure::Ratio, 1.15},
               starts);
}

}  // namespace Benchmarks
