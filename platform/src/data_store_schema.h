// The stores that the data store knows. Every SQL identifier comes from here.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace HostPlatform {

// One table: an integer primary key and integer columns that are null until written.
struct StoreSchema {
    std::string name;
    std::string primaryKey;
    std::vector<std::string> columns;  // without the primary key

    bool hasColumn(std::string_view column) const;
};

// The schema of that name, valid for the life of the process; null when there is none.
const StoreSchema* findStoreSchema(std::string_view name);

// SQL texts; `columns` are the schema's own names, each standing for one '?' in the given order.
std::string createTableSql(const StoreSchema& schema);
std::string insertSql(const StoreSchema& schema, const std::vector<std::string>& columns);
// Its last '?' is the key of the record to change.
std::string updateSql(const StoreSchema& schema, const std::vector<std::string>& columns);

}  // namespace HostPlatform
