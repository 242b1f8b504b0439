// carvoy-retailer: runs the service's second search controller, which the service itself routes nothing to.
#include <service_app.h>
#include <tzplatform_config.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "Log.h"
#include "RetailerService.h"
#include "SiteValues.h"

namespace {

// A login file without a place of its own lies in the appliance's root, where the tool looks for it, too.
void goToTheLoginFile()
{
    const char* media = tzplatform_getenv(TZ_USER_CONTENT);
    if (CARVOY_RETAILER_LOGIN_FILE[0] == '/' || media == nullptr) {
        return;
    }
    const std::string folder = media;
    const std::string root = folder.substr(0, folder.rfind('/'));
    if (chdir(root.c_str()) != 0) {
        LOG_E("no login file: %s: %s", root.c_str(), std::strerror(errno));
    }
}

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
    goToTheLoginFile();
    Carvoy::RetailerService service;
    service_app_lifecycle_callback_s callbacks = {};
    callbacks.create = onCreate;
    callbacks.terminate = onTerminate;
    callbacks.app_control = onAppControl;
    return service_app_main(argc, argv, &callbacks, &service);
}
