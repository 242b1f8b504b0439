// What is to come of a call that fails: the table in tests/data/faults.csv.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Faults {

/** What one failed call leads to. */
struct Outcome {
    std::string record;               // what becomes of the status record, by a name of the table's
    std::vector<std::string> errors;  // the errors in the log, in their order
};

/** The rows of one scenario: which calls of a function, counted from 1, lead to what. */
class FaultTable {
  public:
    /** Throws std::runtime_error where the table cannot be read. */
    explicit FaultTable(const std::string& scenario);

    /** Null where the table has no row for the call. */
    const Outcome* find(const std::string& function, std::uint32_t call) const;

    /** What any call of the function from `first` to `last` leads to. */
    std::vector<const Outcome*> between(const std::string& function, std::uint32_t first,
                                        std::uint32_t last) const;

    /** What any call leads to. */
    std::vector<const Outcome*> all() const;

  private:
    struct Row {
        std::string function;
        std::uint32_t first;
        std::uint32_t last;
        Outcome outcome;
    };
    static Row rowOf(const std::vector<std::string>& fields);

    std::vector<Row> rows_;
};

}  // namespace Faults
