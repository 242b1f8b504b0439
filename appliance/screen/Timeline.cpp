#include "Timeline.h"

#include <random>
#include <sstream>
#include <utility>

#include "JsonText.h"

namespace Screen {

namespace {

const char Messages[] = "messages";
const char Log[] = "log";

// The list that events of this name are added to; null for one that replaces.
const char* listOf(const std::string& name)
{
    if (name == "message") {
        return Messages;
    }
    return name == Log ? Log : nullptr;
}

std::size_t keptOf(const std::string& list)
{
    return list == Messages ? Timeline::MessagesKept : Timeline::LogKept;
}

std::int64_t millisecondsNow()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

// Tells two runs of the program apart, nothing more.
std::string freshRun()
{
    std::random_device device;
    std::ostringstream text;
    text << std::hex << device() << device();
    return text.str();
}

nlohmann::json emptyState()
{
    nlohmann::json state = {{Messages, nlohmann::json::array()}, {Log, nlohmann::json::array()}};
    for (const char* name :
         {"card", "partner", "assistant", "record", "flag", "images", "settings", "apps", "notice"}) {
        state[name] = nullptr;
    }
    return state;
}

}  // namespace

Timeline::Timeline(std::chrono::milliseconds beat) : run_(freshRun()), beat_(beat), base_(emptyState())
{
    now_ = base_;
}

void Timeline::put(const std::string& name, nlohmann::json data)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (listOf(name) == nullptr) {
        if (now_[name] == data) {
            return;
        }
        now_[name] = data;
    }
    const std::int64_t at = millisecondsNow();
    const std::string text = jsonText({{"at", at}, {"name", name}, {"data", data}});
    events_.push_back({at, name, std::move(data), text});
    ++last_;
    if (events_.size() > EventsKept) {
        fold(events_.front());
        events_.pop_front();
    }
    changed_.notify_all();
}

void Timeline::fold(const Event& event)
{
    const char* list = listOf(event.name);
    if (list == nullptr) {
        base_[event.name] = event.data;
        return;
    }
    nlohmann::json entry = event.data;
    entry["at"] = event.at;
    nlohmann::json& entries = base_[list];
    entries.push_back(std::move(entry));
    if (entries.size() > keptOf(list)) {
        entries.erase(entries.begin());
    }
}

Timeline::Whole Timeline::whole() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    std::string text = R"({"run":")" + run_ + R"(","beat":)" + std::to_string(beat_.count()) +
                       R"(,"kept":{"messages":)" + std::to_string(MessagesKept) + R"(,"log":)" +
                       std::to_string(LogKept) + R"(},"base":)" + jsonText(base_) + R"(,"events":[)";
    for (const Event& event : events_) {
        text += (&event == &events_.front() ? "" : ",") + event.text;
    }
    return {text + "]}", last_};
}

Timeline::News Timeline::newsSince(std::uint64_t last, std::chrono::milliseconds limit) const
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, limit, [&] { return ended_ || last_ > last; });
    if (ended_) {
        return {News::Kind::Ended, {}, last};
    }
    return eventsSince(last);
}

Timeline::News Timeline::eventsSince(std::uint64_t last) const
{
    if (last_ - last > events_.size()) {
        return {News::Kind::TooMuch, {}, last};
    }
    News news{last_ > last ? News::Kind::Events : News::Kind::Nothing, {}, last_};
    for (std::size_t i = events_.size() - (last_ - last); i < events_.size(); ++i) {
        news.events.push_back(events_[i].text);
    }
    return news;
}

void Timeline::end()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

}  // namespace Screen
