// carvoy-retailer: runs the service's second search controller, which the service itself routes nothing to.
#include <service_app.h>

#include "Log.h"
#include "RetailerService.h"

namespace {

Carvoy::RetailerService& serviceOf(void* userData)
{
    return *static_cast<Carvoy::RetailerService*>(userData);
}

bool onCreate(void*)
{
    LOG_I("create");
    return true;
}

void onTerminate(void* userData)
{
    serviceOf(userData).onTerminate();
}

void onAppControl(app_control_h request, void* userData)
{
    serviceOf(userData).onAppControl(request);
}

}  // namespace

int main(int argc, char** argv)
{
    Util::printVersion();
    Carvoy::RetailerService service;
    service_app_lifecycle_callback_s callbacks = {};
    callbacks.create = onCreate;
    callbacks.terminate = onTerminate;
    callbacks.app_control = onAppControl;
    return service_app_main(argc, argv, &callbacks, &service);
}
