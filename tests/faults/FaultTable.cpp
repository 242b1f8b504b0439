#include "FaultTable.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Faults {

namespace {

constexpr std::size_t Fields = 5;  // scenario, function, calls, record, errors
constexpr const char* Separator = " | ";

// The last field may hold commas.
std::vector<std::string> fieldsOf(const std::string& line)
{
    std::istringstream stream(line);
    std::vector<std::string> fields(Fields);
    for (std::size_t i = 0; i + 1 < Fields; ++i)
        std::getline(stream, fields[i], ',');
    std::getline(stream, fields[Fields - 1]);
    return fields;
}

std::vector<std::string> errorsOf(std::string text)
{
    std::vector<std::string> errors;
    if (text == "-")
        return errors;
    for (std::size_t end = text.find(Separator); end != std::string::npos; end = text.find(Separator)) {
        errors.push_back(text.substr(0, end));
        text.erase(0, end + std::string(Separator).size());
    }
    errors.push_back(text);
    return errors;
}

}  // namespace

FaultTable::FaultTable(const std::string& scenario)
{
    std::ifstream file(TEST_DATA "/faults.csv");
    if (!file)
        throw std::runtime_error("the table of faults cannot be read");
    for (std::string line; std::getline(file, line);) {
        const std::vector<std::string> fields = fieldsOf(line);
        if (fields[0] == scenario)
            rows_.push_back(rowOf(fields));
    }
}

const Outcome* FaultTable::find(const std::string& function, std::uint32_t call) const
{
    const std::vector<const Outcome*> found = between(function, call, call);
    return found.empty() ? nullptr : found.front();
}

std::vector<const Outcome*> FaultTable::between(const std::string& function, std::uint32_t first,
                                                std::uint32_t last) const
{
    std::vector<const Outcome*> found;
    for (const Row& row : rows_) {
        if (row.function == function && last >= row.first && first <= row.last)
            found.push_back(&row.outcome);
    }
    return found;
}

std::vector<const Outcome*> FaultTable::all() const
{
    std::vector<const Outcome*> outcomes;
    for (const Row& row : rows_)
        outcomes.push_back(&row.outcome);
    return outcomes;
}

// Calls are "3" or "3-5".
FaultTable::Row FaultTable::rowOf(const std::vector<std::string>& fields)
{
    const std::string& calls = fields[2];
    const std::size_t dash = calls.find('-');
    const auto first = static_cast<std::uint32_t>(std::stoul(calls));
    const auto last =
        dash == std::string::npos ? first : static_cast<std::uint32_t>(std::stoul(calls.substr(dash + 1)));
    return {fields[1], first, last, {fields[3], errorsOf(fields[4])}};
}

}  // namespace Faults
