#include "StatusView.h"

#include <vector>

#include "Table.h"

namespace Tool {

namespace {

using Appliance::SearchFlag;
using Appliance::StatusColumns;
using Appliance::StatusRecord;

std::string valueText(std::optional<int> value)
{
    return value ? std::to_string(*value) : "–";
}

nlohmann::json valueJson(std::optional<int> value)
{
    return value ? nlohmann::json(*value) : nlohmann::json(nullptr);
}

}  // namespace

std::string statusText(const std::optional<StatusRecord>& record, std::optional<int> flag, const Style& style)
{
    Table table(style);
    std::vector<std::string> values;
    for (std::size_t i = 0; i < StatusColumns.size(); ++i) {
        table.addColumn(StatusColumns[i], Table::Align::Right);
        values.push_back(valueText(record ? (*record)[i] : std::nullopt));
    }
    table.addRow(values);
    return style.bold("Status record “Commerce”") + "\n\n" + table.text() + "\n" + SearchFlag + " = " +
           valueText(flag) + "\n";
}

nlohmann::json statusJson(const std::optional<StatusRecord>& record, std::optional<int> flag)
{
    nlohmann::json columns;
    for (std::size_t i = 0; record && i < StatusColumns.size(); ++i) {
        columns[StatusColumns[i]] = valueJson((*record)[i]);
    }
    return {{"Commerce", columns}, {SearchFlag, valueJson(flag)}};
}

}  // namespace Tool
