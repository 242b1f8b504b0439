// A program that sends without being an app, for tests: its requests, replies and main loop.
#pragma once

#include <app_control.h>

#include <deque>
#include <functional>
#include <string>
#include <thread>

namespace TestSupport {

inline const char* const AppId = "org.example.test-app";
inline const char* const PeerId = "org.example.peer";
inline const std::string ErrorPrefix = "org.freedesktop.DBus.Error.";

/** A request to an app; owns its handle. */
class Request {
  public:
    explicit Request(const char* appId, const char* operation = "operation");
    ~Request();
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    operator app_control_h() const { return handle_; }

    int send(app_control_reply_cb callback = nullptr, void* data = nullptr) const;

  private:
    app_control_h handle_ = nullptr;
};

/** What the reply callback was called with. */
struct Replies {
    int count = 0;
    int extras = -1;
    app_control_result_e result = APP_CONTROL_RESULT_APP_STARTED;
    std::string requestText;
    std::string replyText;
    std::thread::id thread;
};

/** A reply callback whose data is a Replies. */
void onReply(app_control_h request, app_control_h reply, app_control_result_e result, void* data);

/** A Replies that outlives the test: a reply that is still awaited fails with the bus. */
Replies& lastingReplies();

/** Runs the main loop until the condition holds; false when that does not happen in time. */
bool loopUntil(const std::function<bool()>& condition);

}  // namespace TestSupport
