// The one table that all benchmarks end in.
#pragma once

#include <string>
#include <vector>

#include "Measured.h"

namespace Benchmarks {

/** Collects the rows in their order. One thread. */
class Report {
  public:
    /** Tells on standard error what is being measured now. */
    void announce(const std::string& what) const;

    /** Without pairs the row is left out, and standard error says so. */
    void add(const Row& row, const Pairs& pairs);

    /** Heading and rows, with blanks between the columns. */
    std::string table() const;

    /** The same as a Markdown table: for the documents. */
    std::string markdown() const;

  private:
    std::vector<std::vector<std::string>> mRows;
};

}  // namespace Benchmarks
