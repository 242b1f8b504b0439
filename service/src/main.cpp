// The process entry: hands the service's lifecycle to the platform's loop.
#include <service_app.h>

#include "Log.h"
#include "Service.h"
#include "Singleton.h"

static bool _create(void*)
{
    LOG_I("_create");
    return Util::Singleton<Carvoy::Service>::getInstance()->onCreate();
}

static void _terminate(void*)
{
    LOG_I("_terminate");
    Util::Singleton<Carvoy::Service>::getInstance()->onTerminate();
    delete Util::Singleton<Carvoy::Service>::mInstance;
}

static void _app_control(app_control_h app_control, void*)
{
    LOG_I("app_control");
    Util::Singleton<Carvoy::Service>::getInstance()->onAppControl(app_control);
}

int main(int argc, char** argv)
{
    LOG_I("main");
    Util::printVersion();

    // No user data: each callback makes the Service if it is the first to need one.
    service_app_lifecycle_callback_s callbacks = {};
    callbacks.create = _create;
    callbacks.terminate = _terminate;
    callbacks.app_control = _app_control;

    LOG_I("main----2");
    return service_app_main(argc, argv, &callbacks, nullptr);
}
