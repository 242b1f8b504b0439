// A data store that is locked, damaged, or another program's of a later day: searches go on, and the file is
// left as it is.
#include <sqlite3.h>

#include <fstream>
#include <random>

#include "ServiceWorld.h"

namespace ServiceTest {

namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

const std::string StatusError = "processSearch: updateStatus() failed";

/** Another program's connection to the store. */
class Writer {
  public:
    explicit Writer(const std::string& file)
    {
        sqlite3_open_v2(file.c_str(), &database_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    }
    ~Writer() { sqlite3_close(database_); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    void run(const std::string& sql)
    {
        char* error = nullptr;
        EXPECT_EQ(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, &error), SQLITE_OK) << error;
        sqlite3_free(error);
    }

    /** The first column of the first row. */
    std::string ask(const std::string& sql)
    {
        sqlite3_stmt* statement = nullptr;
        std::string text;
        if (sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
            sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_text(statement, 0))
            text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        sqlite3_finalize(statement);
        return text;
    }

  private:
    sqlite3* database_ = nullptr;
};

class AStore : public ServiceWorld {
  protected:
    std::string file() const { return root + "/data-store.sqlite"; }

    void start()
    {
        ui = std::make_unique<UiPeer>();
        startService();
    }

    /** Everything of a search but its status record. */
    void expectASearchWithoutARecord()
    {
        stock(threeProducts());
        EXPECT_EQ(search(), "");
        const auto result = resultMessage();
        EXPECT_EQ(textOf(result, "key_total_num_of_products"), "3");
        EXPECT_EQ(ui->confirm(result), "");
        for (const char* index : {"0", "1", "2"})
            EXPECT_EQ(ui->nextPicture().index, index);
        EXPECT_EQ(responseFlag(), "1\n");
        EXPECT_EQ(errors(), Texts{StatusError});
    }
};

// Locked. The service waits for three seconds at each of its steps and does without the record then.

struct Lock {
    const char* name;
    const char* sql;
};

std::ostream& operator<<(std::ostream& stream, const Lock& lock)
{
    return stream << lock.name;
}

class ALockedStore : public AStore, public testing::WithParamInterface<Lock> {};

TEST_P(ALockedStore, CostsASearchItsStatusRecordAndTheNextOneNothing)
{
    start();
    expectASearchThatWorks();
    Writer writer(file());
    writer.run(GetParam().sql);

    expectASearchWithoutARecord();

    writer.run("UPDATE Commerce SET currentViewType = 7");
    writer.run("COMMIT");
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, 7}));
    merchant->answer(Merchant::SearchPath, {401});
    search();
    resultMessage();
    EXPECT_EQ(status(), (StatusRecord{0, 0, 0, {}, 7})) << "what others write stays";
    stopService();
    EXPECT_EQ(service->errors(), "");
}

TEST_F(AStore, ThatIsLockedAtTheStartIsNoReasonNotToStart)
{
    Writer writer(file());
    writer.run(
        "CREATE TABLE Commerce (id INTEGER PRIMARY KEY, isLoggedIn INTEGER, isLinked INTEGER,"
        " totalCount INTEGER, productCountInCart INTEGER, currentViewType INTEGER)");
    writer.run("BEGIN EXCLUSIVE");

    start();

    EXPECT_EQ(errors(), Texts{});
    writer.run("COMMIT");
    expectASearchThatWorks();
}

const Lock Locks[] = {
    {"ForWriters", "BEGIN IMMEDIATE"},
    {"ForEverybody", "BEGIN EXCLUSIVE"},
};

INSTANTIATE_TEST_SUITE_P(By, ALockedStore, testing::ValuesIn(Locks),
                         [](const auto& lock) { return lock.param.name; });

// Damaged, or made by something that this service does not know.

struct Damage {
    const char* name;
    std::function<void(const std::string& file)> doIt;
};

std::ostream& operator<<(std::ostream& stream, const Damage& damage)
{
    return stream << damage.name;
}

class ADamagedStore : public AStore, public testing::WithParamInterface<Damage> {
  protected:
    void SetUp() override
    {
        start();
        expectASearchThatWorks();
    }

    void damage()
    {
        GetParam().doIt(file());
        damaged_ = contentOf(file());
    }

    void expectUntouched() const { EXPECT_TRUE(contentOf(file()) == damaged_); }

  private:
    std::string damaged_;
};

TEST_P(ADamagedStore, CostsTheStatusRecordAndNothingElseAndIsLeftAsItIs)
{
    damage();
    expectASearchWithoutARecord();
    stopService();
    EXPECT_EQ(service->errors(), "");
    startService();
    EXPECT_EQ(errors(), Texts{StatusError}) << "the start tells nothing of it";
    expectUntouched();

    fs::remove_all(file());
    expectASearchThatWorks();
    EXPECT_EQ(errors(), Texts{StatusError});
}

void overwrite(const std::string& file, std::streamoff position, const std::string& bytes)
{
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(position);
    stream << bytes;
}

constexpr std::streamoff Page = 4096;  // the first one of two holds the schema

