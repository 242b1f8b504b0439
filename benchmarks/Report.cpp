#include "Report.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <memory>
#include <new>
#include <sstream>

#include <libsmartcols.h>

namespace Benchmarks {

namespace {

constexpr std::size_t ENOUGH_PAIRS = 20;

const std::vector<std::string> HEADINGS = {"what",        "against", "ours",  "theirs", "figure",
                                           "middle half", "goal",    "pairs", ""};

std::string number(double value, int digits, const char* unit)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value << unit;
    return text.str();
}

std::string seconds(double value)
{
    const double size = std::abs(value);
    if (size < 1e-6)
        return number(value * 1e9, 0, " ns");
    if (size < 1e-3)
        return number(value * 1e6, 1, " us");
    return size < 1 ? number(value * 1e3, 2, " ms") : number(value, 2, " s");
}

std::string inUnit(Unit unit, double value)
{
    switch (unit) {
        case Unit::Seconds:
            return seconds(value);
        case Unit::SecondsPerByte:
            return number(value * 1e9, 2, " ns/B");
        case Unit::KiB:
            return number(value, 0, " KiB");
        case Unit::Percent:
            return number(value, 3, " %");
        case Unit::Count:
            break;
    }
    return number(value, 1, "");
}

std::string asFigure(const Row& row, double value)
{
    return row.figure == Figure::Ratio ? number(value, 3, "") : inUnit(row.unit, value);
}

struct Unref {
    void operator()(libscols_table* table) const { scols_unref_table(table); }
};

void addLine(libscols_table* table, const std::vector<std::string>& cells)
{
    libscols_line* line = scols_table_new_line(table, nullptr);
    if (!line)
        throw std::bad_alloc();
    for (std::size_t i = 0; i < cells.size(); ++i)
        scols_line_set_data(line, i, cells[i].c_str());
}

std::string markdownLine(const std::vector<std::string>& cells)
{
    std::string line = "|";
    for (const std::string& cell : cells)
        line += " " + cell + " |";
    return line + "\n";
}

}  // namespace

void Report::announce(const std::string& what) const
{
    fprintf(stderr, "measuring %s\n", what.c_str());
}

void Report::add(const Row& row, const Pairs& pairs)
{
    if (pairs.count() == 0) {
        fprintf(stderr, "%s: nothing was measured\n", row.what.c_str());
        return;
    }
    const Spread spread = pairs.figure(row.figure);
    const std::string range = asFigure(row, spread.low) + " .. " + asFigure(row, spread.high);
    const std::string goal = row.goal ? asFigure(row, *row.goal) : "";
    const bool isEnough = row.goal && pairs.count() >= ENOUGH_PAIRS;
    const std::string verdict = !isEnough ? "" : spread.median <= *row.goal ? "within" : "over";
    mRows.push_back({row.what, row.against, inUnit(row.unit, pairs.ours()), inUnit(row.unit, pairs.theirs()),
                     asFigure(row, spread.median), range, goal, std::to_string(pairs.count()), verdict});
}

std::string Report::table() const
{
    const std::unique_ptr<libscols_table, Unref> table(scols_new_table());
    if (!table)
        throw std::bad_alloc();
    scols_table_set_column_separator(table.get(), "  ");
    scols_table_set_termforce(table.get(), SCOLS_TERMFORCE_NEVER);
    for (std::size_t i = 0; i < HEADINGS.size(); ++i) {
        const bool isText = i < 2 || i + 1 == HEADINGS.size();
        scols_table_new_column(table.get(), HEADINGS[i].c_str(), 1, isText ? 0 : SCOLS_FL_RIGHT);
    }
    for (const std::vector<std::string>& row : mRows)
        addLine(table.get(), row);

    char* text = nullptr;
    if (scols_print_table_to_string(table.get(), &text) != 0 || !text)
        throw std::bad_alloc();
    const std::string result(text);
    free(text);
    return result + "\n";
}

std::string Report::markdown() const
{
    std::string text =
        markdownLine(HEADINGS) + markdownLine(std::vector<std::string>(HEADINGS.size(), "---"));
    for (const std::vector<std::string>& row : mRows)
        text += markdownLine(row);
    return text;
}

}  // namespace Benchmarks
