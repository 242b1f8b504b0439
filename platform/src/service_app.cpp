#include <service_app.h>

#include <Ecore.h>

#include <atomic>
#include <cstdio>
#include <string>

#include "AppBus.h"

namespace {

using HostPlatform::AppBus;
using HostPlatform::MainLoop;

std::atomic<bool> running{false};

void say(const std::string& appId, const char* what)
{
    fprintf(stderr, "%s: %s\n", appId.empty() ? "service_app_main" : appId.c_str(), what);
}

// Ecore's own modules talk to desktop services: they print errors where those are missing, and leak.
int startEcore(const std::string& appId)
{
    ecore_app_no_system_modules();
    if (ecore_init() > 0)
        return TIZEN_ERROR_NONE;
    say(appId, "the main loop cannot be set up");
    return APP_ERROR_INVALID_CONTEXT;
}

int takeName(const std::string& appId, const service_app_lifecycle_callback_s& callbacks, void* userData)
{
    const int result = AppBus::instance().enterApp(appId, [callbacks, userData](app_control_h request) {
        if (callbacks.app_control)
            callbacks.app_control(request, userData);
    });
    if (result == TIZEN_ERROR_RESOURCE_BUSY)
        say(appId, "the name is taken on the session bus: the app runs already");
    else if (result != TIZEN_ERROR_NONE)
        say(appId, "the session bus cannot be reached");
    return result;
}

int createAndRun(const std::string& appId, const service_app_lifecycle_callback_s& callbacks, void* userData)
{
    MainLoop::End end = MainLoop::End::Asked;
    if (callbacks.create(userData))
        end = MainLoop::instance().run();
    if (end == MainLoop::End::BusLost)
        say(appId, "the session bus went away");
    if (callbacks.terminate)
        callbacks.terminate(userData);
    return end == MainLoop::End::BusLost ? TIZEN_ERROR_IO_ERROR : TIZEN_ERROR_NONE;
}

int runOnBus(const std::string& appId, const service_app_lifecycle_callback_s& callbacks, void* userData)
{
    MainLoop::instance().prepare();
    int result = takeName(appId, callbacks, userData);
    if (result == TIZEN_ERROR_NONE)
        result = createAndRun(appId, callbacks, userData);
    AppBus::instance().leaveApp();
    MainLoop::instance().finish();
    return result;
}

int runApp(const service_app_lifecycle_callback_s& callbacks, void* userData)
{
    const std::string appId = HostPlatform::ownAppId();
    if (appId.empty()) {
        say(appId, "this program has no app id");
        return APP_ERROR_INVALID_CONTEXT;
    }
    int result = startEcore(appId);
    if (result != TIZEN_ERROR_NONE)
        return result;
    result = runOnBus(appId, callbacks, userData);
    ecore_shutdown();
    return result;
}

}  // namespace

int service_app_main(int argc, char** argv, service_app_lifecycle_callback_s* callback, void* user_data)
{
    if (argc < 1 || !argv || !callback || !callback->create)
        return APP_ERROR_INVALID_PARAMETER;
    if (running.exchange(true))
        return APP_ERROR_ALREADY_RUNNING;
    const int result = runApp(*callback, user_data);
    running = false;
    return result;
}

void service_app_exit(void)
{
    MainLoop::instance().requestEnd(MainLoop::End::Asked);
}
