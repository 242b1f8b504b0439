// The assistant's data store: every code, what a reader of the file sees, and several writers at once.
#include <gtest/gtest.h>
#include <nuvex-da-db.h>
#include <sqlite3.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ChildProcess.h"
#include "DataStoreFixture.h"
#include "DiskWaits.h"
#include "ScratchRoot.h"

namespace {

namespace fs = std::filesystem;
using namespace StoreTest;
using TestSupport::ChildProcess;
using TestSupport::ScratchRoot;

int createManager(const char* name)
{
    ndd_manager_h manager = nullptr;
    const int result = ndd_manager_create(name, &manager);
    EXPECT_EQ(manager != nullptr, result == NDD_ERROR_NONE);
    if (manager != nullptr)
        ndd_manager_destroy(manager);
    return result;
}

}  // namespace

TEST_F(DataStore, IsATableOfIntegersForEachStore)
{
    const Manager manager;

    EXPECT_EQ(Reader().query("SELECT name, type, pk FROM pragma_table_info('Commerce')"),
              "id,INTEGER,1;isLoggedIn,INTEGER,0;isLinked,INTEGER,0;totalCount,INTEGER,0;"
              "productCountInCart,INTEGER,0;currentViewType,INTEGER,0;");
    EXPECT_EQ(storedRecords(), "");
}

TEST_F(DataStore, TellsItsPrimaryKey)
{
    const Manager manager;
    char* name = nullptr;

    EXPECT_EQ(ndd_manager_get_primary_key(manager.handle, &name), NDD_ERROR_NONE);
    EXPECT_STREQ(name, "id");
    std::free(name);
}

TEST_F(DataStore, AColumnIsNullUntilItIsWritten)
{
    const Manager manager;

    EXPECT_EQ(manager.insert({{"id", 0}, {"totalCount", 0}}), NDD_ERROR_NONE);
    EXPECT_EQ(storedRecords(), "0,null,null,0,null,null;");
}

TEST_F(DataStore, ARecordIsInsertedOnce)
{
    const Manager manager;
    EXPECT_EQ(manager.insert({{"id", 0}, {"isLinked", 1}}), NDD_ERROR_NONE);

    EXPECT_EQ(manager.insert({{"id", 0}, {"isLinked", 2}}), NDD_ERROR_ALREADY_EXISTS);
    EXPECT_EQ(storedRecords(), "0,null,1,null,null,null;");
}

TEST_F(DataStore, AnUpdateChangesOnlyTheColumnsOfItsBundle)
{
    const Manager manager;
    manager.insert({{"id", 0}, {"isLoggedIn", 1}, {"totalCount", 6}});
    manager.insert({{"id", 1}, {"totalCount", 9}});

    EXPECT_EQ(manager.update({{"id", 0}, {"totalCount", 3}, {"currentViewType", 2}}), NDD_ERROR_NONE);
    EXPECT_EQ(storedRecords(), "0,1,null,3,null,2;1,null,null,9,null,null;");
}

TEST_F(DataStore, AnUpdateNeedsItsRecord)
{
    const Manager manager;
    manager.insert({{"id", 1}});

    EXPECT_EQ(manager.update({{"id", 0}, {"totalCount", 3}}), NDD_ERROR_NO_SUCH_RECORD);
    EXPECT_EQ(manager.update({{"id", 0}}), NDD_ERROR_NO_SUCH_RECORD);
    EXPECT_EQ(storedRecords(), "1,null,null,null,null,null;");
}

TEST_F(DataStore, AnUpdateOfNothingButTheKeyChangesNothing)
{
    const Manager manager;
    manager.insert({{"id", 0}, {"totalCount", 3}});

    EXPECT_EQ(manager.update({{"id", 0}}), NDD_ERROR_NONE);
    EXPECT_EQ(storedRecords(), "0,null,null,3,null,null;");
}

TEST_F(DataStore, KeepsEveryInteger)
{
    const Manager manager;

    EXPECT_EQ(manager.insert({{"id", INT_MIN}, {"totalCount", INT_MAX}, {"isLinked", -1}}), NDD_ERROR_NONE);
    EXPECT_EQ(storedRecords(), "-2147483648,null,-1,2147483647,null,null;");
}

TEST_F(DataStore, TheLastValueOfAColumnCounts)
{
    const Manager manager;

    EXPECT_EQ(manager.insert({{"id", 0}, {"totalCount", 1}, {"totalCount", 2}}), NDD_ERROR_NONE);
    EXPECT_EQ(storedRecords(), "0,null,null,2,null,null;");
}

