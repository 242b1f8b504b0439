#include "data_store_schema.h"

#include <algorithm>

namespace HostPlatform {

namespace {

const std::vector<StoreSchema>& schemas()
{
    // Never destroyed: managers point into it.
    static const auto* const known = new std::vector<StoreSchema>{
        {"Commerce", "id", {"isLoggedIn", "isLinked", "totalCount", "productCountInCart", "currentViewType"}},
    };
    return *known;
}

std::string joined(const std::vector<std::string>& columns, const std::string& suffix)
{
    std::string text;
    for (const std::string& column : columns)
        text += (text.empty() ? "" : ", ") + column + suffix;
    return text;
}

}  // namespace

bool StoreSchema::hasColumn(std::string_view column) const
{
    return column == primaryKey || std::find(columns.begin(), columns.end(), column) != columns.end();
}

const StoreSchema* findStoreSchema(std::string_view name)
{
    for (const StoreSchema& schema : schemas())
        if (schema.name == name)
            return &schema;
    return nullptr;
}

std::string createTableSql(const StoreSchema& schema)
{
    return "CREATE TABLE IF NOT EXISTS " + schema.name + " (" + schema.primaryKey + " INTEGER PRIMARY KEY, " +
           joined(schema.columns, " INTEGER") + ")";
}

std::string insertSql(const StoreSchema& schema, const std::vector<std::string>& columns)
{
    const std::string places = joined(std::vector<std::string>(columns.size(), "?"), "");
    return "INSERT INTO " + schema.name + " (" + joined(columns, "") + ") VALUES (" + places + ")";
}

std::string updateSql(const StoreSchema& schema, const std::vector<std::string>& columns)
{
    return "UPDATE " + schema.name + " SET " + joined(columns, " = ?") + " WHERE " + schema.primaryKey +
           " = ?";
}

}  // namespace HostPlatform
