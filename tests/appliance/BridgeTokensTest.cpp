// The tokens file and the check of a request's tokens.
#include "Tokens.h"

#include "ScratchRoot.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

using namespace Appliance::MerchantBridge;

std::string tokensFile(const std::string& text)
{
    std::string file = TestSupport::ScratchRoot::file("tokens-under-test.txt");
    std::ofstream(file, std::ios::trunc) << text;
    return file;
}

TEST(ATokensFile, IsPartedAtTheLastCommaOfItsFirstLine)
{
    struct Row {
        const char* text;
        const char* session;
        const char* access;
    };
    for (const Row& row : {Row{"s,a\n", "s", "a"}, Row{"s,a", "s", "a"}, Row{"x,y,z\n", "x,y", "z"},
                           Row{"s,a\nother,line\n", "s", "a"}}) {
        const Tokens tokens = readTokens(tokensFile(row.text));
        EXPECT_EQ(tokens.session, row.session);
        EXPECT_EQ(tokens.access, row.access);
    }
}

TEST(ATokensFile, WithoutBothTokensIsRefusedAndNotQuoted)
{
    for (const char* text : {"", "\n", "secret\n", ",secret\n", "secret,\n", "\nsecret,secret\n"}) {
        try {
            readTokens(tokensFile(text));
            ADD_FAILURE() << text;
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string(error.what()).find("secret"), std::string::npos);
            EXPECT_NE(std::string(error.what()).find("tokens-under-test.txt"), std::string::npos);
        }
    }
}

TEST(ATokensFile, ThatIsMissingOrAFolderIsRefused)
{
    EXPECT_THROW(readTokens(TestSupport::ScratchRoot::file("no-such-file")), std::runtime_error);
    EXPECT_THROW(readTokens(TestSupport::ScratchRoot::path()), std::runtime_error);
}

TEST(ARequestsTokens, MustBothMatch)
{
    const Tokens wanted{"s", "a"};
    EXPECT_EQ(refusal(wanted, {"s", "a"}), std::nullopt);
    EXPECT_EQ(refusal(wanted, {"s", ""}), "X-Auth-Access-Token is missing");
    EXPECT_EQ(refusal(wanted, {"", "a"}), "X-Auth-Session-Token is missing");
    EXPECT_EQ(refusal(wanted, {"", ""}), "X-Auth-Access-Token is missing");
    EXPECT_EQ(refusal(wanted, {"s", "x"}), "X-Auth-Access-Token is not the one that was given out");
    EXPECT_EQ(refusal(wanted, {"x", "a"}), "X-Auth-Session-Token is not the one that was given out");
    EXPECT_EQ(refusal(wanted, {"a", "s"}), "X-Auth-Access-Token is not the one that was given out");
    EXPECT_EQ(refusal(wanted, {"s", "A"}), "X-Auth-Access-Token is not the one that was given out");
}

}  // namespace
