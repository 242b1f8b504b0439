#include "nuvex-da-db.h"

#include <sqlite3.h>

#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "Text.h"
#include "appliance_root.h"
#include "data_store_schema.h"

namespace {

using HostPlatform::StoreSchema;

constexpr int kBusyTimeoutMs = 3000;

struct DatabaseCloser {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using Database = std::unique_ptr<sqlite3, DatabaseCloser>;

struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

int errorOf(int sqliteCode)
{
    if (sqliteCode == SQLITE_CONSTRAINT_PRIMARYKEY)
        return NDD_ERROR_ALREADY_EXISTS;
    switch (sqliteCode & 0xFF) {
        case SQLITE_OK:
        case SQLITE_DONE:
            return NDD_ERROR_NONE;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return NDD_ERROR_BUSY;
        case SQLITE_NOMEM:
            return NDD_ERROR_OUT_OF_MEMORY;
        default:
            return NDD_ERROR_IO_ERROR;
    }
}

template <typename Call>
int withoutExceptions(const Call& call)
try {
    return call();
} catch (const std::bad_alloc&) {
    return NDD_ERROR_OUT_OF_MEMORY;
} catch (const std::exception&) {
    return NDD_ERROR_IO_ERROR;
}

}  // namespace

struct ndd_manager_s {
    Database database;
    const StoreSchema* schema;
};

struct ndd_bundle_s {
    std::map<std::string, int> values;  // by column name
};

namespace {

int openDatabase(Database& database)
{
    const std::string& root = HostPlatform::applianceRoot();
    sqlite3* opened = nullptr;
    const int code =
        sqlite3_open_v2((root + "/data-store.sqlite").c_str(), &opened,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    database.reset(opened);
    if (code != SQLITE_OK)
        return errorOf(code);
    sqlite3_extended_result_codes(opened, 1);
    return errorOf(sqlite3_busy_timeout(opened, kBusyTimeoutMs));
}

// A table is made once and waits for the disk. A record is replaced with each search, which waits for nobody:
// what is written outlives the process, and the kernel brings it to the disk in its own time.
constexpr char kNoWaitForDisk[] = "PRAGMA synchronous = OFF";

int execute(sqlite3* database, const char* sql)
{
    return errorOf(sqlite3_exec(database, sql, nullptr, nullptr, nullptr));
}

int createManager(const char* storeName, ndd_manager_h* manager)
{
    if (storeName == nullptr || *storeName == '\0' || manager == nullptr)
        return NDD_ERROR_INVALID_PARAMETER;
    const StoreSchema* schema = HostPlatform::findStoreSchema(storeName);
    if (schema == nullptr)
        return NDD_ERROR_NO_SUCH_STORE;
    auto made = std::make_unique<ndd_manager_s>();
    made->schema = schema;
    int error = openDatabase(made->database);
    if (error != NDD_ERROR_NONE)
        return error;
    error = execute(made->database.get(), HostPlatform::createTableSql(*schema).c_str());
    if (error == NDD_ERROR_NONE)
        error = execute(made->database.get(), kNoWaitForDisk);
    if (error == NDD_ERROR_NONE)
        *manager = made.release();
    return error;
}

// What is wrong with these arguments, NDD_ERROR_NONE for nothing.
int checkRecord(const ndd_manager_s* manager, const ndd_bundle_s* bundle)
{
    if (manager == nullptr || bundle == nullptr || bundle->values.count(manager->schema->primaryKey) == 0)
        return NDD_ERROR_INVALID_PARAMETER;
    for (const auto& value : bundle->values)
        if (!manager->schema->hasColumn(value.first))
            return NDD_ERROR_NO_SUCH_COLUMN;
    return NDD_ERROR_NONE;
}

std::vector<std::string> columnsOf(const ndd_bundle_s& bundle)
{
    std::vector<std::string> columns;
    for (const auto& value : bundle.values)
        columns.push_back(value.first);
    return columns;
}

std::vector<int> valuesOf(const ndd_bundle_s& bundle)
{
    std::vector<int> values;
    for (const auto& value : bundle.values)
        values.push_back(value.second);
    return values;
}

int run(sqlite3* database, const std::string& sql, const std::vector<int>& values)
{
    sqlite3_stmt* prepared = nullptr;
    int code = sqlite3_prepare_v2(database, sql.c_str(), -1, &prepared, nullptr);
    const Statement statement(prepared);
    int place = 0;
    for (const int value : values)
        if (code == SQLITE_OK)
            code = sqlite3_bind_int(prepared, ++place, value);
    return errorOf(code == SQLITE_OK ? sqlite3_step(prepared) : code);
}

int insertRecord(const ndd_manager_s& manager, const ndd_bundle_s& bundle)
{
    return run(manager.database.get(), HostPlatform::insertSql(*manager.schema, columnsOf(bundle)),
               valuesOf(bundle));
}

int updateRecord(const ndd_manager_s& manager, const ndd_bundle_s& bundle)
{
    // The primary key is set to what it is: so a bundle with nothing else still finds out if its record is
    // there.
    std::vector<int> values = valuesOf(bundle);
    values.push_back(bundle.values.at(manager.schema->primaryKey));
    const int error =
        run(manager.database.get(), HostPlatform::updateSql(*manager.schema, columnsOf(bundle)), values);
    if (error == NDD_ERROR_NONE && sqlite3_changes(manager.database.get()) == 0)
        return NDD_ERROR_NO_SUCH_RECORD;
    return error;
}

}  // namespace

int ndd_manager_create(const char* store_name, ndd_manager_h* manager)
{
    return withoutExceptions([&] { return createManager(store_name, manager); });
}

int ndd_manager_get_primary_key(ndd_manager_h manager, char** name)
{
    if (manager == nullptr || name == nullptr)
        return NDD_ERROR_INVALID_PARAMETER;
    return HostPlatform::handOut(manager->schema->primaryKey.c_str(), name);
}

int ndd_manager_insert(ndd_manager_h manager, ndd_bundle_h bundle)
{
    return withoutExceptions([&] {
        const int wrong = checkRecord(manager, bundle);
        return wrong != NDD_ERROR_NONE ? wrong : insertRecord(*manager, *bundle);
    });
}

int ndd_manager_update(ndd_manager_h manager, ndd_bundle_h bundle)
{
    return withoutExceptions([&] {
        const int wrong = checkRecord(manager, bundle);
        return wrong != NDD_ERROR_NONE ? wrong : updateRecord(*manager, *bundle);
    });
}

int ndd_manager_destroy(ndd_manager_h manager)
{
    if (manager == nullptr)
        return NDD_ERROR_INVALID_PARAMETER;
    delete manager;
    return NDD_ERROR_NONE;
}

int ndd_bundle_create(ndd_bundle_h* bundle)
{
    if (bundle == nullptr)
        return NDD_ERROR_INVALID_PARAMETER;
    return withoutExceptions([&] {
        *bundle = new ndd_bundle_s;
        return static_cast<int>(NDD_ERROR_NONE);
    });
}

int ndd_bundle_add_int(ndd_bundle_h bundle, const char* column, int value)
{
    if (bundle == nullptr || column == nullptr || *column == '\0')
        return NDD_ERROR_INVALID_PARAMETER;
    return withoutExceptions([&] {
        bundle->values[column] = value;
        return static_cast<int>(NDD_ERROR_NONE);
    });
}

int ndd_bundle_destroy(ndd_bundle_h bundle)
{
    if (bundle == nullptr)
        return NDD_ERROR_INVALID_PARAMETER;
    delete bundle;
    return NDD_ERROR_NONE;
}
