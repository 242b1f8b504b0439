// System settings: the file of a key to the byte, which keys there are, and whole values for every reader.
#include <gtest/gtest.h>
#include <vconf.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "ChildProcess.h"
#include "ScratchRoot.h"

namespace {

namespace fs = std::filesystem;
using TestSupport::ChildProcess;
using TestSupport::ScratchRoot;

constexpr const char* kKey = "db/nuvex/e-commerce/response";

fs::path fileOf(const std::string& key)
{
    return fs::path(ScratchRoot::path()) / "vconf" / key;
}

std::string contentOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::set<std::string> namesIn(const fs::path& folder)
{
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.insert(entry.path().filename());
    return names;
}

void store(const std::string& key, const std::string& content)
{
    fs::create_directories(fileOf(key).parent_path());
    std::ofstream(fileOf(key), std::ios::binary) << content;
}

class Vconf : public testing::Test {
  protected:
    Vconf() { fs::remove_all(fs::path(ScratchRoot::path()) / "vconf"); }
};

class StrictVconf : public Vconf {
  protected:
    StrictVconf() { setenv("APPLIANCE_VCONF_STRICT", "1", 1); }
    ~StrictVconf() override { unsetenv("APPLIANCE_VCONF_STRICT"); }
};

}  // namespace

TEST_F(Vconf, AValueIsDecimalAndANewlineInTheFileOfItsKey)
{
    EXPECT_EQ(vconf_set_int(kKey, 1), VCONF_OK);
    EXPECT_EQ(contentOf(fileOf(kKey)), "1\n");
    EXPECT_EQ(vconf_get_ext_errno(), VCONF_OK);
}

TEST_F(Vconf, EveryPrefixIsAFolder)
{
    for (const std::string key : {"db/a", "file/a", "memory/a"}) {
        EXPECT_EQ(vconf_set_int(key.c_str(), 7), VCONF_OK);
        EXPECT_EQ(contentOf(fileOf(key)), "7\n");
    }
}

TEST_F(Vconf, ReadsBackWhatWasSet)
{
    for (const int value : {0, 1, -1, INT_MAX, INT_MIN}) {
        int read = 5;
        EXPECT_EQ(vconf_set_int(kKey, value), VCONF_OK);
        EXPECT_EQ(contentOf(fileOf(kKey)), std::to_string(value) + "\n");
        EXPECT_EQ(vconf_get_int(kKey, &read), VCONF_OK);
        EXPECT_EQ(read, value);
    }
}

TEST_F(Vconf, ReplacingAValueLeavesNothingElseBehind)
{
    vconf_set_int(kKey, 1);
    vconf_set_int(kKey, 22);

    EXPECT_EQ(namesIn(fileOf(kKey).parent_path()), std::set<std::string>{"response"});
    EXPECT_EQ(contentOf(fileOf(kKey)), "22\n");
}

TEST_F(Vconf, OtherProgramsOfTheUserMayRead)
{
    vconf_set_int(kKey, 1);

    EXPECT_EQ(fs::status(fileOf(kKey)).permissions(), fs::perms(0644));
}

TEST_F(Vconf, RefusesWhatIsNoKey)
{
    const std::vector<const char*> keys = {nullptr,   "",      "db",      "db/",      "/db/a",  "d/a",
                                           "DB/a",    "dbx/a", "db//a",   "db/a/",    "db/./a", "db/a/..",
                                           "db/../a", "db/..", "file/..", "memory//", " db/a",  "../db/a"};
    for (const char* key : keys) {
        SCOPED_TRACE(key == nullptr ? "null" : key);
        int read = 5;
        EXPECT_EQ(vconf_set_int(key, 1), VCONF_ERROR);
        EXPECT_EQ(vconf_get_ext_errno(), VCONF_ERROR_WRONG_PREFIX);
        EXPECT_EQ(vconf_get_int(key, &read), VCONF_ERROR);
        EXPECT_EQ(vconf_get_ext_errno(), VCONF_ERROR_WRONG_PREFIX);
        EXPECT_EQ(read, 5);
    }
    EXPECT_FALSE(fs::exists(fs::path(ScratchRoot::path()) / "vconf"));
}

TEST_F(Vconf, DotsInsideASegmentArePartOfItsName)
{
    EXPECT_EQ(vconf_set_int("db/..a/.b/c..", 3), VCONF_OK);
    EXPECT_EQ(contentOf(fileOf("db/..a/.b/c..")), "3\n");
}

