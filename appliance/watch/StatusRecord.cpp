#include "StatusRecord.h"

#include <sqlite3.h>
#include <vconf.h>

#include <memory>
#include <stdexcept>

namespace Appliance {

namespace {


using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

[[noreturn]] void fail(sqlite3* connection, const std::filesystem::path& file)
{
    throw std::runtime_error(file.string() + ": " + sqlite3_errmsg(connection));
}

Connection openReadOnly(const std::filesystem::path& file, std::chrono::milliseconds limit)
{
    sqlite3* raw = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
    Connection connection(raw, sqlite3_close);
    if (code != SQLITE_OK) {
        fail(raw, file);
    }
    sqlite3_busy_timeout(raw, static_cast<int>(limit.count()));
    return connection;
}

StatusRecord recordIn(sqlite3_stmt* row)
{
    StatusRecord record;
    for (std::size_t i = 0; i < record.size(); ++i) {
        const int column = static_cast<int>(i);
        if (sqlite3_column_type(row, column) != SQLITE_NULL) {
            record[i] = sqlite3_column_int(row, column);
        }
    }
    return record;
}

}  // namespace

std::optional<StatusRecord> readStatusRecord(const std::filesystem::path& dataStore,
                                             std::chrono::milliseconds limit)
{
    if (!std::filesystem::exists(dataStore)) {
        return std::nullopt;
    }
    const Connection connection = openReadOnly(dataStore, limit);
    sqlite3_stmt* raw = nullptr;
    const char query[] =
        "SELECT isLoggedIn, isLinked, totalCount, productCountInCart, currentViewType FROM Commerce WHERE id "
        "= 0";
    if (sqlite3_prepare_v2(connection.get(), query, -1, &raw, nullptr) != SQLITE_OK) {
        fail(connection.get(), dataStore);
    }
    const Statement statement(raw, sqlite3_finalize);
    switch (sqlite3_step(raw)) {
        case SQLITE_ROW:
            return recordIn(raw);
        case SQLITE_DONE:
            return std::nullopt;
        default:
            fail(connection.get(), dataStore);
    }
}

std::optional<int> readSearchFlag()
{
    int value = 0;
    return vconf_get_int(SearchFlag, &value) == VCONF_OK ? std::optional<int>(value) : std::nullopt;
}

}  // namespace Appliance
