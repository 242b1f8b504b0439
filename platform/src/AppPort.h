// The app-control object of one connection to the bus.
#pragma once

#include <app_control.h>

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>

#include "Answer.h"
#include "AppControlHandle.h"
#include "MainLoop.h"
#include "Wire.h"

namespace HostPlatform {

/** What a reply to a request is given to. */
struct ReplyTarget {
    app_control_reply_cb callback = nullptr;
    void* userData = nullptr;
};

/**
 * Speaks org.tizen.AppControl1 on a connection: takes in requests and replies and hands them to the main
 * loop, and makes the calls of the other direction. After construction, only the thread that processes
 * the connection may use it; no function blocks on another app.
 */
class AppPort {
  public:
    using RequestHandler = std::function<void(app_control_h)>;
    using Handle = std::shared_ptr<app_control_s>;

    /** Exports the object. Throws sdbus::Error. */
    AppPort(sdbus::IConnection& connection, MainLoop& mainLoop);

    /** Owns @p appId on the bus and gives requests to @p handler on the main loop. RESOURCE_BUSY where taken.
     */
    int takeName(const std::string& appId, RequestHandler handler);

    /** Sends a request; @p answer gets the code once the receiver has queued it, or did not. */
    void launch(const Handle& request, const std::string& caller, const ReplyTarget& target,
                const Answer::Giver& answer);

    /** Sends a reply and gives the code of that; no peer is waited for. */
    int reply(const Origin& origin, int result, const ExtraData& extraData);

    /** After each turn of the connection: gives up what no handler uses any more. */
    void tidy();

    /** The connection is lost: every request that waits for a reply has failed. */
    void failAll();

  private:
    using Clock = std::chrono::steady_clock;

    struct Pending {
        Handle request;
        ReplyTarget target;
        std::string receiver;  // unique name; empty until the request is queued there
    };
    struct Call {  // an outgoing Launch
        std::unique_ptr<sdbus::IProxy> proxy;
        bool finished;
    };
    using PendingMap = std::map<std::uint32_t, Pending>;

    void onLaunch(sdbus::MethodCall call);
    void onReply(sdbus::MethodCall call);
    void onNameGone(const std::string& name);
    void onLaunched(std::uint32_t id, const Answer::Giver& answer, const sdbus::MethodReply& reply,
                    const sdbus::Error* error, Clock::time_point deadline);

    std::uint32_t expectReply(const Handle& request, const ReplyTarget& target);
    void call(const app_control_s& request, const std::string& caller, std::uint32_t id,
              const Answer::Giver& answer);
    void finish(Pending& pending, const Handle& reply, app_control_result_e result);

    sdbus::IConnection& connection_;
    MainLoop& mainLoop_;
    std::unique_ptr<sdbus::IObject> object_;
    RequestHandler handler_;
    PendingMap pending_;
    std::uint32_t lastId_ = 0;
    sdbus::Slot leaverWatch_;  // set while replies are awaited
    std::list<Call> calls_;
};

}  // namespace HostPlatform
