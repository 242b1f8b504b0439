#include "Commands.h"

#include <gtest/gtest.h>

#include "Refusal.h"

namespace {

using namespace Screen;
using Ui::Source;
using Mode = Ui::Confirmation::Mode;

template <typename Wanted>
Wanted parsed(const std::string& path, const std::string& body)
{
    return std::get<Wanted>(parseCommand(path, body));
}

TEST(APageCommand, IsASearchAtAMerchant)
{
    const auto command = parsed<SearchCommand>(
        "/api/search", R"({"source":"merchant","merchant":"freshmart","term":"oat milk"})");
    EXPECT_EQ(command.source, Source::Merchant);
    EXPECT_EQ(command.merchant, "freshmart");
    EXPECT_EQ(command.term, "oat milk");
}

TEST(APageCommand, IsASearchAtTheRetailerWhoHasNoMerchants)
{
    const auto command =
        parsed<SearchCommand>("/api/search", R"({"source":"retailer","merchant":7,"term":"우유"})");
    EXPECT_EQ(command.source, Source::Retailer);
    EXPECT_EQ(command.merchant, "");
    EXPECT_EQ(command.term, "우유");
}

TEST(APageCommand, IsASentenceASwitchOrAMode)
{
    EXPECT_EQ(parsed<SayCommand>("/api/say", R"({"sentence":"add to cart"})").sentence, "add to cart");
    EXPECT_EQ(parsed<SwitchCommand>("/api/switch", R"({"id":"503","on":true})").id, "503");
    EXPECT_TRUE(parsed<SwitchCommand>("/api/switch", R"({"id":"503","on":true})").on);
    EXPECT_EQ(parsed<ConfirmCommand>("/api/confirm", R"({"mode":"late"})").mode, Mode::Late);
}

TEST(APageCommand, HasItsPath)
{
    for (const char* path : {"/api/search", "/api/say", "/api/switch", "/api/confirm"}) {
        EXPECT_TRUE(isCommandPath(path)) << path;
    }
    for (const char* path : {"/api", "/api/", "/api/search/", "/events", "/", ""}) {
        EXPECT_FALSE(isCommandPath(path)) << path;
    }
}

struct Bad {
    const char* path;
    std::string body;
    const char* why;
};

class ABadPageCommand : public testing::TestWithParam<Bad> {};

TEST_P(ABadPageCommand, IsRefusedWithAReason)
{
    try {
        parseCommand(GetParam().path, GetParam().body);
        FAIL() << "taken: " << GetParam().body.substr(0, 80);
    } catch (const Appliance::StandIn::Refusal& refusal) {
        EXPECT_EQ(refusal.status, 400);
        EXPECT_STREQ(refusal.what(), GetParam().why);
    }
}

const std::string longText(TextBytes + 1, 'x');

INSTANTIATE_TEST_SUITE_P(
    Each, ABadPageCommand,
    testing::Values(
        Bad{"/api/say", "", "the body is no JSON object"},
        Bad{"/api/say", "[]", "the body is no JSON object"},
        Bad{"/api/say", R"({"sentence":)", "the body is no JSON object"},
        Bad{"/api/say", "{}", "\"sentence\" is missing"},
        Bad{"/api/say", R"({"sentence":1})", "\"sentence\" is no text"},
        Bad{"/api/say", R"({"sentence":"  "})", "\"sentence\" is empty"},
        Bad{"/api/say", R"({"sentence":"a\nb"})", "\"sentence\" has control characters"},
        Bad{"/api/say", R"({"sentence":"a\u0000b"})", "\"sentence\" has control characters"},
        Bad{"/api/say", R"({"sentence":")" + longText + "\"}", "\"sentence\" is longer than 1000 bytes"},
        Bad{"/api/search", R"({"term":"milk"})", "\"source\" is missing"},
        Bad{"/api/search", R"({"source":"shop","term":"milk"})",
            "\"source\" is neither merchant nor retailer"},
        Bad{"/api/search", R"({"source":"merchant","term":"milk"})", "\"merchant\" is missing"},
        Bad{"/api/search", R"({"source":"retailer"})", "\"term\" is missing"},
        Bad{"/api/switch", R"({"id":"503"})", "\"on\" is missing"},
        Bad{"/api/switch", R"({"id":"503","on":1})", "\"on\" is neither true nor false"},
        Bad{"/api/confirm", R"({"mode":"soon"})", "\"mode\" is none of now, late, fail and never"}));

}  // namespace
