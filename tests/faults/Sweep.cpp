#include "Sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

namespace Faults {

namespace {

// Behind that many failures nobody reads on.
constexpr int FailuresToShow = 10;

std::uint32_t behind(const Fault& fault)
{
    switch (fault.mode) {
        case Mode::Once:
            return fault.call + 1;
        case Mode::TwoInARow:
            return fault.call + 2;
        default:
            return Plan::Never;
    }
}

int failures()
{
    const testing::TestResult* const result = testing::UnitTest::GetInstance()->current_test_info()->result();
    int count = 0;
    for (int i = 0; i < result->total_part_count(); ++i)
        count += result->GetTestPartResult(i).failed() ? 1 : 0;
    return count;
}

bool goesOn()
{
    return !testing::Test::HasFatalFailure() && failures() < FailuresToShow;
}

/** One run; false if the scenario passed untouched. */
bool disturb(FaultControl& faults, const Scenario& scenario, const Fault& fault,
             const std::function<void()>& arm)
{
    SCOPED_TRACE(testing::Message() << scenario.name << ": " << fault);
    scenario.prepare();
    faults.clear();
    arm();
    scenario.play();
    const bool isTouched = faults.hasFailed();
    faults.stopFailing();
    if (isTouched)
        scenario.check(fault);
    return isTouched && goesOn();
}

/** What the scenario calls when nothing fails. */
std::map<std::string, std::uint32_t> callsOf(FaultControl& faults, const Scenario& scenario)
{
    SCOPED_TRACE(scenario.name + ": undisturbed");
    scenario.prepare();
    faults.clear();
    scenario.play();
    const std::map<std::string, std::uint32_t> calls = faults.calls();
    EXPECT_FALSE(faults.hasFailed());
    EXPECT_FALSE(calls.empty());
    return calls;
}

bool isChosen(const Scenario& scenario, const std::string& function)
{
    const std::vector<std::string>& only = scenario.only;
    return only.empty() || std::find(only.begin(), only.end(), function) != only.end();
}

}  // namespace

std::string nameOf(Mode mode)
{
    switch (mode) {
        case Mode::Once:
            return "Once";
        case Mode::TwoInARow:
            return "TwoInARow";
        default:
            return "FromThenOn";
    }
}

void PrintTo(Mode mode, std::ostream* out)
{
    *out << nameOf(mode);
}

std::ostream& operator<<(std::ostream& stream, const Fault& fault)
{
    return stream << fault.function << ", call " << fault.call << ", " << nameOf(fault.mode);
}

void sweep(FaultControl& faults, const Scenario& scenario, Mode mode)
{
    const std::map<std::string, std::uint32_t> functions = callsOf(faults, scenario);
    std::uint32_t chosen = 0;
    std::uint32_t calls = 0;
    std::uint32_t runs = 0;
    for (const auto& [function, count] : functions) {
        if (!isChosen(scenario, function))
            continue;
        ++chosen;
        calls += count;
        std::uint32_t call = 1;
        const auto arm = [&, &name = function] {
            const Fault fault{name, call, mode};
            faults.fail(name, call, behind(fault));
        };
        while (goesOn() && disturb(faults, scenario, {function, call, mode}, arm))
            ++call;
        // What fails may lead to fewer calls, and a retry to more; never to none, or to no end.
        EXPECT_GT(call, 1U) << function;
        runs += call - 1;
        if (!goesOn())
            break;
    }
    std::cout << scenario.name << ", " << nameOf(mode) << ": " << chosen << " functions, " << faults.sites()
              << " call sites, " << calls << " calls when nothing fails, " << runs
              << " runs with a failure\n";
}

void sweepAll(FaultControl& faults, const Scenario& scenario)
{
    callsOf(faults, scenario);
    const std::uint32_t calls = faults.allCalls();
    std::uint32_t call = 1;
    const auto arm = [&] { faults.failAll(call); };
    while (goesOn() && disturb(faults, scenario, {"", call, Mode::FromThenOn}, arm))
        ++call;
    EXPECT_GT(call, 1U);
    std::cout << scenario.name << ", every call from one on: " << calls << " calls when nothing fails, "
              << call - 1 << " runs with failures\n";
}

}  // namespace Faults
