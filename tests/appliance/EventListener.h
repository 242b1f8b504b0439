// A page's stream of events, read as a browser reads it.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>

#include "HttpClient.h"

namespace ApplianceTest {

// Reads on a thread of its own until the stream ends, or `until` has come. The destructor waits for that.
class EventListener {
  public:
    using Test = std::function<bool(const nlohmann::json& data)>;

    explicit EventListener(HttpClient client, std::string until = "\n never \n");
    ~EventListener() { thread_.join(); }
    EventListener(const EventListener&) = delete;
    EventListener& operator=(const EventListener&) = delete;

    // Each waits, and gives up in the end: that part of the stream's text; an event of that name, of those
    // that came so far or are still to come, whose data fits.
    bool waitFor(const std::string& part);
    std::optional<nlohmann::json> waitForEvent(const std::string& name, const Test& fits);

  private:
    void note(const std::string& body);
    std::optional<nlohmann::json> find(const std::string& name, const Test& fits) const;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::string body_;
    std::thread thread_;
};

}  // namespace ApplianceTest
