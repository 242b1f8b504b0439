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

}  // namespace

Timeline::Timeline(std::chrono::milliseconds beat) : run_(freshRun()), beat_(beat)
{
    const auto null = std::make_shared<const std::string>("null");
    for (const char* name :
         {"card", "partner", "assistant", "record", "flag", "images", "settings", "apps", "notice"}) {
        now_[name] = null;
    }
    state_.values = now_;
    state_.lists = {{Messages, {}}, {Log, {}}};
}

void Timeline::put(const std::string& name, const nlohmann::json& data)
{
    const auto text = std::make_shared<const std::string>(jsonText(data));
    const std::lock_guard<std::mutex> lock(mutex_);
    if (listOf(name) == nullptr) {
        Text& now = now_[name];
        if (now && *now == *text) {
            return;
        }
        now = text;
    }
    state_.events.push_back({millisecondsNow(), name, text});
    eventBytes_ += text->size();
    ++last_;
    while (state_.events.size() > EventsKept || eventBytes_ > BytesKept) {
        fold();
    }
    changed_.notify_all();
}

// The oldest event becomes part of the state that the others begin with.
void Timeline::fold()
{
    Event event = std::move(state_.events.front());
    state_.events.pop_front();
    eventBytes_ -= event.data->size();
    const char* name = listOf(event.name);
    if (name == nullptr) {
        state_.values[event.name] = event.data;
        return;
    }
    List& list = state_.lists[name];
    list.bytes += event.data->size();
    list.entries.push_back(std::move(event));
    while (list.entries.size() > keptOf(name) || list.bytes > BytesKept) {
        list.bytes -= list.entries.front().data->size();
        list.entries.pop_front();
    }
}

std::string Timeline::Event::text() const
{
    return R"({"at":)" + std::to_string(at) + R"(,"name":")" + name + R"(","data":)" + *data + "}";
}

std::string Timeline::Event::entry() const
{
    return R"({"at":)" + std::to_string(at) + "," + data->substr(1);
}

Timeline::Whole Timeline::whole() const
{
    State state;
    Whole whole;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        whole.last = last_;
        whole.isEnded = ended_;
        if (!ended_) {
            state = state_;
        }
    }
    if (!whole.isEnded) {
        whole.text = textOf(state);
    }
    return whole;
}

std::string Timeline::textOf(const State& state) const
{
    std::string text = R"({"run":")" + run_ + R"(","beat":)" + std::to_string(beat_.count()) +
                       R"(,"kept":{"messages":)" + std::to_string(MessagesKept) + R"(,"log":)" +
                       std::to_string(LogKept) + R"(},"base":{)";
    for (const auto& [name, value] : state.values) {
        text += '"' + name + R"(":)" + *value + ',';
    }
    for (const auto& [name, list] : state.lists) {
        text += '"' + name + R"(":[)";
        for (const Event& event : list.entries) {
            text += (&event == &list.entries.front() ? "" : ",") + event.entry();
        }
        text += "],";
    }
    text.back() = '}';
    text += R"(,"events":[)";
    for (const Event& event : state.events) {
        text += (&event == &state.events.front() ? "" : ",") + event.text();
    }
    return text + "]}";
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
    const std::size_t kept = state_.events.size();
    if (last_ - last > kept) {
        return {News::Kind::TooMuch, {}, last};
    }
    News news{last_ > last ? News::Kind::Events : News::Kind::Nothing, {}, last_};
    for (std::size_t i = kept - (last_ - last); i < kept; ++i) {
        news.events.push_back(state_.events[i].text());
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
