// Which lines of the platform log somebody wants to see.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Tool {

// Of what is given in several of its parts a line has to fit all, of the values of one part any. An empty
// part says nothing.
struct LogFilter {
    std::set<char> levels;           // of V D I W E F
    std::vector<std::string> tags;   // this and the next two are patterns, as fitsOneOf() takes them
    std::vector<std::string> files;  // of a service's source
    std::vector<std::string> functions;
    std::set<int> processes;

    bool isEmpty() const;

    // A line that has no part of that kind fits no filter of it; one of another form fits the empty filter
    // only. Only the line's first Appliance::LineHeadBytes count.
    bool passes(const std::string& line) const;
};

// The level's letter, for a letter or a name ("verbose" to "fatal") in any case; nothing for another text.
std::optional<char> levelFrom(const std::string& text);

// This level and all above it.
std::set<char> levelsFrom(char least);

// "verbose" to "fatal".
std::string nameOfLevel(char level);

}  // namespace Tool
