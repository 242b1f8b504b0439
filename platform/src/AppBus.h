// The process's place on the bus.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "AppSession.h"

namespace HostPlatform {

/** The app id that appliance_app() of the build gave to this program; empty where it gave none. */
std::string ownAppId();

/**
 * Sends the process's requests and replies over one connection, which the first one opens, and gives that
 * connection the app's name while an app runs. Once the app has ended nothing is sent any more: the end
 * of the process is near. There is one object, and it is never destroyed: a thread may still send while
 * the process exits. Any thread; codes are app_control_error_e.
 */
class AppBus {
  public:
    static AppBus& instance();

    /** Blocks until the receiver has queued the request, for at most Wire::LaunchLimit. */
    int launch(AppPort::Handle request, const ReplyTarget& target);

    /** Blocks until the reply is on its way. */
    int reply(const Origin& origin, int result, const ExtraData& extraData);

    /** Takes the app's name. IO_ERROR: no bus. RESOURCE_BUSY: the name is taken. */
    int enterApp(const std::string& appId, const AppPort::RequestHandler& handler);

    /** The app has ended: disconnects. Sends under way return IO_ERROR. */
    void leaveApp();

    /** The connection, opened where there is none yet; null where none can be had. */
    std::shared_ptr<AppSession> session();

  private:
    enum class Life { Tool, App, Ended };

    void connect();

    std::mutex mutex_;
    Life life_ = Life::Tool;
    std::shared_ptr<AppSession> session_;
};

}  // namespace HostPlatform
