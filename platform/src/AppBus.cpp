#include "AppBus.h"

#include <system_error>
#include <utility>

// Defined by the programs that appliance_app() made an app, and by no other.
extern "C" __attribute__((weak)) const char* appliance_app_id();

namespace HostPlatform {

std::string ownAppId()
{
    return appliance_app_id ? appliance_app_id() : "";
}

AppBus& AppBus::instance()
{
    static AppBus* const bus = new AppBus;
    return *bus;
}

int AppBus::launch(AppPort::Handle request, const ReplyTarget& target)
{
    const std::shared_ptr<AppSession> current = session();
    if (!current)
        return APP_CONTROL_ERROR_IO_ERROR;
    const Answer answer;
    current->post([request = std::move(request), caller = ownAppId(), target, giver = answer.giver()](
                      AppSession::Ports& ports) { ports.app.launch(request, caller, target, giver); });
    return answer.wait();
}

int AppBus::reply(const Origin& origin, int result, const ExtraData& extraData)
{
    const std::shared_ptr<AppSession> current = session();
    if (!current)
        return APP_CONTROL_ERROR_IO_ERROR;
    const Answer answer;
    current->post([&origin, result, &extraData, giver = answer.giver()](AppSession::Ports& ports) {
        giver->give(ports.app.reply(origin, result, extraData));
    });
    return answer.wait();
}

int AppBus::enterApp(const std::string& appId, const AppPort::RequestHandler& handler)
{
    std::shared_ptr<AppSession> current;
    {
        const std::lock_guard lock(mutex_);
        life_ = Life::Tool;
        connect();
        life_ = Life::App;
        current = session_;
    }
    if (!current)
        return APP_CONTROL_ERROR_IO_ERROR;
    const Answer answer;
    current->post([&appId, &handler, giver = answer.giver()](AppSession::Ports& ports) {
        giver->give(ports.app.takeName(appId, handler));
    });
    return answer.wait();
}

void AppBus::leaveApp()
{
    std::shared_ptr<AppSession> last;
    {
        const std::lock_guard lock(mutex_);
        life_ = Life::Ended;
        last = std::move(session_);
    }
    if (last)
        last->stop();
}

std::shared_ptr<AppSession> AppBus::session()
{
    const std::lock_guard lock(mutex_);
    if (life_ == Life::Tool)
        connect();
    return session_;
}

// An app whose bus went away ends; a tool may find the bus again.
void AppBus::connect()
{
    if (session_ && !session_->hasEnded())
        return;
    session_.reset();
    try {
        session_ = AppSession::start([] { MainLoop::instance().requestEnd(MainLoop::End::BusLost); });
    } catch (const sdbus::Error&) {
    } catch (const std::system_error&) {
    }
}

}  // namespace HostPlatform
