#include "Table.h"

#include <libsmartcols.h>

#include <cstdlib>
#include <new>
#include <sstream>

namespace Tool {

void Table::Unref::operator()(libscols_table* table) const
{
    scols_unref_table(table);
}

Table::Table(Style style) : style_(style), table_(scols_new_table())
{
    if (!table_) {
        throw std::bad_alloc();
    }
    scols_table_set_column_separator(table_.get(), "  ");
    scols_table_enable_colors(table_.get(), style.colour ? 1 : 0);
    if (style.width > 0) {
        scols_table_set_termforce(table_.get(), SCOLS_TERMFORCE_ALWAYS);
        scols_table_set_termwidth(table_.get(), static_cast<std::size_t>(style.width));
    } else {
        scols_table_set_termforce(table_.get(), SCOLS_TERMFORCE_NEVER);
    }
}

Table::~Table() = default;

void Table::addColumn(const std::string& heading, Align align, bool mayShrink)
{
    constexpr double asWideAsContent = 1;
    const int flags = (align == Align::Right ? SCOLS_FL_RIGHT : 0) | (mayShrink ? SCOLS_FL_TRUNC : 0);
    libscols_column* column =
        scols_table_new_column(table_.get(), heading.c_str(), mayShrink ? 0.1 : asWideAsContent, flags);
    if (column == nullptr) {
        throw std::bad_alloc();
    }
    if (style_.colour) {
        scols_cell_set_color(scols_column_get_header(column), "\x1B[1m");
    }
}

void Table::addRow(const std::vector<std::string>& cells)
{
    libscols_line* line = scols_table_new_line(table_.get(), nullptr);
    if (line == nullptr) {
        throw std::bad_alloc();
    }
    for (std::size_t i = 0; i < cells.size(); ++i) {
        scols_line_set_data(line, i, cells[i].c_str());
    }
}

std::string Table::text() const
{
    char* data = nullptr;
    if (scols_print_table_to_string(table_.get(), &data) != 0 || data == nullptr) {
        throw std::bad_alloc();
    }
    std::istringstream lines(data);
    std::free(data);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

}  // namespace Tool
