#include "Calls.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "CallNotes.h"
#include "Patience.h"

namespace TestSupport {

namespace {

struct Fault {
    std::size_t callsBefore;
    int code;
    bool always;
};

struct Notes {
    std::vector<Call> calls;
    std::vector<LogEntry> log;
    std::vector<Launch> launches;
    std::vector<Reply> replies;
    std::multimap<std::string, Fault> faults;
    std::map<std::string, std::function<void()>> steps;
    std::optional<int> listLength;
    bool sendsForReal = false;
};

struct Shared {
    std::mutex mutex;
    std::condition_variable changed;
    Notes notes;
};

Shared& shared()
{
    // Never destroyed: the sender's worker makes calls until the last static object is gone.
    static auto* const instance = new Shared;
    return *instance;
}

template <typename Read>
auto locked(Read read)
{
    const std::lock_guard<std::mutex> lock(shared().mutex);
    return read(shared().notes);
}

template <typename Change>
void change(Change make)
{
    locked([&](Notes& notes) {
        make(notes);
        return 0;
    });
    shared().changed.notify_all();
}

template <typename Condition>
bool waitUntil(Condition condition)
{
    std::unique_lock<std::mutex> lock(shared().mutex);
    return shared().changed.wait_for(lock, Patience, [&] { return condition(shared().notes); });
}

std::size_t countOf(const Notes& notes, const std::string& name)
{
    return static_cast<std::size_t>(std::count_if(notes.calls.begin(), notes.calls.end(),
                                                  [&](const Call& call) { return call.name == name; }));
}

// Counts the call against the function's faults; the code of the first that strikes.
std::optional<int> strike(Notes& notes, const std::string& name)
{
    std::optional<int> code;
    const auto [first, last] = notes.faults.equal_range(name);
    for (auto it = first; it != last;) {
        const bool strikes = it->second.callsBefore == 0;
        if (strikes && !code)
            code = it->second.code;
        if (!strikes)
            --it->second.callsBefore;
        it = strikes && !it->second.always ? notes.faults.erase(it) : std::next(it);
    }
    return code;
}

thread_local int depthInPlatform = 0;

}  // namespace

void Launch::answer(app_control_result_e result) const
{
    app_control_h request = nullptr;
    app_control_h reply = nullptr;
    {
        const CallNotes::PlatformsOwn own;
        app_control_create(&request);
        app_control_create(&reply);
    }
    callback(request, reply, result, userData);
    const CallNotes::PlatformsOwn own;
    app_control_destroy(request);
    app_control_destroy(reply);
}

void Calls::reset()
{
    change([](Notes& notes) { notes = Notes{}; });
}

std::vector<Call> Calls::all()
{
    return locked([](const Notes& notes) { return notes.calls; });
}

std::vector<Call> Calls::of(const std::string& name)
{
    std::vector<Call> calls = all();
    calls.erase(
        std::remove_if(calls.begin(), calls.end(), [&](const Call& call) { return call.name != name; }),
        calls.end());
    return calls;
}

std::size_t Calls::count(const std::string& name)
{
    return locked([&](const Notes& notes) { return countOf(notes, name); });
}

std::vector<std::string> Calls::order(std::initializer_list<const char*> names)
{
    std::vector<std::string> found;
    for (const Call& call : all())
        if (std::find(names.begin(), names.end(), call.name) != names.end())
            found.push_back(call.name);
    return found;
}

bool Calls::waitFor(const std::string& name, std::size_t count)
{
    return waitUntil([&](const Notes& notes) { return countOf(notes, name) >= count; });
}

void Calls::fail(const std::string& name, int code, std::size_t nth)
{
    change([&](Notes& notes) { notes.faults.insert({name, {nth - 1, code, false}}); });
}

void Calls::failAlways(const std::string& name, int code)
{
    change([&](Notes& notes) { notes.faults.insert({name, {0, code, true}}); });
}

void Calls::before(const std::string& name, std::function<void()> step)
{
    change([&](Notes& notes) { notes.steps[name] = std::move(step); });
}

void Calls::cutLists(int length)
{
    change([&](Notes& notes) { notes.listLength = length; });
}

std::vector<LogEntry> Calls::log()
{
    return locked([](const Notes& notes) { return notes.log; });
}

void Calls::sendForReal()
{
    change([](Notes& notes) { notes.sendsForReal = true; });
}

std::vector<Launch> Calls::launches()
{
    return locked([](const Notes& notes) { return notes.launches; });
}

std::vector<Reply> Calls::replies()
{
    return locked([](const Notes& notes) { return notes.replies; });
}

bool Calls::waitForLaunches(std::size_t count)
{
    return waitUntil([&](const Notes& notes) { return notes.launches.size() >= count; });
}

namespace CallNotes {

std::optional<int> note(const char* name, Texts arguments)
{
    if (PlatformsOwn::isActive())
        return std::nullopt;
    std::optional<int> code;
    std::function<void()> step;
    change([&](Notes& notes) {
        notes.calls.push_back({name, std::move(arguments), gettid()});
        code = strike(notes, name);
        const auto found = notes.steps.find(name);
        if (found != notes.steps.end())
            step = found->second;
    });
    if (step)
        step();
    return code;
}

int observePosix(const char* name, Texts arguments, const std::function<int()>& real)
{
    const std::optional<int> code = note(name, std::move(arguments));
    if (!code)
        return real();
    errno = *code;
    return -1;
}

bool mustFail(const char* name, Texts arguments)
{
    const std::optional<int> code = note(name, std::move(arguments));
    if (code)
        errno = *code;
    return code.has_value();
}

PlatformsOwn::PlatformsOwn()
{
    ++depthInPlatform;
}

PlatformsOwn::~PlatformsOwn()
{
    --depthInPlatform;
}

bool PlatformsOwn::isActive()
{
    return depthInPlatform > 0;
}

void keep(LogEntry entry)
{
    change([&](Notes& notes) { notes.log.push_back(std::move(entry)); });
}

void keep(Launch launch)
{
    change([&](Notes& notes) { notes.launches.push_back(std::move(launch)); });
}

void keep(Reply reply)
{
    change([&](Notes& notes) { notes.replies.push_back(std::move(reply)); });
}

bool sendsForReal()
{
    return locked([](const Notes& notes) { return notes.sendsForReal; });
}

std::optional<int> listLength()
{
    return locked([](const Notes& notes) { return notes.listLength; });
}

std::string text(const char* bytes)
{
    return bytes ? bytes : "";
}

std::string text(const void* pointer)
{
    return std::to_string(reinterpret_cast<std::uintptr_t>(pointer));
}

}  // namespace CallNotes

}  // namespace TestSupport
