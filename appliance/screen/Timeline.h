// What the page is told: how things stood, and what happened since, in the form that docs/screen.md
// describes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Screen {

// All functions may be called from any thread. What is kept is bounded: the oldest events become part of the
// state that the others begin with.
class Timeline {
  public:
    static constexpr std::size_t EventsKept = 2000;
    static constexpr std::size_t MessagesKept = 300;
    static constexpr std::size_t LogKept = 1000;

    // `beat`: told to the page, which expects to hear something that often.
    explicit Timeline(std::chrono::milliseconds beat);

    // Adds an event. "message" and "log" are added to their lists; data of any other name replaces what had
    // that name, and makes no event where it is the same.
    void put(const std::string& name, nlohmann::json data);

    struct Whole {
        std::string text;        // JSON, one line
        std::uint64_t last = 0;  // the number of its last event
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
    struct Event {
        std::int64_t at;  // milliseconds since 1970
        std::string name;
        nlohmann::json data;
        std::string text;
    };

    void fold(const Event& event);
    News eventsSince(std::uint64_t last) const;

    const std::string run_;
    const std::chrono::milliseconds beat_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    nlohmann::json base_;
    nlohmann::json now_;  // what replaces, as it is after the last event
    std::deque<Event> events_;
    std::uint64_t last_ = 0;
    bool ended_ = false;
};

}  // namespace Screen
