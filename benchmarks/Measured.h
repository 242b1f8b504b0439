// What is measured against what, in pairs: ours and theirs in turns, so that whatever else the machine does
// falls on both.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Benchmarks {

enum class Unit { Seconds, SecondsPerByte, KiB, Percent, Count };
enum class Figure { Ratio, Difference };

/** One row of the table. */
struct Row {
    std::string what;
    std::string against;
    Unit unit;
    Figure figure;
    std::optional<double> goal;  // at most; a difference in the row's unit. None: printed as context
};

/** The middle of some values, and between what their middle half lies. */
struct Spread {
    double low;     // first quartile
    double median;  // of an even number: the mean of the two in the middle
    double high;    // third quartile
};

/** At least one value. */
Spread spreadOf(std::vector<double> values);

/** What was measured for one row. One thread. */
class Pairs {
  public:
    /** Both in the row's unit. */
    void add(double ours, double theirs);

    std::size_t count() const { return mOurs.size(); }
    double ours() const;    // median
    double theirs() const;  // median
    Spread figure(Figure figure) const;

  private:
    std::vector<double> mOurs;
    std::vector<double> mTheirs;
};

}  // namespace Benchmarks
