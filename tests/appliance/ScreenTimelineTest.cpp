#include "Timeline.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using Screen::Timeline;
using Kind = Timeline::News::Kind;

json wholeOf(const Timeline& timeline)
{
    return json::parse(timeline.whole().text);
}

TEST(ATimeline, BeginsWithAStateInWhichNothingIsKnown)
{
    const Timeline timeline(2s);
    const json whole = wholeOf(timeline);
    EXPECT_EQ(whole.at("beat"), 2000);
    EXPECT_EQ(whole.at("events"), json::array());
    EXPECT_EQ(whole.at("kept").at("messages"), Timeline::MessagesKept);
    EXPECT_EQ(whole.at("kept").at("log"), Timeline::LogKept);
    EXPECT_EQ(whole.at("base").at("card"), json());
    EXPECT_EQ(whole.at("base").at("messages"), json::array());
    EXPECT_EQ(timeline.whole().last, 0U);
}

TEST(ATimeline, TellsEachRunByANameOfItsOwn)
{
    EXPECT_NE(wholeOf(Timeline(2s)).at("run"), wholeOf(Timeline(2s)).at("run"));
}

TEST(ATimeline, KeepsEventsInTheirOrderWithTheirTime)
{
    Timeline timeline(2s);
    timeline.put("flag", 1);
    timeline.put("log", {{"line", "first"}});
    timeline.put("log", {{"line", "first"}});
    const json events = wholeOf(timeline).at("events");
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].at("name"), "flag");
    EXPECT_EQ(events[0].at("data"), 1);
    EXPECT_EQ(events[2].at("data").at("line"), "first");
    EXPECT_GT(events[0].at("at"), 1'600'000'000'000);
    EXPECT_LE(events[0].at("at"), events[2].at("at"));
}

TEST(ATimeline, MakesNoEventOfWhatIsAsItWas)
{
    Timeline timeline(2s);
    timeline.put("record", nullptr);
    timeline.put("flag", 1);
    timeline.put("flag", 1);
    timeline.put("flag", 2);
    timeline.put("flag", 1);
    EXPECT_EQ(timeline.whole().last, 3U);
}

TEST(ATimeline, MakesTheOldestEventsPartOfTheStateTheyBeginWith)
{
    Timeline timeline(2s);
    timeline.put("flag", 7);
    timeline.put("log", {{"line", "oldest"}});
    for (std::size_t i = 0; i < Timeline::EventsKept; ++i) {
        timeline.put("message", {{"number", i}});
    }
    const json whole = wholeOf(timeline);
    EXPECT_EQ(whole.at("events").size(), Timeline::EventsKept);
    EXPECT_EQ(whole.at("base").at("flag"), 7);
    ASSERT_EQ(whole.at("base").at("log").size(), 1U);
    EXPECT_EQ(whole.at("base").at("log")[0].at("line"), "oldest");
    EXPECT_GT(whole.at("base").at("log")[0].at("at"), 1'600'000'000'000);
}

TEST(ATimeline, BoundsTheListsOfItsState)
{
    Timeline timeline(2s);
    for (std::size_t i = 0; i < Timeline::EventsKept + Timeline::MessagesKept + 1; ++i) {
        timeline.put("message", {{"number", i}});
    }
    const json messages = wholeOf(timeline).at("base").at("messages");
    ASSERT_EQ(messages.size(), Timeline::MessagesKept);
    EXPECT_EQ(messages.front().at("number"), 1);
    EXPECT_EQ(messages.back().at("number"), Timeline::MessagesKept);
}