TEST_F(DataStore, ABundleServesSeveralCallsAndManagers)
{
    const Bundle bundle({{"id", 0}, {"totalCount", 4}});
    EXPECT_EQ(ndd_manager_insert(Manager().handle, bundle.handle), NDD_ERROR_NONE);

    EXPECT_EQ(ndd_manager_update(Manager().handle, bundle.handle), NDD_ERROR_NONE);
    EXPECT_EQ(storedRecords(), "0,null,null,4,null,null;");
}

TEST_F(DataStore, OutlivesItsManagers)
{
    Manager().insert({{"id", 0}, {"totalCount", 4}});

    EXPECT_EQ(Manager().insert({{"id", 0}}), NDD_ERROR_ALREADY_EXISTS);
    EXPECT_EQ(storedRecords(), "0,null,null,4,null,null;");
}

TEST_F(DataStore, AnotherProgramSeesEachWriteAtOnce)
{
    const Manager manager;
    manager.insert({{"id", 0}});
    Reader reader;
    for (int count = 0; count < 5; ++count) {
        manager.update({{"id", 0}, {"totalCount", count}});
        EXPECT_EQ(reader.query("SELECT totalCount FROM Commerce"), std::to_string(count) + ";");
    }
}

TEST_F(DataStore, IsOneFile)
{
    const Manager manager;
    manager.insert({{"id", 0}});

    for (const auto& entry : fs::directory_iterator(ScratchRoot::path()))
        EXPECT_TRUE(entry.path() == storeFile() ||
                    entry.path().string().find("data-store") == std::string::npos)
            << entry.path();
}

TEST_F(DataStore, WaitsForTheDiskOnlyForItsTable)
{
    const DiskWaits waits;
    const Manager manager;
    EXPECT_GT(DiskWaits::take(), 0);

    EXPECT_EQ(manager.insert({{"id", 0}, {"totalCount", 1}}), NDD_ERROR_NONE);
    EXPECT_EQ(manager.update({{"id", 0}, {"totalCount", 2}}), NDD_ERROR_NONE);
    EXPECT_EQ(DiskWaits::take(), 0);

    const Manager another;
    EXPECT_EQ(another.update({{"id", 0}, {"totalCount", 3}}), NDD_ERROR_NONE);
    EXPECT_EQ(DiskWaits::take(), 0);
    EXPECT_EQ(storedRecords(), "0,null,null,3,null,null;");
}

