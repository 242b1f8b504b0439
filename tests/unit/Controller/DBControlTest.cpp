#include "DBControl.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "Calls.h"
#include "Latch.h"
#include "LeakCheck.h"
#include "ScratchRoot.h"
#include "SearchControlFixture.h"
#include "SiteValues.h"

using TestSupport::Calls;
using TestSupport::ScratchRoot;

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

/** The calls to the assistant's data store, each with its arguments. */
Texts storeCalls()
{
    Texts calls;
    for (const TestSupport::Call& call : Calls::all()) {
        if (call.name.rfind("ndd_", 0) != 0)
            continue;
        std::string line = call.name;
        for (const std::string& argument : call.arguments)
            line += " " + argument;
        calls.push_back(line);
    }
    return calls;
}

class StatusRecordTest : public testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::remove(ScratchRoot::file("data-store.sqlite"));
        Calls::reset();
    }
    void TearDown() override { Calls::reset(); }
};

std::string localStorage()
{
    return ScratchRoot::file("apps_rw/" CARVOY_PARTNER_APP_ID
                             "/data/chromium-efl/data/Local Storage/https_" CARVOY_MERCHANT_BRIDGE_HOST
                             "_0.localstorage");
}

class LocalStorageTest : public testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(std::filesystem::path(localStorage()).parent_path());
        std::filesystem::remove(localStorage());
        execute("CREATE TABLE ItemTable (key TEXT UNIQUE ON CONFLICT REPLACE, value BLOB NOT NULL)");
        Calls::reset();
    }

    void TearDown() override
    {
        std::filesystem::remove_all(localStorage());
        Calls::reset();
    }

    /** What the partner app does. */
    static void execute(const std::string& sql)
    {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(localStorage().c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
        sqlite3_close_v2(database);
    }

    static void store(const std::string& key, const std::string& value)
    {
        execute("INSERT INTO ItemTable VALUES ('" + key + "', " + value + ")");
    }
};

}  // namespace

TEST_F(StatusRecordTest, TheFirstWriteInsertsTheRecord)
{
    EXPECT_EQ(DBControl::updateStatus(1, 0, 6, 2, 3), 0);
    EXPECT_EQ(storeCalls(),
              (Texts{"ndd_manager_create Commerce", "ndd_manager_get_primary_key", "ndd_bundle_create",
                     "ndd_bundle_add_int id 0", "ndd_bundle_add_int isLoggedIn 1",
                     "ndd_bundle_add_int isLinked 0", "ndd_bundle_add_int totalCount 6",
                     "ndd_bundle_add_int productCountInCart 2", "ndd_bundle_add_int currentViewType 3",
                     "ndd_manager_insert", "ndd_bundle_destroy", "ndd_manager_destroy"}));
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 0, 6, 2, 3}));
}

TEST_F(StatusRecordTest, ALaterWriteUpdatesTheSameRecord)
{
    ASSERT_EQ(DBControl::updateStatus(1, 1, 6, 2, 3), 0);
    Calls::reset();
    EXPECT_EQ(DBControl::updateStatus(0, 0, 4, 1, 0), 0);
    EXPECT_EQ(
        storeCalls(),
        (Texts{"ndd_manager_create Commerce", "ndd_manager_get_primary_key", "ndd_bundle_create",
               "ndd_bundle_add_int id 0", "ndd_bundle_add_int isLoggedIn 0", "ndd_bundle_add_int isLinked 0",
               "ndd_bundle_add_int totalCount 4", "ndd_bundle_add_int productCountInCart 1",
               "ndd_bundle_add_int currentViewType 0", "ndd_manager_insert", "ndd_manager_update",
               "ndd_bundle_destroy", "ndd_manager_destroy"}));
    EXPECT_EQ(statusRecord(), (StatusRecord{0, 0, 4, 1, 0}));
}

TEST_F(StatusRecordTest, WithNothingToWriteTheStoreIsNotTouched)
{
    EXPECT_EQ(DBControl::updateStatus(-1, -1, -1, -1, -1), 0);
    EXPECT_EQ(DBControl::updateStatus(-2, -100, INT32_MIN, -1, -7), 0);
    EXPECT_EQ(storeCalls(), Texts());
    EXPECT_EQ(logged(), Texts(2, "updateStatus: No need to be updated"));
    EXPECT_EQ(loggedErrors(), Texts());
    EXPECT_FALSE(std::filesystem::exists(ScratchRoot::file("data-store.sqlite")));
}

