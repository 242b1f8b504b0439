// A monitor of messages on a bus of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "BusMonitor.h"
#include "EventLoop.h"
#include "Patience.h"
#include "PrivateBus.h"
#include "RawPeer.h"

namespace ApplianceTest {

using Presence = std::pair<std::string, bool>;

inline constexpr char Receiver[] = "org.example.receiver";
inline constexpr char Sender[] = "org.example.sender";
inline constexpr char Operation[] = "http://example.org/operation/look";
inline constexpr char VoicePath[] = "/org/tizen/VoiceControl";
inline constexpr char VoiceInterface[] = "org.tizen.VoiceControl1";

class ABusMonitor : public testing::Test {
  protected:
    explicit ABusMonitor(const TestSupport::PrivateBus::Options& options = {}) : bus_(options) {}

    void watch()
    {
        monitor_.emplace(
            bus_.address(), [this](const Appliance::BusMessage& message) { messages_.push_back(message); },
            [this](const std::string& app, bool isThere) { apps_.emplace_back(app, isThere); },
            [this] { ++lost_; });
    }

    bool waitUntil(const std::function<bool()>& done)
    {
        return loop_.runUntil(done, TestSupport::Patience) == Tool::EventLoop::Outcome::Done;
    }

    // Also that no more messages than these have passed.
    bool waitForMessages(std::size_t count)
    {
        const TestSupport::RawPeer last("org.example.last");
        const bool came = waitForApp("org.example.last", true);
        EXPECT_EQ(messages_.size(), count);
        return came && messages_.size() == count;
    }

    bool waitForApp(const std::string& app, bool isThere)
    {
        return waitUntil(
            [&] { return std::find(apps_.begin(), apps_.end(), Presence(app, isThere)) != apps_.end(); });
    }

    // A bare call, of any form. Gives the name of the error that it is answered with.
    template <typename... Arguments>
    static std::string call(const std::string& to, const char* path, const char* interface,
                            const char* method, const Arguments&... arguments)
    {
        const auto connection = sdbus::createSessionBusConnection();
        return callOver(*connection, to, path, interface, method, arguments...);
    }

    template <typename... Arguments>
    static std::string callOver(sdbus::IConnection& connection, const std::string& to, const char* path,
                                const char* interface, const char* method, const Arguments&... arguments)
    {
        const auto proxy = sdbus::createProxy(connection, to, path);
        try {
            proxy->callMethod(method).onInterface(interface).withArguments(arguments...);
        } catch (const sdbus::Error& error) {
            return error.getName();
        }
        return "";
    }

    Tool::EventLoop loop_;
    TestSupport::PrivateBus bus_;
    std::vector<Appliance::BusMessage> messages_;
    std::vector<Presence> apps_;
    int lost_ = 0;
    std::optional<Appliance::BusMonitor> monitor_;
};

}  // namespace ApplianceTest
