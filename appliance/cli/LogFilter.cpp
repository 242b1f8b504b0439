#include "LogFilter.h"

#include <strings.h>

#include <algorithm>
#include <array>

#include "LogFollower.h"
#include "LogLine.h"
#include "Patterns.h"

namespace Tool {

namespace {

// The lowest first. Each has its initial as its letter.
constexpr std::array<const char*, 6> Levels = {"verbose", "debug", "info", "warning", "error", "fatal"};

char letterOf(const char* name)
{
    return static_cast<char>(name[0] - 'a' + 'A');
}

bool isNameOrLetter(const std::string& text, const char* name)
{
    const bool isLetter = text.size() == 1 && strncasecmp(text.c_str(), name, 1) == 0;
    return isLetter || strcasecmp(text.c_str(), name) == 0;
}

template <typename Value>
bool isAmong(const std::set<Value>& wanted, Value value)
{
    return wanted.empty() || wanted.count(value) > 0;
}

}  // namespace

bool LogFilter::isEmpty() const
{
    return levels.empty() && tags.empty() && files.empty() && functions.empty() && processes.empty();
}

bool LogFilter::passes(const std::string& line) const
{
    if (isEmpty()) {
        return true;
    }
    const auto parts = Appliance::parseLogLine(line.substr(0, Appliance::LineHeadBytes));
    if (!parts || !isAmong(levels, parts->priority) || !isAmong(processes, parts->pid) ||
        !fitsOneOf(tags, parts->tag)) {
        return false;
    }
    if (files.empty() && functions.empty()) {
        return true;
    }
    const auto place = Appliance::placeOf(*parts);
    return place && fitsOneOf(files, place->file) && fitsOneOf(functions, place->function);
}

std::optional<char> levelFrom(const std::string& text)
{
    const auto found = std::find_if(Levels.begin(), Levels.end(),
                                    [&text](const char* name) { return isNameOrLetter(text, name); });
    return found == Levels.end() ? std::nullopt : std::optional<char>(letterOf(*found));
}

std::set<char> levelsFrom(char least)
{
    std::set<char> levels;
    bool isReached = false;
    for (const char* name : Levels) {
        isReached = isReached || letterOf(name) == least;
        if (isReached) {
            levels.insert(letterOf(name));
        }
    }
    return levels;
}

std::string nameOfLevel(char level)
{
    const auto found = std::find_if(Levels.begin(), Levels.end(),
                                    [level](const char* name) { return letterOf(name) == level; });
    return found == Levels.end() ? "" : *found;
}

}  // namespace Tool