TEST_F(StatusRecordTest, ANegativeValueLeavesItsColumnOut)
{
    EXPECT_EQ(DBControl::updateStatus(-1, -1, 0, -1, -1), 0);
    EXPECT_EQ(storeCalls(),
              (Texts{"ndd_manager_create Commerce", "ndd_manager_get_primary_key", "ndd_bundle_create",
                     "ndd_bundle_add_int id 0", "ndd_bundle_add_int totalCount 0", "ndd_manager_insert",
                     "ndd_bundle_destroy", "ndd_manager_destroy"}));
    EXPECT_EQ(statusRecord(), (StatusRecord{{}, {}, 0, {}, {}}));
}

TEST_F(StatusRecordTest, EachColumnCanBeWrittenAlone)
{
    EXPECT_EQ(DBControl::updateStatus(1, -1, -1, -1, -1), 0);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, {}, {}, {}, {}}));
    EXPECT_EQ(DBControl::updateStatus(-1, 2, -1, -1, -1), 0);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 2, {}, {}, {}}));
    EXPECT_EQ(DBControl::updateStatus(-1, -1, 3, -1, -1), 0);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 2, 3, {}, {}}));
    EXPECT_EQ(DBControl::updateStatus(-1, -1, -1, 4, -1), 0);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 2, 3, 4, {}}));
    EXPECT_EQ(DBControl::updateStatus(-1, -1, -1, -1, 5), 0);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 2, 3, 4, 5}));
}

TEST_F(StatusRecordTest, TheFirstCallThatFailsEndsTheWriteAndIsItsResult)
{
    const Texts all = {"ndd_manager_create Commerce", "ndd_manager_get_primary_key", "ndd_bundle_create",
                       "ndd_bundle_add_int id 0", "ndd_bundle_add_int isLoggedIn 1"};
    const Texts releases = {"ndd_bundle_destroy", "ndd_manager_destroy"};
    const std::vector<std::tuple<const char*, size_t, size_t, size_t>> faults = {
        // function, its failing call, calls made by then, releases from here on
        {"ndd_manager_create", 1, 1, 2},
        {"ndd_manager_get_primary_key", 1, 2, 1},
        {"ndd_bundle_create", 1, 3, 1},
        {"ndd_bundle_add_int", 1, 4, 0},
        {"ndd_bundle_add_int", 2, 5, 0}};
    for (const auto& [function, nth, made, released] : faults) {
        Calls::reset();
        Calls::fail(function, -4711, nth);
        EXPECT_EQ(DBControl::updateStatus(1, 1, 1, 1, 1), -4711) << function;

        Texts expected(all.begin(), all.begin() + static_cast<long>(made));
        expected.insert(expected.end(), releases.begin() + static_cast<long>(released), releases.end());
        EXPECT_EQ(storeCalls(), expected) << function << nth;
        EXPECT_EQ(logged(), Texts()) << function;
    }
    EXPECT_EQ(statusRecord(), std::nullopt);
}

TEST_F(StatusRecordTest, EveryColumnThatCannotBeAddedEndsTheWrite)
{
    for (size_t nth = 1; nth <= 6; ++nth) {
        Calls::reset();
        Calls::fail("ndd_bundle_add_int", -12, nth);
        EXPECT_EQ(DBControl::updateStatus(1, 1, 1, 1, 1), -12);
        EXPECT_EQ(Calls::count("ndd_bundle_add_int"), nth);
        EXPECT_EQ(Calls::count("ndd_manager_insert"), 0u);
        EXPECT_EQ(Calls::count("ndd_bundle_destroy"), 1u);
        EXPECT_EQ(Calls::count("ndd_manager_destroy"), 1u);
    }
}

TEST_F(StatusRecordTest, AnInsertThatFailsForAnyReasonIsFollowedByAnUpdate)
{
    ASSERT_EQ(DBControl::updateStatus(1, 1, 1, 1, 1), 0);
    Calls::reset();
    Calls::fail("ndd_manager_insert", -5);
    EXPECT_EQ(DBControl::updateStatus(-1, -1, 2, -1, -1), 0);
    EXPECT_EQ(Calls::order({"ndd_manager_insert", "ndd_manager_update"}),
              (Texts{"ndd_manager_insert", "ndd_manager_update"}));
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 2, 1, 1}));
}

TEST_F(StatusRecordTest, AnUpdateThatFailsIsTheResult)
{
    ASSERT_EQ(DBControl::updateStatus(1, 1, 1, 1, 1), 0);
    Calls::fail("ndd_manager_update", -16);
    EXPECT_EQ(DBControl::updateStatus(2, -1, -1, -1, -1), -16);
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 1, 1, 1}));
    EXPECT_EQ(Calls::of("ndd_bundle_destroy").size(), Calls::of("ndd_bundle_create").size());
    EXPECT_EQ(Calls::of("ndd_manager_destroy").size(), Calls::of("ndd_manager_create").size());
}