TEST_F(Vconf, GettingAKeyWithoutAValueFails)
{
    int read = 5;
    EXPECT_EQ(vconf_get_int(kKey, &read), VCONF_ERROR);
    EXPECT_EQ(vconf_get_ext_errno(), VCONF_ERROR);
    EXPECT_EQ(read, 5);
}

TEST_F(Vconf, GettingIntoNothingFails)
{
    vconf_set_int(kKey, 1);

    EXPECT_EQ(vconf_get_int(kKey, nullptr), VCONF_ERROR);
    EXPECT_EQ(vconf_get_ext_errno(), VCONF_ERROR_WRONG_VALUE);
}

TEST_F(Vconf, AStoredTextThatIsNoNumberIsOfAnotherType)
{
    for (const std::string text : {"", "\n", "abc\n", "1 2\n", "1\n\n", " 1\n", "0x1\n", "+1\n", "1.5\n",
                                   "2147483648\n", "-2147483649\n", "00000000000000000000000000001\n"}) {
        SCOPED_TRACE(text);
        store(kKey, text);
        int read = 5;
        EXPECT_EQ(vconf_get_int(kKey, &read), VCONF_ERROR);
        EXPECT_EQ(vconf_get_ext_errno(), VCONF_ERROR_WRONG_TYPE);
        EXPECT_EQ(read, 5);
    }
}

TEST_F(Vconf, AStoredNumberNeedsNoNewline)
{
    store(kKey, "42");
    int read = 5;

    EXPECT_EQ(vconf_get_int(kKey, &read), VCONF_OK);
    EXPECT_EQ(read, 42);
}

TEST_F(Vconf, AKeyWithKeysBelowItHasNoValue)
{
    vconf_set_int("db/a/b", 1);
    int read = 5;

    EXPECT_EQ(vconf_set_int("db/a", 1), VCONF_ERROR);
    EXPECT_EQ(vconf_get_int("db/a", &read), VCONF_ERROR);
    EXPECT_EQ(vconf_set_int("db/a/b/c", 1), VCONF_ERROR);
    EXPECT_EQ(namesIn(fileOf("db")), std::set<std::string>{"a"});
}

TEST_F(Vconf, AnOverlongNameFails)
{
    EXPECT_EQ(vconf_set_int(("db/" + std::string(300, 'n')).c_str(), 1), VCONF_ERROR);
    EXPECT_EQ(vconf_get_ext_errno(), VCONF_ERROR);
}

TEST_F(Vconf, EachThreadHasItsOwnReason)
{
    vconf_set_int(nullptr, 1);
    std::thread([] { EXPECT_EQ(vconf_get_ext_errno(), VCONF_OK); }).join();

    EXPECT_EQ(vconf_get_ext_errno(), VCONF_ERROR_WRONG_PREFIX);
}

TEST_F(Vconf, AReaderSeesTheOldValueOrTheNewOne)
{
    ASSERT_EQ(vconf_set_int(kKey, 1), VCONF_OK);
    ChildProcess once({STORE_PROBE, "set", kKey, "1", "500"});
    ChildProcess often({STORE_PROBE, "set", kKey, "-2147483648", "500"});
    bool running = true;
    while (running) {
        running = !once.wait(std::chrono::milliseconds(0)).inTime;
        int read = 5;
        ASSERT_EQ(vconf_get_int(kKey, &read), VCONF_OK);
        ASSERT_TRUE(read == 1 || read == INT_MIN) << read;
    }

    EXPECT_EQ(once.wait().status, 0);
    EXPECT_EQ(often.wait().status, 0);
    EXPECT_EQ(namesIn(fileOf(kKey).parent_path()), std::set<std::string>{"response"});
}

TEST_F(StrictVconf, AKeyThatNobodyDeclaredCannotBeSet)
{
    EXPECT_EQ(vconf_set_int(kKey, 1), VCONF_ERROR);
    EXPECT_EQ(vconf_get_ext_errno(), VCONF_ERROR);
    EXPECT_FALSE(fs::exists(fs::path(ScratchRoot::path()) / "vconf"));
}

TEST_F(StrictVconf, ADeclaredKeyCanBeSet)
{
    store(kKey, "0\n");

    EXPECT_EQ(vconf_set_int(kKey, 1), VCONF_OK);
    EXPECT_EQ(contentOf(fileOf(kKey)), "1\n");
}

TEST_F(StrictVconf, IsOffWithZeroAndWithNothing)
{
    for (const char* off : {"0", ""}) {
        setenv("APPLIANCE_VCONF_STRICT", off, 1);
        fs::remove(fileOf(kKey));
        EXPECT_EQ(vconf_set_int(kKey, 1), VCONF_OK);
    }
}