TEST(ATimeline, BoundsTheBytesOfWhatItKeeps)
{
    Timeline timeline(2s);
    const json big = {{"text", std::string(40'000, 'x')}};
    for (int i = 0; i < 1000; ++i) {
        timeline.put("message", big);
        timeline.put("partner", {{"text", std::string(40'000, 'x')}, {"number", i}});
    }
    const Timeline::Whole whole = timeline.whole();
    EXPECT_LT(whole.text.size(), 3 * Timeline::BytesKept);
    const json state = json::parse(whole.text);
    EXPECT_EQ(state.at("events").back().at("data").at("number"), 999);
    EXPECT_GT(state.at("base").at("messages").size(), 0U);
}

TEST(ATimeline, KeepsTheLatestOfWhatIsLargerThanItKeeps)
{
    Timeline timeline(2s);
    timeline.put("card", {{"text", std::string(2 * Timeline::BytesKept, 'x')}});
    timeline.put("message", {{"text", std::string(2 * Timeline::BytesKept, 'x')}});
    const json whole = wholeOf(timeline);
    EXPECT_EQ(whole.at("events").size(), 0U);
    EXPECT_EQ(whole.at("base").at("card").at("text").get<std::string>().size(), 2 * Timeline::BytesKept);
    EXPECT_EQ(whole.at("base").at("messages").size(), 0U);
    EXPECT_EQ(timeline.newsSince(0, 0ms).kind, Kind::TooMuch);
}

TEST(ATimeline, WritesBytesThatAreNoTextAsReplacements)
{
    Timeline timeline(2s);
    timeline.put("log", {{"line", "a\xFFz"}});
    EXPECT_EQ(wholeOf(timeline).at("events")[0].at("data").at("line"), "a\xEF\xBF\xBDz");
}

TEST(ATimeline, HandsOutWhatIsNewSinceANumber)
{
    Timeline timeline(2s);
    timeline.put("flag", 1);
    const auto last = timeline.whole().last;
    timeline.put("flag", 2);
    timeline.put("flag", 3);
    const auto news = timeline.newsSince(last, 0ms);
    ASSERT_EQ(news.kind, Kind::Events);
    ASSERT_EQ(news.events.size(), 2U);
    EXPECT_EQ(json::parse(news.events[0]).at("data"), 2);
    EXPECT_EQ(news.last, last + 2);
    EXPECT_EQ(timeline.newsSince(news.last, 1ms).kind, Kind::Nothing);
}

TEST(ATimeline, SaysWhenSomeOfItIsNoLongerThere)
{
    Timeline timeline(2s);
    for (std::size_t i = 0; i <= Timeline::EventsKept; ++i) {
        timeline.put("message", {{"number", i}});
    }
    EXPECT_EQ(timeline.newsSince(0, 0ms).kind, Kind::TooMuch);
    EXPECT_EQ(timeline.newsSince(1, 0ms).events.size(), Timeline::EventsKept);
}

TEST(ATimeline, WakesWhoWaitsForNews)
{
    Timeline timeline(2s);
    std::thread putting([&timeline] { timeline.put("flag", 1); });
    EXPECT_EQ(timeline.newsSince(0, 60s).kind, Kind::Events);
    putting.join();
}

TEST(ATimeline, EndsAllWaits)
{
    Timeline timeline(2s);
    std::thread ending([&timeline] { timeline.end(); });
    EXPECT_EQ(timeline.newsSince(0, 60s).kind, Kind::Ended);
    ending.join();
    EXPECT_TRUE(timeline.whole().isEnded);
    EXPECT_EQ(timeline.whole().text, "");
    timeline.put("flag", 1);
    EXPECT_EQ(timeline.newsSince(0, 60s).kind, Kind::Ended);
}

TEST(ATimeline, IsReadWhileItIsWritten)
{
    Timeline timeline(2s);
    constexpr int count = 5000;
    std::thread putting([&timeline] {
        for (int i = 1; i <= count; ++i) {
            timeline.put("flag", i);
        }
    });
    json seen;
    auto whole = timeline.whole();
    for (std::uint64_t last = whole.last; last < count;) {
        const auto news = timeline.newsSince(last, 60s);
        if (news.kind == Kind::TooMuch) {
            last = timeline.whole().last;
            continue;
        }
        ASSERT_EQ(news.kind, Kind::Events);
        ASSERT_EQ(json::parse(news.events.front()).at("data"), last + 1);
        ASSERT_EQ(json::parse(news.events.back()).at("data"), news.last);
        last = news.last;
    }
    putting.join();
}

}  // namespace
