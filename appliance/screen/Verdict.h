// What came of a search, which no message tells: the service says it in its log and in the status record.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Card.h"
#include "LogLine.h"
#include "StatusRecord.h"

namespace Screen {

enum class Outcome { None, Found, Nothing, Failed };

struct Verdict {
    Outcome outcome = Outcome::None;   // None: still searching, or never searched
    std::vector<std::string> reasons;  // of a failure, in the services' own words, at most ReasonsKept
};

// Follows one search after the other. Used by one thread at a time.
class SearchWitness {
  public:
    static constexpr std::size_t ReasonsKept = 10;

    // A search was asked for.
    void begin();

    // It did not reach its service.
    void noteNotSent(const std::string& reason);

    // A line of the platform log. What the services' main threads say of errors counts, since they search.
    // Whether it did.
    bool note(const Appliance::LogLine& line);

    Verdict verdictOn(const Ui::CardContent& card,
                      const std::optional<Appliance::StatusRecord>& record) const;

  private:
    std::string notSent_;
    std::vector<std::string> errors_;
};

const char* nameOf(Outcome outcome);

}  // namespace Screen
