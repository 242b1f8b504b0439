// What the service has and no scenario of its process comes to, while its calls fail: the web storage and
// whole files. The calls of this very process fail.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "DBControl.h"
#include "FaultControl.h"
#include "FaultTable.h"
#include "FileHelper.h"
#include "PlatformLog.h"
#include "ScratchRoot.h"
#include "SiteValues.h"
#include "Sweep.h"

namespace Faults {

namespace {

using Carvoy::DBControl;
using TestSupport::ScratchRoot;
using Texts = std::vector<std::string>;

std::unique_ptr<FaultControl> faults;

// Before the static objects of the service's, which call what may fail, and behind the scratch folder.
__attribute__((constructor(102))) void plan()
{
    const std::string root = std::getenv("APPLIANCE_ROOT");
    setenv("APPLIANCE_DLOG", (root + "/platform.log").c_str(), 1);
    setenv(PlanVariable, (root + "/faults").c_str(), 1);
    const FaultControl file(root + "/faults");
}

void execute(const std::string& path, const char* sql)
{
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
}

class LibraryWithFaults : public testing::TestWithParam<Mode> {
  protected:
    static void SetUpTestSuite() { faults = std::make_unique<FaultControl>(ScratchRoot::file("faults")); }
    static void TearDownTestSuite() { faults.reset(); }

    void forgetLog() const { std::ofstream(logPath, std::ios::trunc); }

    Texts errors() const
    {
        Texts texts;
        for (const ServiceTest::LogLine& line : ServiceTest::PlatformLog(logPath).lines()) {
            if (line.level == "error")
                texts.push_back(line.message);
        }
        return texts;
    }

    /** An error of the table's that ends in an ellipsis goes on with a path or a reason. */
    static bool fits(const std::string& error, const std::string& expected)
    {
        const std::string more = "…";
        const std::size_t end = expected.rfind(more);
        return end == std::string::npos ? error == expected : error.compare(0, end, expected, 0, end) == 0;
    }

    void expectErrors(const std::string& scenario, const Fault& fault) const
    {
        const FaultTable table(scenario);
        const Outcome* const outcome = table.find(fault.function, fault.call);
        const Texts logged = errors();
        ASSERT_TRUE(outcome) << "no row in the table; " << testing::PrintToString(logged);
        const Texts& expected = outcome->errors;
        if (fault.mode == Mode::Once) {
            EXPECT_TRUE(std::equal(logged.begin(), logged.end(), expected.begin(), expected.end(), fits))
                << testing::PrintToString(logged);
        } else if (!expected.empty() && fault.function != "dlog_print") {
            EXPECT_TRUE(!logged.empty() && fits(logged.front(), expected.front()))
                << testing::PrintToString(logged);
        }
    }

    const std::string logPath = ScratchRoot::file("platform.log");
};

TEST_P(LibraryWithFaults, ReadsTheWebStorageAfterwards)
{
    const std::string path = ScratchRoot::file(
        "apps_rw/" CARVOY_PARTNER_APP_ID
        "/data/chromium-efl/data/Local Storage/https_" CARVOY_MERCHANT_BRIDGE_HOST "_0.localstorage");
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    execute(path,
            "DROP TABLE IF EXISTS ItemTable; CREATE TABLE ItemTable(key TEXT, value BLOB);"
            "INSERT INTO ItemTable VALUES('X-Auth-Access-Token', CAST('the-token' AS BLOB))");
    std::string token;
    DBControl::getXAuthAccessToken();

    const auto check = [&](const Fault& fault) {
        expectErrors("web storage", fault);
        EXPECT_TRUE(token == "the-token" || token.empty()) << token;
        EXPECT_EQ(DBControl::getXAuthAccessToken(), "the-token");
    };
    sweep(*faults,
          {"web storage", [&] { forgetLog(); }, [&] { token = DBControl::getXAuthAccessToken(); }, check},
          GetParam());
}

bool writeReadAndRemove(const std::string& path, const std::string& text)
{
    Util::FileContent content(path.c_str());
    content.nullTerminate = true;
    content.setCopiedData(text.data(), static_cast<int>(text.size()));
    Util::FileContent copy(path.c_str());
    const bool isDone = Util::FileHelper::write(content) && Util::FileHelper::read(copy);
    const bool isRemoved = Util::FileHelper::remove(copy);
    return isDone && isRemoved && copy.data && std::string(copy.data, copy.size) == text + '\0';
}

TEST_P(LibraryWithFaults, WritesAndReadsWholeFilesAfterwards)
{
    const std::string path = ScratchRoot::file("whole");
    writeReadAndRemove(path, "first");

    const auto prepare = [&] {
        std::ofstream(path) << "older";
        forgetLog();
    };
    const auto check = [&](const Fault& fault) {
        expectErrors("files", fault);
        EXPECT_TRUE(writeReadAndRemove(path, "newer"));
    };
    sweep(*faults, {"files", prepare, [&] { writeReadAndRemove(path, "new"); }, check}, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Each, LibraryWithFaults,
                         testing::Values(Mode::Once, Mode::TwoInARow, Mode::FromThenOn),
                         [](const auto& each) { return nameOf(each.param); });

}  // namespace

}  // namespace Faults
