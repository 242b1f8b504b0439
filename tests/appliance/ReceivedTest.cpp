#include "Received.h"

#include <gtest/gtest.h>

namespace {

using Appliance::Received;
using Appliance::ReceivedMessages;

TEST(TheReceivedMessages, AreCountedAlsoWhereTheOldestAreDropped)
{
    ReceivedMessages messages;
    EXPECT_EQ(Appliance::lastNumber(messages), 0);
    for (std::size_t i = 0; i < Appliance::MessagesKept + 3; ++i) {
        Appliance::note(messages, Received());
    }
    EXPECT_EQ(messages.size(), Appliance::MessagesKept);
    EXPECT_EQ(messages.front().number, 4);
    EXPECT_EQ(Appliance::lastNumber(messages), 103);
}

TEST(TheReceivedMessages, HaveNumbersThatFollowOneAnother)
{
    const auto numbered = [](std::initializer_list<int> numbers) {
        ReceivedMessages messages;
        for (const int number : numbers) {
            messages.push_back({number, "", "", "", {}, ""});
        }
        return messages;
    };
    EXPECT_TRUE(areCounted(ReceivedMessages()));
    EXPECT_TRUE(areCounted(numbered({1})));
    EXPECT_TRUE(areCounted(numbered({7, 8, 9})));
    EXPECT_FALSE(areCounted(numbered({0})));
    EXPECT_FALSE(areCounted(numbered({-1, 0, 1})));
    EXPECT_FALSE(areCounted(numbered({1, 3})));
    EXPECT_FALSE(areCounted(numbered({2, 2})));
    ReceivedMessages many;
    for (std::size_t i = 0; i < Appliance::MessagesKept; ++i) {
        Appliance::note(many, Received());
    }
    EXPECT_TRUE(areCounted(many));
    Received next;
    next.number = lastNumber(many) + 1;
    many.push_back(next);
    EXPECT_FALSE(areCounted(many));
}

TEST(TheReceivedMessages, KeepOnlySoMuchOfEach)
{
    Received received;
    const std::string longText(Appliance::BytesKept + 1, 'x');
    received.operation = longText;
    for (std::size_t i = 0; i < Appliance::ExtrasKept + 5; ++i) {
        received.extras[std::to_string(i) + longText] = longText;
    }
    ReceivedMessages messages;
    Appliance::note(messages, received);
    const Received& kept = messages.back();
    EXPECT_LT(kept.operation.size(), longText.size() + 3);
    EXPECT_EQ(kept.extras.size(), Appliance::ExtrasKept);
    for (const auto& [key, text] : kept.extras) {
        EXPECT_EQ(text, std::string(Appliance::BytesKept, 'x') + "…");
    }
}

TEST(AShortenedText, NeverEndsInsideACharacter)
{
    const std::string text = std::string(Appliance::BytesKept - 1, 'x') + "éé";
    EXPECT_EQ(Appliance::shortened(text), std::string(Appliance::BytesKept - 1, 'x') + "…");
    const std::string fits(Appliance::BytesKept, 'x');
    EXPECT_EQ(Appliance::shortened(fits), fits);
    EXPECT_EQ(Appliance::shortened(std::string(Appliance::BytesKept + 9, '\x80')), "…");
}

TEST(TheTime, IsUtcWithMilliseconds)
{
    const std::string time = Appliance::timeNow();
    ASSERT_EQ(time.size(), 24U) << time;
    EXPECT_EQ(time[10], 'T');
    EXPECT_EQ(time[19], '.');
    EXPECT_EQ(time.back(), 'Z');
}

}  // namespace
