// An app that takes no notice of what it is sent.
#pragma once

#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>

#include <memory>
#include <string>

#include "Patience.h"

namespace ServiceTest {

/** Owns the name until it is destroyed; what it is sent is under way for as long. One thread. */
class MuteApp {
  public:
    explicit MuteApp(const std::string& name) : connection_(sdbus::createSessionBusConnection())
    {
        connection_->requestName(name);
        // What the bus itself has to say to somebody with a new name.
        while (connection_->processPendingRequest()) {
        }
    }

    /** Waits until something has come that it will never answer. */
    bool waitForMessage() const
    {
        pollfd watch{connection_->getEventLoopPollData().fd, POLLIN, 0};
        return poll(&watch, 1, static_cast<int>(std::chrono::milliseconds(TestSupport::Patience).count())) >
               0;
    }

  private:
    std::unique_ptr<sdbus::IConnection> connection_;
};

}  // namespace ServiceTest
