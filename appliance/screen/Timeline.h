// What the page is told: how things stood, and what happened since, in the form that docs/screen.md
// describes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Screen {

// All functions may be called from any thread; none holds another up for long. What is kept is bounded in
// number and in bytes: the oldest events become part of the state that the others begin with.
class Timeline {
  public:
    static constexpr std::size_t EventsKept = 2000;
    static constexpr std::size_t MessagesKept = 300;
    static constexpr std::size_t LogKept = 1000;
    static constexpr std::size_t BytesKept = 1024 * 1024;  // of the events, and of each list of the state

    // `beat`: told to the page, which expects to hear something that often.
    explicit Timeline(std::chrono::milliseconds beat);

    // Adds an event. "message" and "log" are added to their lists, and their data is an object that is not
    // empty; data of any other name replaces what had that name, and makes no event where it is the same.
    void put(const std::string& name, const nlohmann::json& data);

    struct Whole {
        std::string text;        // JSON, one line
        std::uint64_t last = 0;  // the number of its last event
        bool isEnded = false;    // then there is no text
    };
    Whole whole() const;

    struct News {
        enum class Kind { Events, Nothing, TooMuch, Ended } kind = Kind::Nothing;
        std::vector<std::string> events;  // JSON, one line each
        std::uint64_t last = 0;
    };
    // Waits until there are events behind the one of that number, for at most that time. TooMuch: some of
    // them are no longer there, and only the whole tells.
    News newsSince(std::uint64_t last, std::chrono::milliseconds limit) const;

    // Ends all waits, also those to come.
    void end();

  private:
    using Text = std::shared_ptr<const std::string>;

    struct Event {
        std::int64_t at;  // milliseconds since 1970
        std::string name;
        Text data;  // JSON

        std::string text() const;   // as an event
        std::string entry() const;  // in its list
    };

    struct List {
        std::deque<Event> entries;
        std::size_t bytes = 0;
    };

    // All that is known, to be put into words without the lock.
    struct State {
        std::map<std::string, Text> values;
        std::map<std::string, List> lists;
        std::deque<Event> events;
    };

    void fold();
    News eventsSince(std::uint64_t last) const;
    std::string textOf(const State& state) const;

    const std::string run_;
    const std::chrono::milliseconds beat_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    State state_;
    std::size_t eventBytes_ = 0;
    std::map<std::string, Text> now_;  // what replaces, as it is after the last event
    std::uint64_t last_ = 0;
    bool ended_ = false;
};

}  // namespace Screen