TEST_F(DataStore, ARecordWithoutItsKeyIsRefused)
{
    const Manager manager;

    EXPECT_EQ(manager.insert({}), NDD_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(manager.insert({{"totalCount", 1}}), NDD_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(manager.update({{"totalCount", 1}}), NDD_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(storedRecords(), "");
}

TEST_F(DataStore, UnknownStoresAreRefused)
{
    for (const char* name : {"commerce", "Commerce ", "Commerce; DROP TABLE Commerce", "sqlite_master"})
        EXPECT_EQ(createManager(name), NDD_ERROR_NO_SUCH_STORE);

    EXPECT_FALSE(fs::exists(storeFile()));
}

TEST_F(DataStore, UnknownColumnsAreRefused)
{
    const Manager manager;
    manager.insert({{"id", 0}, {"totalCount", 1}});
    for (const char* column : {"rowid", "TotalCount", "totalCount = 9 --", "\xFF"}) {
        EXPECT_EQ(manager.insert({{"id", 5}, {column, 9}}), NDD_ERROR_NO_SUCH_COLUMN);
        EXPECT_EQ(manager.update({{"id", 0}, {column, 9}}), NDD_ERROR_NO_SUCH_COLUMN);
    }

    EXPECT_EQ(storedRecords(), "0,null,null,1,null,null;");
}

TEST_F(DataStore, NullAndEmptyArgumentsAreRefused)
{
    const Manager manager;
    const Bundle bundle({{"id", 0}});
    ndd_manager_h unmade = nullptr;
    char* name = nullptr;
    const std::vector<int> results = {ndd_manager_create(nullptr, &unmade),
                                      ndd_manager_create("", &unmade),
                                      ndd_manager_create("Commerce", nullptr),
                                      ndd_manager_get_primary_key(nullptr, &name),
                                      ndd_manager_get_primary_key(manager.handle, nullptr),
                                      ndd_manager_insert(nullptr, bundle.handle),
                                      ndd_manager_insert(manager.handle, nullptr),
                                      ndd_manager_update(nullptr, bundle.handle),
                                      ndd_manager_update(manager.handle, nullptr),
                                      ndd_manager_destroy(nullptr),
                                      ndd_bundle_create(nullptr),
                                      ndd_bundle_add_int(nullptr, "id", 0),
                                      ndd_bundle_add_int(bundle.handle, nullptr, 0),
                                      ndd_bundle_add_int(bundle.handle, "", 0),
                                      ndd_bundle_destroy(nullptr)};

    EXPECT_EQ(results, std::vector<int>(results.size(), NDD_ERROR_INVALID_PARAMETER));
    EXPECT_EQ(unmade, nullptr);
    EXPECT_EQ(name, nullptr);
}

TEST_F(DataStore, TheCodesAreTheDocumentedNumbers)
{
    EXPECT_EQ(NDD_ERROR_NONE, 0);
    EXPECT_EQ(NDD_ERROR_IO_ERROR, -5);
    EXPECT_EQ(NDD_ERROR_OUT_OF_MEMORY, -12);
    EXPECT_EQ(NDD_ERROR_BUSY, -16);
    EXPECT_EQ(NDD_ERROR_INVALID_PARAMETER, -22);
    EXPECT_EQ(NDD_ERROR_NO_SUCH_STORE, -48234495);
    EXPECT_EQ(NDD_ERROR_NO_SUCH_COLUMN, -48234494);
    EXPECT_EQ(NDD_ERROR_ALREADY_EXISTS, -48234493);
    EXPECT_EQ(NDD_ERROR_NO_SUCH_RECORD, -48234492);
}

TEST_F(DataStore, AStoreThatStaysLockedIsBusy)
{
    const Manager manager;
    Reader other(SQLITE_OPEN_READWRITE);
    other.query("BEGIN EXCLUSIVE");

    EXPECT_EQ(manager.insert({{"id", 0}}), NDD_ERROR_BUSY);
    other.query("COMMIT");
    EXPECT_EQ(manager.insert({{"id", 0}}), NDD_ERROR_NONE);
}

TEST_F(DataStore, AWriterWaitsForAnother)
{
    const Manager manager;
    Reader other(SQLITE_OPEN_READWRITE);
    other.query("BEGIN IMMEDIATE");
    int result = 1;
    std::thread writer([&] { result = manager.insert({{"id", 0}}); });
    other.query("COMMIT");
    writer.join();

    EXPECT_EQ(result, NDD_ERROR_NONE);
}

TEST_F(DataStore, TwoProcessesWriteAtOnce)
{
    ChildProcess one({STORE_PROBE, "count", "totalCount", "50"});
    ChildProcess two({STORE_PROBE, "count", "productCountInCart", "50"});

    EXPECT_EQ(one.wait().status, 0);
    EXPECT_EQ(two.wait().status, 0);
    EXPECT_EQ(storedRecords(), "0,null,null,50,50,null;");
}

TEST_F(DataStore, ManagersOfSeveralThreadsDoNotDisturbEachOther)
{
    std::vector<std::thread> threads;
    for (int id = 0; id < 4; ++id)
        threads.emplace_back([id] {
            const Manager manager;
            EXPECT_EQ(manager.insert({{"id", id}}), NDD_ERROR_NONE);
            EXPECT_EQ(manager.update({{"id", id}, {"totalCount", id}}), NDD_ERROR_NONE);
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(Reader().query("SELECT id, totalCount FROM Commerce"), "0,0;1,1;2,2;3,3;");
}

TEST_F(DataStore, AFileThatIsNoDatabaseIsAnError)
{
    std::ofstream(storeFile()) << std::string(5000, 'x');

    EXPECT_EQ(createManager("Commerce"), NDD_ERROR_IO_ERROR);
}

TEST_F(DataStore, AFolderInPlaceOfTheFileIsAnError)
{
    fs::create_directory(storeFile());

    EXPECT_EQ(createManager("Commerce"), NDD_ERROR_IO_ERROR);
}

TEST_F(DataStore, AFileThatIsDamagedLaterIsAnError)
{
    Manager().insert({{"id", 0}});
    std::fstream file(storeFile(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(4096);
    file << std::string(4096, 'x');
    file.close();

    EXPECT_EQ(Manager().insert({{"id", 1}}), NDD_ERROR_IO_ERROR);
    EXPECT_EQ(Manager().update({{"id", 0}, {"totalCount", 1}}), NDD_ERROR_IO_ERROR);
}

TEST_F(DataStore, ATableOfAnotherShapeIsAnError)
{
    Reader(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)
        .query("CREATE TABLE Commerce (id INTEGER PRIMARY KEY)");

    EXPECT_EQ(Manager().insert({{"id", 0}, {"totalCount", 1}}), NDD_ERROR_IO_ERROR);
}
