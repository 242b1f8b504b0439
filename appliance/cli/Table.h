// A table of text with columns as wide as their content.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Terminal.h"

struct libscols_table;

namespace Tool {

// One thread at a time. Throws std::bad_alloc only.
class Table {
  public:
    enum class Align { Left, Right };

    explicit Table(Style style);
    ~Table();
    Table(Table&&) = default;

    // All columns before the first row. A column that may shrink is cut where the terminal is too narrow.
    void addColumn(const std::string& heading, Align align = Align::Left, bool mayShrink = false);
    // One text for each column.
    void addRow(const std::vector<std::string>& cells);

    // Heading and rows, each line ending in a newline and without blanks at its end.
    std::string text() const;

  private:
    struct Unref {
        void operator()(libscols_table* table) const;
    };

    Style style_;
    std::unique_ptr<libscols_table, Unref> table_;
};

}  // namespace Tool
