// The file in which the partner app leaves the tokens of its login.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "SearchControlFixture.h"

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

class TokenFileTest : public SearchControlFixture {
  protected:
    /** Session and access token, which begin as "?" each. */
    Texts read()
    {
        std::string tokens[2] = {"?", "?"};
        search_->checkMCLogin(tokens);
        return {tokens[0], tokens[1]};
    }

    Texts read(const std::string& content)
    {
        writeFile(tokenFile(), content);
        return read();
    }
};

}  // namespace

TEST_F(TokenFileTest, TheSessionTokenStandsBeforeTheAccessToken)
{
    EXPECT_EQ(read("session,access\n"), (Texts{"session", "access"}));
    EXPECT_EQ(logged(), Texts());
}

TEST_F(TokenFileTest, AMissingFileChangesNothing)
{
    std::filesystem::remove(tokenFile());
    EXPECT_EQ(read(), (Texts{"?", "?"}));
    EXPECT_EQ(logged(), Texts{"checkMCLogin: Not Open MC Login File!"});
    EXPECT_EQ(loggedErrors(), Texts());
}

TEST_F(TokenFileTest, AMissingFolderChangesNothing)
{
    std::filesystem::remove_all(std::filesystem::path(tokenFile()).parent_path());
    EXPECT_EQ(read(), (Texts{"?", "?"}));
    EXPECT_EQ(logged(), Texts{"checkMCLogin: Not Open MC Login File!"});
}

TEST_F(TokenFileTest, AnEmptyFileHoldsTwoEmptyTokens)
{
    EXPECT_EQ(read(""), (Texts{"", ""}));
    EXPECT_EQ(read("\n"), (Texts{"", ""}));
    EXPECT_EQ(logged(), Texts());
}

TEST_F(TokenFileTest, ALineWithoutACommaIsBothTokens)
{
    EXPECT_EQ(read("token\n"), (Texts{"token", "token"}));
}

TEST_F(TokenFileTest, TheLastCommaParts)
{
    EXPECT_EQ(read("x,y,z\n"), (Texts{"x,y", "z"}));
    EXPECT_EQ(read(",,\n"), (Texts{",", ""}));
    EXPECT_EQ(read(",\n"), (Texts{"", ""}));
    EXPECT_EQ(read("session,\n"), (Texts{"session", ""}));
    EXPECT_EQ(read(",access\n"), (Texts{"", "access"}));
}

TEST_F(TokenFileTest, OnlyTheFirstLineCounts)
{
    EXPECT_EQ(read("session,access\nother,tokens\n"), (Texts{"session", "access"}));
    EXPECT_EQ(read("token\nother,tokens\n"), (Texts{"token", "token"}));
    EXPECT_EQ(read("\nsession,access\n"), (Texts{"", ""}));
}

TEST_F(TokenFileTest, TheFinalNewLineMayBeMissing)
{
    EXPECT_EQ(read("session,access"), (Texts{"session", "access"}));
}

TEST_F(TokenFileTest, ACarriageReturnBelongsToTheLine)
{
    EXPECT_EQ(read("session,access\r\n"), (Texts{"session", "access\r"}));
}

TEST_F(TokenFileTest, BlanksAndBytesAreKept)
{
    EXPECT_EQ(read(" session , access \n"), (Texts{" session ", " access "}));
    EXPECT_EQ(read("s\xff\x80,\xc3\xa8\n"), (Texts{"s\xff\x80", "\xc3\xa8"}));
    EXPECT_EQ(read(std::string("s\0s,a\0a\n", 8)), (Texts{std::string("s\0s", 3), std::string("a\0a", 3)}));
}

TEST_F(TokenFileTest, ALineOfAMegabyteIsReadWhole)
{
    const std::string session(1024 * 1024, 's');
    EXPECT_EQ(read(session + ",access"), (Texts{session, "access"}));
    EXPECT_EQ(read(session), (Texts{session, session}));
}

// A folder opens like a file, but has no line.
TEST_F(TokenFileTest, AFolderInItsPlaceHoldsNoTokens)
{
    std::filesystem::remove(tokenFile());
    std::filesystem::create_directory(tokenFile());
    EXPECT_EQ(read(), (Texts{"", ""}));
}

TEST_F(TokenFileTest, AFolderInItsPlaceIsNoLogin)
{
    std::filesystem::remove(tokenFile());
    std::filesystem::create_directory(tokenFile());
    EXPECT_EQ(search_->processSearch("freshmart", "milk"), 2);
    EXPECT_EQ(loggedErrors(), Texts{"searchProduct: Invalid access token"});
}

TEST_F(TokenFileTest, ALongTokenIsSentWhole)
{
    const std::string session(100 * 1024, 's');
    writeFile(tokenFile(), session + ",access");
    merchant_.answerSearch(401, "");
    EXPECT_EQ(search_->processSearch("freshmart", "milk"), 2);
    ASSERT_EQ(merchant_.requests().size(), 1u);
    EXPECT_NE(merchant_.requests()[0].head.find("X-Auth-Session-Token:" + session + "\r\n"),
              std::string::npos);
}

// The HTTP client has a limit of its own for a request.
TEST_F(TokenFileTest, ATokenOfAMegabyteMakesNoRequest)
{
    writeFile(tokenFile(), std::string(1024 * 1024, 's') + ",access");
    EXPECT_EQ(search_->processSearch("freshmart", "milk"), 3);
    EXPECT_TRUE(holds(loggedErrors(), "searchProduct: curl perform failed: 0"));
    EXPECT_EQ(merchant_.requests().size(), 0u);
}

}  // namespace Carvoy
