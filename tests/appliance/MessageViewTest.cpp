#include "MessageView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace {

using Appliance::BusMessage;
using Tool::Detail;
using Tool::messageText;
using Kind = BusMessage::Kind;

constexpr char Search[] = "http://carvoy-service/appcontrol/operation/search";

class AMessageAsText : public testing::Test {
  protected:
    AMessageAsText()
    {
        setenv("TZ", "UTC", 1);
        tzset();
    }

    static BusMessage launch()
    {
        BusMessage message;
        message.number = 3;
        message.at = 1'700'000'000'045;
        message.from = "org.example.a";
        message.to = "org.example.b";
        message.operation = Search;
        message.extras.texts = {{"key_merchant", "freshmart"}, {"key_term", "milk"}};
        message.extras.lists = {{"key_names", {"Milk", "우유"}}, {"key_none", {}}};
        return message;
    }

    static BusMessage answer(Kind kind, const std::string& result, const std::string& error)
    {
        BusMessage message = launch();
        message.number = 12345;
        message.kind = kind;
        message.extras = {};
        message.result = result;
        message.error = error;
        message.answers = 3;
        return message;
    }
};

TEST_F(AMessageAsText, IsOneLine)
{
    EXPECT_EQ(messageText(launch(), Detail::Brief, {}),
              "22:13:20.045  #3    launch   org.example.a → org.example.b  service:search  "
              "key_merchant=freshmart  key_term=milk  key_names[2]  key_none[0]\n");
}

TEST_F(AMessageAsText, HasALineForEachTextWhereAllIsWanted)
{
    BusMessage message = launch();
    message.uri = "http://example.org/";
    EXPECT_EQ(messageText(message, Detail::Whole, {}),
              std::string("22:13:20.045  #3    launch   org.example.a → org.example.b  ") + Search +
                  "\n"
                  "    uri http://example.org/\n"
                  "    key_merchant = freshmart\n"
                  "    key_term = milk\n"
                  "    key_names[0] = Milk\n"
                  "    key_names[1] = 우유\n"
                  "    key_none[]\n");
}

TEST_F(AMessageAsText, TellsWhatItAnswers)
{
    EXPECT_EQ(messageText(answer(Kind::Reply, "succeeded", ""), Detail::Brief, {}),
              "22:13:20.045  #12345  reply    org.example.a → org.example.b  service:search  to #3  "
              "succeeded\n");
    EXPECT_EQ(messageText(answer(Kind::Refusal, "", "org.example.Error: no"), Detail::Brief, {}),
              "22:13:20.045  #12345  refusal  org.example.a → org.example.b  service:search  to #3  "
              "org.example.Error: no\n");
    BusMessage unknown = answer(Kind::Reply, "", "");
    unknown.answers = 0;
    unknown.operation = "";
    EXPECT_EQ(messageText(unknown, Detail::Brief, {}),
              "22:13:20.045  #12345  reply    org.example.a → org.example.b  another result\n");
}

TEST_F(AMessageAsText, IsColouredForATerminal)
{
    const Tool::Style style{true, 80};
    const auto text = [&style](const BusMessage& message) {
        return messageText(message, Detail::Brief, style);
    };
    EXPECT_NE(text(launch()).find("\x1B[1mservice:search\x1B[0m"), std::string::npos);
    EXPECT_NE(text(answer(Kind::Reply, "succeeded", "")).find("\x1B[32mreply  \x1B[0m"), std::string::npos);
    EXPECT_NE(text(answer(Kind::Reply, "failed", "")).find("\x1B[31mfailed\x1B[0m"), std::string::npos);
    EXPECT_NE(text(answer(Kind::Refusal, "", "no")).find("\x1B[31mno\x1B[0m"), std::string::npos);
}

TEST_F(AMessageAsText, IsCutByCharactersUnlessAllIsWanted)
{
    std::string sixty;
    for (int i = 0; i < 60; ++i) {
        sixty += "é";
    }
    BusMessage message = launch();
    message.extras.texts = {{"k", sixty}};
    EXPECT_NE(messageText(message, Detail::Brief, {}).find("k=" + sixty + "  "), std::string::npos);
    message.extras.texts = {{"k", sixty + "éé"}};
    EXPECT_NE(messageText(message, Detail::Brief, {}).find("k=" + sixty + "…  "), std::string::npos);
    EXPECT_NE(messageText(message, Detail::Whole, {}).find("k = " + sixty + "éé\n"), std::string::npos);
}

// Whatever part a peer chooses, and however much is shown.
TEST_F(AMessageAsText, HasNoControlCharacterOfAPeers)
{
    const std::string evil = "\x1B[2J\r\n\x07\xC2\x9B\x7F";
    for (const Kind kind : {Kind::Launch, Kind::Reply, Kind::Refusal, Kind::Voice}) {
        BusMessage message = answer(kind, evil, evil);
        message.from = message.to = message.operation = message.uri = evil;
        message.extras.texts = {{evil, evil}};
        message.extras.lists = {{evil + "list", {evil, evil}}, {evil + "none", {}}};
        for (const Detail detail : {Detail::Brief, Detail::Whole}) {
            const std::string text = messageText(message, detail, {});
            EXPECT_EQ(text.find_first_of("\x1B\r\x07\x7F"), std::string::npos) << text;
            EXPECT_EQ(text.find("\xC2\x9B"), std::string::npos) << text;
            const auto lines = std::count(text.begin(), text.end(), '\n');
            EXPECT_EQ(lines, detail == Detail::Brief ? 1 : 6) << text;
        }
    }
}

}  // namespace