const Damage Damages[] = {
    {"RandomBytes",
     [](const std::string& file) {
         std::minstd_rand dice;
         std::string bytes(2 * Page, '\0');
         for (char& byte : bytes)
             byte = static_cast<char>(dice());
         overwrite(file, 0, bytes);
     }},
    {"AHeaderOfNoughts", [](const std::string& file) { overwrite(file, 0, std::string(100, '\0')); }},
    {"ASchemaOfNoughts",
     [](const std::string& file) { overwrite(file, 100, std::string(Page - 100, '\0')); }},
    {"NoughtsInPlaceOfTheTable",
     [](const std::string& file) { overwrite(file, Page, std::string(Page, '\xff')); }},
    {"TheFirstPageOnly", [](const std::string& file) { fs::resize_file(file, Page); }},
    {"HalfAHeader", [](const std::string& file) { fs::resize_file(file, 50); }},
    {"AFolder",
     [](const std::string& file) {
         fs::remove(file);
         fs::create_directories(file + "/what/ever");
     }},
    {"ALaterFileFormat", [](const std::string& file) { overwrite(file, 18, "\3\3"); }},
    {"AFormatThatIsLaterForWriters", [](const std::string& file) { overwrite(file, 18, "\3"); }},
    {"ALaterSchemaFormat",
     [](const std::string& file) { overwrite(file, 44, std::string("\0\0\0\x63", 4)); }},
    {"ATableWithOtherColumns",
     [](const std::string& file) {
         Writer writer(file);
         writer.run("DROP TABLE Commerce");
         writer.run("CREATE TABLE Commerce (id INTEGER PRIMARY KEY, isLoggedIn INTEGER)");
     }},
    {"AViewOfThatName",
     [](const std::string& file) {
         Writer writer(file);
         writer.run("DROP TABLE Commerce");
         writer.run(
             "CREATE VIEW Commerce AS SELECT 0 AS id, 1 AS isLoggedIn, 1 AS isLinked, 1 AS totalCount");
     }},
};

INSTANTIATE_TEST_SUITE_P(By, ADamagedStore, testing::ValuesIn(Damages),
                         [](const auto& damage) { return damage.param.name; });

TEST_F(AStore, ThatIsEmptyIsFilledAnew)
{
    start();
    expectASearchThatWorks();
    fs::resize_file(file(), 0);

    expectASearchThatWorks();

    EXPECT_EQ(errors(), Texts{});
}

TEST_F(AStore, OfALaterVersionWithMoreColumnsIsUsedAndKept)
{
    {
        Writer writer(file());
        writer.run(
            "CREATE TABLE Commerce (id INTEGER PRIMARY KEY, isLoggedIn INTEGER, isLinked INTEGER,"
            " totalCount INTEGER, productCountInCart INTEGER, currentViewType INTEGER,"
            " lastMerchant TEXT DEFAULT 'corner-store')");
        writer.run("CREATE TABLE Later (id INTEGER PRIMARY KEY)");
        writer.run("INSERT INTO Commerce (id, productCountInCart, lastMerchant) VALUES (0, 2, 'freshmart')");
        writer.run("PRAGMA user_version = 9");
    }
    ui = std::make_unique<UiPeer>();
    startService();
    stock(threeProducts());
    search();
    resultMessage();
    stopService();

    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, 2, {}}));
    Writer reader(file());
    EXPECT_EQ(reader.ask("SELECT lastMerchant FROM Commerce WHERE id = 0"), "freshmart");
    EXPECT_EQ(reader.ask("SELECT count(*) FROM Later"), "0");
    EXPECT_EQ(reader.ask("PRAGMA user_version"), "9");
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(AStore, WithAWriteAheadLogIsUsedAsItIs)
{
    start();
    expectASearchThatWorks();
    Writer writer(file());
    EXPECT_EQ(writer.ask("PRAGMA journal_mode = WAL"), "wal");

    expectASearchThatWorks();

    EXPECT_EQ(writer.ask("PRAGMA journal_mode"), "wal");
    EXPECT_EQ(errors(), Texts{});
}

// A program that died in the middle of a write has left the way back beside the store.
TEST_F(AStore, WithAnUnfinishedWriteIsBackAtTheLastOneThatWasFinished)
{
    start();
    expectASearchThatWorks();
    stopService();
    {
        Writer writer(file());
        writer.run("PRAGMA cache_size = 1; PRAGMA cache_spill = 1");
        writer.run("BEGIN IMMEDIATE");
        writer.run("UPDATE Commerce SET totalCount = 99, productCountInCart = 99");
        writer.run("CREATE TABLE Spill (text TEXT)");
        for (int i = 0; i < 50; ++i)
            writer.run("INSERT INTO Spill VALUES (hex(zeroblob(4000)))");
        fs::copy(file(), root + "/unfinished");
        fs::copy(file() + "-journal", root + "/unfinished-journal");
        writer.run("ROLLBACK");
    }
    fs::rename(root + "/unfinished", file());
    fs::rename(root + "/unfinished-journal", file() + "-journal");

    startService();

    EXPECT_EQ(status(), (StatusRecord{1, 1, 0, {}, {}}));
    EXPECT_FALSE(fs::exists(file() + "-journal"));
    expectASearchThatWorks();
}

}  // namespace

}  // namespace ServiceTest