TEST_F(StatusRecordTest, ADamagedStoreIsReportedByItsCode)
{
    writeFile(ScratchRoot::file("data-store.sqlite"), std::string(4096, 'x'));
    EXPECT_NE(DBControl::updateStatus(1, 1, 1, 1, 1), 0);
    EXPECT_EQ(logged(), Texts());
}

TEST_F(LocalStorageTest, AValueIsFoundByItsKey)
{
    store("first", "x'616263'");
    store("second", "x'646566'");
    EXPECT_EQ(DBControl::getTextValueFromTextKey("first"), "abc");
    EXPECT_EQ(DBControl::getTextValueFromTextKey("second"), "def");
    EXPECT_EQ(logged(), Texts(2, "getTextValueFromTextKey: Got results"));
}

TEST_F(LocalStorageTest, TheTokensHaveKeysOfTheirOwn)
{
    store("X-Auth-Access-Token", "x'6163'");
    store("X-Auth-Session-Token", "x'7365'");
    EXPECT_EQ(DBControl::getXAuthAccessToken(), "ac");
    EXPECT_EQ(DBControl::getXAuthSessionToken(), "se");
    EXPECT_EQ(DBControl::CarvoyDBKeyXAuthAccessToken, "X-Auth-Access-Token");
    EXPECT_EQ(DBControl::CarvoyDBKeyXAuthSessionToken, "X-Auth-Session-Token");
}

TEST_F(LocalStorageTest, TheStoreIsOpenedReadOnlyAndWaitedForAndClosed)
{
    store("key", "x'61'");
    Calls::reset();
    EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "a");
    const auto opened = Calls::of("sqlite3_open_v2");
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0].arguments, (Texts{localStorage(), std::to_string(SQLITE_OPEN_READONLY), ""}));
    EXPECT_EQ(Calls::of("sqlite3_busy_timeout").at(0).arguments, Texts{"3000"});
    EXPECT_EQ(Calls::of("sqlite3_prepare_v2").at(0).arguments,
              Texts{"SELECT value FROM ItemTable WHERE key=\"key\""});
    EXPECT_EQ(Calls::order({"sqlite3_open_v2", "sqlite3_busy_timeout", "sqlite3_prepare_v2", "sqlite3_step",
                            "sqlite3_finalize", "sqlite3_close"}),
              (Texts{"sqlite3_open_v2", "sqlite3_busy_timeout", "sqlite3_prepare_v2", "sqlite3_step",
                     "sqlite3_finalize", "sqlite3_close"}));
}

TEST_F(LocalStorageTest, AKeyWithoutAValueIsLogged)
{
    EXPECT_EQ(DBControl::getTextValueFromTextKey("milk"), "");
    EXPECT_EQ(logged(), (Texts{"getTextValueFromTextKey: Got results",
                               "getTextValueFromTextKey: Can't find value from key(milk)"}));
}

TEST_F(LocalStorageTest, AValueThatIsNoBlobIsRefusedWithItsType)
{
    const std::vector<std::pair<const char*, const char*>> values = {
        {"'text'", "3"}, {"12", "1"}, {"1.5", "2"}};
    for (const auto& [value, type] : values) {
        Calls::reset();
        execute("DELETE FROM ItemTable");
        store("key", value);
        EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "");
        EXPECT_EQ(loggedErrors(),
                  Texts{std::string("getTextValueFromTextKey: Invalid column type: ") + type});
    }
}

TEST_F(LocalStorageTest, AnEmptyBlobIsAnEmptyText)
{
    store("key", "x''");
    EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "");
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(LocalStorageTest, ABlobCountsUpToItsFirstZeroByte)
{
    store("key", "x'610062006300'");
    EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "a");
    store("zero", "x'00616263'");
    EXPECT_EQ(DBControl::getTextValueFromTextKey("zero"), "");
}

TEST_F(LocalStorageTest, AKeyWithADoubleQuoteBreaksTheStatement)
{
    store("a\"b", "x'61'");
    Calls::reset();
    EXPECT_EQ(DBControl::getTextValueFromTextKey("a\"b"), "");
    const Texts errors = loggedErrors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].rfind("getTextValueFromTextKey: Can't prepare stmt: ", 0), 0u) << errors[0];
    EXPECT_GT(errors[0].size(), std::string("getTextValueFromTextKey: Can't prepare stmt: ").size());
    EXPECT_EQ(logged(), errors);
    EXPECT_EQ(Calls::count("sqlite3_close"), 1u);
    EXPECT_EQ(Calls::count("sqlite3_step"), 0u);
}

