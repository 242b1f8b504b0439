// The status record and the partner app's web storage: opened, used and closed within one call.
#include "DBControl.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <utility>
#include <vector>

#include <nuvex-da-db.h>
#include <sqlite3.h>

#include "Log.h"
#include "PlatformPath.h"
#include "SiteValues.h"

namespace Carvoy {

namespace {

// What is to be written: column names and their values.
using Columns = std::vector<std::pair<const std::string*, int>>;

int writeStatus(const Columns& columns);

}  // namespace

int DBControl::updateStatus(int isLoggedIn, int isLinked, int totalCount, int productCountInCart,
                            int currentViewType)
{
    Columns columns = {{&CarvoyNDDColumnIsLoggedIn, isLoggedIn},
                       {&CarvoyNDDColumnIsLinked, isLinked},
                       {&CarvoyNDDColumnTotalCount, totalCount},
                       {&CarvoyNDDColumnProductCountInCart, productCountInCart},
                       {&CarvoyNDDColumnCurrentViewType, currentViewType}};
    // A negative value says that the column is to stay as it is.
    auto isNegative = [](const auto& column) { return column.second < 0; };
    columns.erase(std::remove_if(columns.begin(), columns.end(), isNegative), columns.end());

    if (columns.empty()) {
        LOG_D("No need to be updated");
        return 0;
    }
    return writeStatus(columns);
}

namespace {

constexpr const char* STATUS_STORE = "Commerce";
constexpr int STATUS_RECORD = 0;  // primary key of the one record that the service writes

int fillRecord(ndd_bundle_h record, const char* primaryKey, const Columns& columns)
{
    int error = ndd_bundle_add_int(record, primaryKey, STATUS_RECORD);
    for (auto column = columns.begin(); error == 0 && column != columns.end(); ++column)
        error = ndd_bundle_add_int(record, column->first->c_str(), column->second);
    return error;
}

/** The first write ever makes the record, every later one changes it. */
int insertOrUpdate(ndd_manager_h manager, ndd_bundle_h record)
{
    if (ndd_manager_insert(manager, record) == 0)
        return 0;
    return ndd_manager_update(manager, record);
}

int writeStatus(const Columns& columns)
{
    ndd_manager_h manager = nullptr;
    char* primaryKey = nullptr;
    ndd_bundle_h record = nullptr;

    int error = ndd_manager_create(STATUS_STORE, &manager);
    if (error == 0)
        error = ndd_manager_get_primary_key(manager, &primaryKey);
    if (error == 0)
        error = ndd_bundle_create(&record);
    if (error == 0)
        error = fillRecord(record, primaryKey, columns);
    if (error == 0)
        error = insertOrUpdate(manager, record);

    free(primaryKey);
    if (record)
        ndd_bundle_destroy(record);
    if (manager)
        ndd_manager_destroy(manager);
    return error;
}

/** The web engine stores a text as a blob; what counts of it ends at its first zero byte. */
std::string firstColumn(sqlite3_stmt* row)
{
    auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, 0));
    return text ? text : "";
}

}  // namespace

// Named by the address whose scripts wrote it, as the web engine names all its local storage files. The
// service only ever reads it.
const std::string DBControl::CarvoyDBPath =
    Util::platformPath(TZ_USER_APP, CARVOY_PARTNER_APP_ID
                       "/data/chromium-efl/data/Local Storage/"
                       "https_" CARVOY_MERCHANT_BRIDGE_HOST "_0.localstorage");

// The key stands between double quotes, which SQLite reads as a text where they name no column. It is neither
// escaped nor bound: one that holds a double quote makes a statement that cannot be prepared.
std::string DBControl::getTextValueFromTextKey(std::string key)
{
    std::string value;
    sqlite3* database = nullptr;
    if (sqlite3_open_v2(CarvoyDBPath.c_str(), &database, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        LOG_E("Can't open database: %s", sqlite3_errmsg(database));
        LOG_E("Path: %s", CarvoyDBPath.c_str());
        return value;
    }
    sqlite3_progress_handler(database, CarvoyDBMaxSteps, giveUp, nullptr);
    sqlite3_busy_timeout(database, CarvoyDBTimeout);
    std::stringstream select;
    select << "SELECT " << CarvoyDBColumnValue << " FROM " << CarvoyDBTableName;
    select << " WHERE " << CarvoyDBColumnKey << "=\"" << key << "\"";
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database, select.str().c_str(), -1, &statement, nullptr) != SQLITE_OK) {
        LOG_E("Can't prepare stmt: %s", sqlite3_errmsg(database));
        sqlite3_close(database);
        return value;
    }
    LOG_D("Got results");

    if (sqlite3_step(statement) != SQLITE_DONE) {
        // A row, or a failed step: that one shows as a column without a blob.
        int count = sqlite3_column_count(statement);
        if (count == 1) {
            int type = sqlite3_column_type(statement, 0);
            if (type == SQLITE_BLOB)
                value = firstColumn(statement);
            else
                LOG_E("Invalid column type: %d", type);
        } else {
            // One column was asked for: whatever else the library says, there is nothing in it
            // that could be taken for the value.
            LOG_E("Invalid column count: %d", count);
        }
    } else {
        // The partner app has stored nothing under this key.
        LOG_E("Can't find value from key(%s)", key.c_str());
    }
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return value;
}

std::string DBControl::getXAuthAccessToken()
{
    return getTextValueFromTextKey(CarvoyDBKeyXAuthAccessToken);
}

std::string DBControl::getXAuthSessionToken()
{
    return getTextValueFromTextKey(CarvoyDBKeyXAuthSessionToken);
}

}  // namespace Carvoy
