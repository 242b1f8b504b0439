// The file in which the retailer's app says whether the user is logged in.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "SearchEmartControlFixture.h"

namespace fs = std::filesystem;

using TestSupport::Calls;

namespace Carvoy {

namespace {

class EmartLoginFileTest : public SearchEmartControlFixture {
  protected:
    /** What a file with this content is read as, and what is logged of it. */
    void expectLogin(const std::string& content, bool isLogin, const Texts& log = {})
    {
        Calls::reset();
        writeFile(loginFile(), content);
        EXPECT_EQ(search_->checkEmartLogin(), isLogin) << content.substr(0, 100);
        EXPECT_EQ(logged(), log) << content.substr(0, 100);
    }

    /** Nobody is logged in, the search says so, and the retailer is not asked. */
    void expectNoSearch(const Texts& log)
    {
        Calls::reset();
        EXPECT_EQ(search_->processEmartSearch("milk"), NOT_LOGGED_IN);
        EXPECT_EQ(logged(), log);
        EXPECT_EQ(statusRecord(), (StatusRecord{0, 0, 0, {}, {}}));
        EXPECT_EQ(responseFlag(), 1);
        EXPECT_EQ(Calls::count("curl_easy_perform"), 0u);
        EXPECT_EQ(retailer_.requests().size(), 0u);
    }

    static std::string noMatch(const std::string& line)
    {
        return "checkEmartLogin: No matching value for emart - ecommerce login: " + line;
    }

    static inline const Texts NOT_OPEN = {"checkEmartLogin: Not Open Emart Login File!"};
};

}  // namespace

TEST_F(EmartLoginFileTest, LoginAnywhereInTheFirstLineIsALogin)
{
    for (const char* content :
         {"login\n", "login", "xxloginxx\n", "status: login now\n", "login\nlogout\n", "logout login\n",
          "loginlogout\n", "login\r\n", "\tlogin", "\xff\xfelogin", "로그인 login\n", "lologin\n"})
        expectLogin(content, true);
}

TEST_F(EmartLoginFileTest, LogoutIsNoLoginAndNotWorthALine)
{
    for (const char* content : {"logout\n", "logout", "xxlogoutxx\n", "logout\r\n", "logout\nlogin\n"})
        expectLogin(content, false);
}

TEST_F(EmartLoginFileTest, AnythingElseIsLoggedAndNoLogin)
{
    for (const char* line : {"LOGIN", "Login", "LOGOUT", "log in", "log", "logi", "l ogin", "0", "1", " ",
                             "%s%n", "\xff\x80", "로그인"}) {
        expectLogin(line + std::string("\n"), false, {noMatch(line)});
        expectLogin(line, false, {noMatch(line)});
        EXPECT_EQ(loggedErrors().size(), 1u);
    }
}

TEST_F(EmartLoginFileTest, OnlyTheFirstLineCounts)
{
    expectLogin("\nlogin\n", false, {noMatch("")});
    expectLogin("other\nlogin\n", false, {noMatch("other")});
    expectLogin("log\nin\n", false, {noMatch("log")});
    expectLogin("\r\nlogin\r\n", false, {noMatch("\r")});
    expectLogin("other\rlogin\n", true);
}

TEST_F(EmartLoginFileTest, AnEmptyFileIsNoLogin)
{
    expectLogin("", false, {noMatch("")});
    expectLogin("\n", false, {noMatch("")});
}

TEST_F(EmartLoginFileTest, AZeroByteDoesNotEndTheLine)
{
    expectLogin(std::string("a\0login\n", 8), true);
    expectLogin(std::string("LOG\0IN\n", 7), false, {noMatch("LOG")});
}

TEST_F(EmartLoginFileTest, ALineOfAMegabyteIsReadWhole)
{
    expectLogin(std::string(1024 * 1024, 'x') + "login", true);
    expectLogin(std::string(1024 * 1024, 'x') + "logout", false);
}

TEST_F(EmartLoginFileTest, AFileThatIsNotThereIsNoLogin)
{
    fs::remove(loginFile());
    EXPECT_FALSE(search_->checkEmartLogin());
    EXPECT_EQ(logged(), NOT_OPEN);
    EXPECT_EQ(loggedErrors(), Texts());
    expectNoSearch(NOT_OPEN);

    fs::remove_all(fs::path(loginFile()).parent_path());
    expectNoSearch(NOT_OPEN);
}

TEST_F(EmartLoginFileTest, AFileThatCannotBeOpenedIsNoLogin)
{
    fs::remove(loginFile());
    fs::create_symlink(loginFile(), loginFile());
    expectNoSearch(NOT_OPEN);
    fs::remove(loginFile());
    fs::create_symlink(loginFile() + "/nowhere", loginFile());
    expectNoSearch(NOT_OPEN);
    fs::remove(loginFile());
}

// Whoever may read everything reads this, too.
TEST_F(EmartLoginFileTest, AFileThatMayNotBeReadIsNoLogin)
{
    fs::permissions(loginFile(), fs::perms::none);
    const bool mayRead = access(loginFile().c_str(), R_OK) == 0;
    EXPECT_EQ(search_->checkEmartLogin(), mayRead);
    EXPECT_EQ(logged(), mayRead ? Texts() : NOT_OPEN);
}

// A folder opens like a file, but has no line.
TEST_F(EmartLoginFileTest, AFolderInItsPlaceIsNoLogin)
{
    fs::remove(loginFile());
    fs::create_directory(loginFile());
    expectNoSearch({noMatch("")});
}

TEST_F(EmartLoginFileTest, WithoutALoginThereIsNoSearch)
{
    writeFile(loginFile(), "logout\n");
    expectNoSearch({});
    writeFile(loginFile(), "LOGIN\n");
    expectNoSearch({noMatch("LOGIN")});
}

TEST_F(EmartLoginFileTest, EverySearchReadsTheFileAgain)
{
    answerWith({"{}"});
    search();
    writeFile(loginFile(), "logout\n");
    EXPECT_EQ(search_->processEmartSearch("milk"), NOT_LOGGED_IN);
    EXPECT_EQ(statusRecord(), (StatusRecord{0, 0, 0, {}, {}}));
    writeFile(loginFile(), "login\n");
    search();
    EXPECT_EQ(retailer_.countOf(RetailerServer::SEARCH_PATH), 2);
}

}  // namespace Carvoy