TEST_F(LocalStorageTest, AKeyWithASingleQuoteIsAKeyLikeAnyOther)
{
    store("a''b", "x'61'");
    EXPECT_EQ(DBControl::getTextValueFromTextKey("a'b"), "a");
}

// A word in double quotes that names a column is that column, so every row matches.
TEST_F(LocalStorageTest, AKeyThatIsTheNameOfAColumnIsThatColumn)
{
    store("some", "x'61'");
    EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "a");
}

TEST_F(LocalStorageTest, AMissingStoreIsLoggedWithItsPath)
{
    std::filesystem::remove(localStorage());
    {
        const NoLeakCheck connectionStaysOpen;
        EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "");
    }
    EXPECT_EQ(logged(), (Texts{"getTextValueFromTextKey: Can't open database: unable to open database file",
                               "getTextValueFromTextKey: Path: " + localStorage()}));
    EXPECT_EQ(Calls::count("sqlite3_close"), 0u);
}

TEST_F(LocalStorageTest, AStoreWithoutTheTableCannotBeAsked)
{
    execute("DROP TABLE ItemTable");
    EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "");
    EXPECT_EQ(logged(), Texts{"getTextValueFromTextKey: Can't prepare stmt: no such table: ItemTable"});
}

TEST_F(LocalStorageTest, AFileThatIsNoStoreCannotBeAsked)
{
    writeFile(localStorage(), std::string(4096, 'x'));
    EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "");
    EXPECT_EQ(logged(), Texts{"getTextValueFromTextKey: Can't prepare stmt: file is not a database"});
    EXPECT_EQ(Calls::count("sqlite3_close"), 1u);
}

// Whatever the step's code, it counts as a row unless it says that there is none.
TEST_F(LocalStorageTest, AFailedStepShowsAsAColumnOfNoType)
{
    store("key", "x'61'");
    Calls::reset();
    Calls::fail("sqlite3_step", SQLITE_IOERR);
    EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "");
    EXPECT_EQ(loggedErrors(), Texts{"getTextValueFromTextKey: Invalid column type: 5"});
    EXPECT_EQ(Calls::count("sqlite3_finalize"), 1u);
    EXPECT_EQ(Calls::count("sqlite3_close"), 1u);
}

// The file's own words say what the table is.
TEST_F(LocalStorageTest, ALookUpWithoutAnEndIsGivenUp)
{
    execute("DROP TABLE ItemTable");
    execute(
        "CREATE VIEW ItemTable AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n)"
        " SELECT 'none' || i AS key, x'61' AS value FROM n");
    Calls::reset();
    EXPECT_EQ(DBControl::getTextValueFromTextKey("some"), "");
    EXPECT_EQ(loggedErrors(), Texts{"getTextValueFromTextKey: Invalid column type: 5"});
    EXPECT_EQ(Calls::count("sqlite3_finalize"), 1u);
    EXPECT_EQ(Calls::count("sqlite3_close"), 1u);
}

TEST_F(LocalStorageTest, ManyRowsAreNoReasonToGiveUp)
{
    execute("DROP TABLE ItemTable");
    execute("CREATE TABLE ItemTable (key TEXT, value BLOB)");
    execute(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 250000)"
        " INSERT INTO ItemTable SELECT 'key' || i, x'61' FROM n");
    store("last", "x'62'");
    EXPECT_EQ(DBControl::getTextValueFromTextKey("last"), "b");
}

TEST_F(LocalStorageTest, ARowOfAnotherWidthIsRefused)
{
    store("key", "x'61'");
    Calls::reset();
    Calls::fail("sqlite3_column_count", 2);
    EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "");
    EXPECT_EQ(loggedErrors(), Texts{"getTextValueFromTextKey: Invalid column count: 2"});
    EXPECT_EQ(Calls::count("sqlite3_finalize"), 1u);
    EXPECT_EQ(Calls::count("sqlite3_close"), 1u);
}

// The partner app may be writing at that moment; it is waited for.
TEST_F(LocalStorageTest, AStoreThatIsLockedIsWaitedFor)
{
    store("key", "x'61'");
    sqlite3* partner = nullptr;
    ASSERT_EQ(sqlite3_open(localStorage().c_str(), &partner), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(partner, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);

    const auto isAsked = std::make_shared<Latch>();
    Calls::reset();
    Calls::before("sqlite3_prepare_v2", [isAsked] { isAsked->open(); });
    std::thread writer([&] {
        isAsked->wait();
        sqlite3_exec(partner, "COMMIT", nullptr, nullptr, nullptr);
    });
    EXPECT_EQ(DBControl::getTextValueFromTextKey("key"), "a");
    EXPECT_EQ(loggedErrors(), Texts());
    writer.join();
    sqlite3_close_v2(partner);
}

}  // namespace Carvoy
