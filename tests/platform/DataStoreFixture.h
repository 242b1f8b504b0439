// The data store, its records, and what another program sees of them.
#pragma once

#include <gtest/gtest.h>
#include <nuvex-da-db.h>
#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "ScratchRoot.h"

namespace StoreTest {

inline std::string storeFile()
{
    return TestSupport::ScratchRoot::file("data-store.sqlite");
}

// Another program's view of the file.
class Reader {
  public:
    explicit Reader(int flags = SQLITE_OPEN_READONLY)
    {
        EXPECT_EQ(sqlite3_open_v2(storeFile().c_str(), &database, flags, nullptr), SQLITE_OK);
        sqlite3_busy_timeout(database, 3000);
    }
    ~Reader() { sqlite3_close(database); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    // Rows end in ';', their values are separated by ','.
    std::string query(const std::string& sql)
    {
        std::string rows;
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), &appendRow, &rows, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database);
        return rows;
    }

  private:
    static int appendRow(void* rows, int count, char** values, char**)
    {
        auto& text = *static_cast<std::string*>(rows);
        for (int i = 0; i < count; ++i)
            text += (i == 0 ? "" : ",") + std::string(values[i] == nullptr ? "null" : values[i]);
        text += ";";
        return 0;
    }

    sqlite3* database = nullptr;
};

inline std::string storedRecords()
{
    return Reader().query(
        "SELECT id, isLoggedIn, isLinked, totalCount, productCountInCart, currentViewType FROM Commerce");
}

using Values = std::vector<std::pair<const char*, int>>;

// A bundle with these values, destroyed with the object.
class Bundle {
  public:
    explicit Bundle(const Values& values)
    {
        EXPECT_EQ(ndd_bundle_create(&handle), NDD_ERROR_NONE);
        for (const auto& [column, value] : values)
            EXPECT_EQ(ndd_bundle_add_int(handle, column, value), NDD_ERROR_NONE);
    }
    ~Bundle() { EXPECT_EQ(ndd_bundle_destroy(handle), NDD_ERROR_NONE); }
    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;

    ndd_bundle_h handle = nullptr;
};

class Manager {
  public:
    Manager() { EXPECT_EQ(ndd_manager_create("Commerce", &handle), NDD_ERROR_NONE); }
    ~Manager() { EXPECT_EQ(ndd_manager_destroy(handle), NDD_ERROR_NONE); }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    int insert(const Values& values) const { return ndd_manager_insert(handle, Bundle(values).handle); }
    int update(const Values& values) const { return ndd_manager_update(handle, Bundle(values).handle); }

    ndd_manager_h handle = nullptr;
};

class DataStore : public testing::Test {
  protected:
    DataStore() { std::filesystem::remove_all(storeFile()); }
};

}  // namespace StoreTest
