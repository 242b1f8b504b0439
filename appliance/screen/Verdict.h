// What came of a search, which no message tells: the service says it in its log and in the status record.
#pragma once

#include <array>
#include <map>
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

// Follows what the services log of their requests. Each of their processes takes one request after the other
// on its main thread: what it says of errors while it searches belongs to the lists that it sends next. Used
// by one thread at a time.
class SearchWitness {
  public:
    static constexpr std::size_t ReasonsKept = 10;
    static constexpr std::size_t ProcessesKept = 16;

    // The next line of the platform log.
    void note(const Appliance::LogLine& line);

    // On the lists that were shown last, once the lines from before they were sent are noted.
    Verdict verdictOn(const Ui::CardContent& card,
                      const std::optional<Appliance::StatusRecord>& record) const;

  private:
    using Errors = std::vector<std::string>;

    struct Process {
        Errors errors;            // of the request at hand
        bool sendsLists = false;  // the request at hand asked for them
        Errors lastSearch;        // of the last request that did not
    };

    Process& processOf(int pid);
    void beginRequest(Process& process) const;

    std::map<int, Process> processes_;
    std::array<Errors, 2> answered_;  // of the search whose lists each source's service sent last
};

const char* nameOf(Outcome outcome);

}  // namespace Screen
