// The partner app's local storage: the bytes of a database, and the values that are read from it.
#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "DBControl.h"
#include "Demand.h"
#include "ScratchRoot.h"
#include "SiteValues.h"
#include "Surroundings.h"

using Carvoy::DBControl;

namespace {

const std::string& path()
{
    static const auto* const file = new std::string(TestSupport::ScratchRoot::file(
        "apps_rw/" CARVOY_PARTNER_APP_ID
        "/data/chromium-efl/data/Local Storage/https_" CARVOY_MERCHANT_BRIDGE_HOST "_0.localstorage"));
    return *file;
}

bool isUntouched(const uint8_t* data, size_t size)
{
    std::vector<uint8_t> bytes(size + 1);
    FILE* const file = fopen(path().c_str(), "r");
    DEMAND(file);
    bytes.resize(fread(bytes.data(), 1, bytes.size(), file));
    fclose(file);
    return bytes.size() == size && std::equal(bytes.begin(), bytes.end(), data);
}

// What a database of an earlier run may have left beside it.
void removeCompanions()
{
    for (const char* suffix : {"-journal", "-wal", "-shm"})
        std::filesystem::remove(path() + suffix);
}

// The library that reads the files is not built for the fuzzer to see into. These counters, which the fuzzer
// takes for covered code, tell it how far a read came.
__attribute__((section("__libfuzzer_extra_counters"))) uint8_t counters[4096];

template <typename... Numbers>
void noteTogether(Numbers... numbers)
{
    size_t sum = 0;
    ((sum = sum * 31 + static_cast<size_t>(numbers)), ...);
    counters[sum % sizeof counters] = 1;
}

int logarithm(int number)
{
    return number < 2 ? number : 1 + logarithm(number / 2);
}

// A value ends before its first zero byte, and two looks at the same file see the same.
void read(const std::string& key)
{
    const std::string value = DBControl::getTextValueFromTextKey(key);
    DEMAND(value.find('\0') == std::string::npos);
    DEMAND(DBControl::getTextValueFromTextKey(key) == value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    removeCompanions();
    Fuzz::writeFile(path(), data, size);

    // In double quotes it names the column, so that every row has it.
    read("key");
    const sqlite3_int64 used = sqlite3_memory_used();
    DBControl::getXAuthAccessToken();
    DBControl::getXAuthSessionToken();

    DEMAND(sqlite3_memory_used() == used);
    DEMAND(isUntouched(data, size));
    return 0;
}

extern "C" {

int __real_sqlite3_finalize(sqlite3_stmt*);
int __real_sqlite3_close(sqlite3*);

int __wrap_sqlite3_finalize(sqlite3_stmt* statement)
{
    sqlite3* const database = sqlite3_db_handle(statement);
    noteTogether(1, sqlite3_extended_errcode(database),
                 logarithm(sqlite3_stmt_status(statement, SQLITE_STMTSTATUS_VM_STEP, 0)),
                 logarithm(sqlite3_column_bytes(statement, 0)));
    return __real_sqlite3_finalize(statement);
}

int __wrap_sqlite3_close(sqlite3* database)
{
    int pages = 0;
    int highest = 0;
    sqlite3_db_status(database, SQLITE_DBSTATUS_CACHE_MISS, &pages, &highest, 0);
    const size_t words = std::hash<std::string>()(std::string(sqlite3_errmsg(database)).substr(0, 30));
    noteTogether(2, sqlite3_extended_errcode(database), pages);
    noteTogether(3, words % 1024);
    return __real_sqlite3_close(database);
}

}  // extern "C"
