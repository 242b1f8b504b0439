#include "EventListener.h"

#include <sstream>
#include <stdexcept>
#include <utility>

#include "Patience.h"

namespace ApplianceTest {

namespace {

using nlohmann::json;

// The whole lines of data so far, as JSON.
std::vector<json> dataIn(const std::string& body)
{
    const std::string prefix = "data: ";
    std::vector<json> all;
    std::istringstream in(body);
    for (std::string line; std::getline(in, line) && !in.eof();) {
        if (line.compare(0, prefix.size(), prefix) == 0) {
            all.push_back(json::parse(line.substr(prefix.size())));
        }
    }
    return all;
}

std::vector<json> eventsIn(const std::string& body)
{
    std::vector<json> events;
    for (const json& data : dataIn(body)) {
        if (data.contains("events")) {
            for (const auto& [name, value] : data.at("base").items()) {
                events.push_back({{"name", name}, {"data", value}});
            }
            events.insert(events.end(), data.at("events").begin(), data.at("events").end());
        } else if (data.contains("name")) {
            events.push_back(data);
        }
    }
    return events;
}

}  // namespace

EventListener::EventListener(HttpClient client, std::string until)
    : thread_([this, client = std::move(client), until = std::move(until)]() mutable {
          client.onData = [this, &until](const std::string& body) {
              note(body);
              if (body.find(until) != std::string::npos) {
                  throw std::runtime_error("this is where it leaves");
              }
          };
          note(client.get("/events").body);
      })
{
}

void EventListener::note(const std::string& body)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    body_ = body;
    changed_.notify_all();
}

bool EventListener::waitFor(const std::string& part)
{
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, TestSupport::Patience,
                             [&] { return body_.find(part) != std::string::npos; });
}

std::optional<json> EventListener::waitForEvent(const std::string& name, const Test& fits)
{
    std::optional<json> found;
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, TestSupport::Patience, [&] { return (found = find(name, fits)).has_value(); });
    return found;
}

std::optional<json> EventListener::find(const std::string& name, const Test& fits) const
{
    for (const json& event : eventsIn(body_)) {
        if (event.at("name") == name && fits(event.at("data"))) {
            return event.at("data");
        }
    }
    return std::nullopt;
}

}  // namespace ApplianceTest
