// Makes the first call of a function fail, then the second, and so on, until the scenario passes untouched;
// and that with every function that the scenario calls.
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "FaultControl.h"
#include "FaultTable.h"

namespace Faults {

/** How long the failing lasts: for one call, for this one and the next, or for the rest of the scenario. */
enum class Mode { Once, TwoInARow, FromThenOn };

std::string nameOf(Mode mode);
void PrintTo(Mode mode, std::ostream* out);

/** What was made to fail. */
struct Fault {
    std::string function;
    std::uint32_t call;
    Mode mode;
};

std::ostream& operator<<(std::ostream& stream, const Fault& fault);

struct Scenario {
    std::string name;  // in the table

    /** Makes ready; nothing fails. */
    std::function<void()> prepare;

    /** Does what is disturbed, and returns when the service is at rest again. */
    std::function<void()> play;

    /** Nothing fails any more: expects what must hold after this, whatever it was. */
    std::function<void(const Fault& fault)> check;

    /** The functions that are made to fail; none: all that it calls. */
    std::vector<std::string> only{};
};

/** Runs the whole of it; failures are googletest's. Prints how much it was. */
void sweep(FaultControl& faults, const Scenario& scenario, Mode mode);

/** The same with every call of every function from the Nth on. `check` is told of no function. */
void sweepAll(FaultControl& faults, const Scenario& scenario);

}  // namespace Faults
