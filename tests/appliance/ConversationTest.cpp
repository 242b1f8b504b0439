#include "Conversation.h"

#include <gtest/gtest.h>

#include "ConversationJson.h"

namespace {

using Assistant::Conversation;
using Assistant::Fate;
using Assistant::View;

TEST(AConversation, OpensItsViewWithTheFirstSentence)
{
    Conversation conversation;
    EXPECT_EQ(conversation.content().view, View::Closed);
    EXPECT_EQ(conversation.content().turn, 0);
    conversation.begin("check out", "Commerce Check Out", {"{}"});
    EXPECT_EQ(conversation.content().view, View::Open);
    EXPECT_EQ(conversation.content().turn, 1);
    EXPECT_EQ(conversation.content().fate, Fate::UnderWay);
}

TEST(AConversation, ForgetsTheFateOfTheSentenceBefore)
{
    Conversation conversation;
    conversation.begin("check out", "", {});
    conversation.settle("it is not running");
    EXPECT_EQ(conversation.content().fate, Fate::Failed);
    conversation.begin("check out", "", {});
    EXPECT_EQ(conversation.content().reason, "");
    conversation.settle("");
    EXPECT_EQ(conversation.content().fate, Fate::Delivered);
    EXPECT_EQ(conversation.content().turn, 2);
}

TEST(AConversation, KeepsOnlySoMuchOfWhatWasSaid)
{
    Conversation conversation;
    const std::string longText(1'000'000, 'x');
    conversation.begin(longText, "", std::vector<std::string>(1000, longText));
    EXPECT_LT(conversation.content().sentence.size(), 3000U);
    ASSERT_EQ(conversation.content().nlu.size(), Conversation::AnswersKept);
    EXPECT_LT(conversation.content().nlu[0].size(), 3000U);
}

TEST(AConversation, IsTheSameAfterItsWayThroughJson)
{
    Conversation conversation;
    conversation.begin("check out", "Commerce Check Out", {"{}"});
    conversation.settle("it is not running");
    conversation.noteReceived(
        {0, "2026-01-02T03:04:05.678Z", "op", "org.example", {{"key", "text"}}, "taken"});
    const nlohmann::json json = Assistant::toJson(conversation.content());
    EXPECT_EQ(json["view"], "open");
    EXPECT_EQ(json["fate"], "failed");
    EXPECT_EQ(json["turn"], 1);
    EXPECT_EQ(Assistant::toJson(Assistant::conversationFromJson(json)), json);
}

TEST(AConversation, IsNotReadFromWhatItIsNeverWrittenAs)
{
    const nlohmann::json json = Assistant::toJson(Conversation().content());
    EXPECT_NO_THROW(Assistant::conversationFromJson(json));
    for (const char* patch : {R"({"fate": "underway"})", R"({"view": "ajar"})", R"({"turn": -1})",
                              R"({"turn": 4294967296})", R"({"turn": "1"})", R"({"nlu": "text"})"}) {
        nlohmann::json damaged = json;
        damaged.update(nlohmann::json::parse(patch));
        EXPECT_ANY_THROW(Assistant::conversationFromJson(damaged)) << patch;
    }
}

}  // namespace
