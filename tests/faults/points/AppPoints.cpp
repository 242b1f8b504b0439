// The service application and its messages. Besides the failures: what the test waits for.
#include <app_control.h>
#include <service_app.h>

#include "AppPoints.h"
#include "Point.h"

using Faults::plan;
using Faults::Point;
using Faults::tell;

POINT2(app_control_set_app_id, APP_CONTROL_ERROR_OUT_OF_MEMORY)
POINT2(app_control_set_operation, APP_CONTROL_ERROR_OUT_OF_MEMORY)
POINT2(app_control_set_uri, APP_CONTROL_ERROR_OUT_OF_MEMORY)
POINT2(app_control_get_app_id, APP_CONTROL_ERROR_OUT_OF_MEMORY)
POINT2(app_control_get_operation, APP_CONTROL_ERROR_OUT_OF_MEMORY)
POINT2(app_control_get_uri, APP_CONTROL_ERROR_OUT_OF_MEMORY)
POINT3(app_control_add_extra_data, APP_CONTROL_ERROR_KEY_REJECTED)
POINT4(app_control_add_extra_data_array, APP_CONTROL_ERROR_KEY_REJECTED)
POINT3(app_control_get_extra_data, APP_CONTROL_ERROR_KEY_NOT_FOUND)
POINT4(app_control_get_extra_data_array, APP_CONTROL_ERROR_KEY_NOT_FOUND)
POINT3(app_control_is_extra_data_array, APP_CONTROL_ERROR_KEY_NOT_FOUND)
POINT3(app_control_foreach_extra_data, APP_CONTROL_ERROR_INVALID_PARAMETER)
POINT3(app_control_send_launch_request, APP_CONTROL_ERROR_APP_NOT_FOUND)
POINT3(app_control_reply_to_launch_request, APP_CONTROL_ERROR_LAUNCH_FAILED)
END1(app_control_destroy, APP_CONTROL_ERROR_INVALID_PARAMETER)

extern "C" int faulty_app_control_create(app_control_h* handle);

// The first thing that the sender's worker does with a message.
int faulty_app_control_create(app_control_h* handle)
{
    static Point point("app_control_create");
    Faults::hasSent = true;
    return point.call(
        FAULTS_SITE, [] { return int{APP_CONTROL_ERROR_OUT_OF_MEMORY}; },
        [&] { return app_control_create(handle); });
}

namespace {

service_app_lifecycle_callback_s lifecycle;

bool onCreate(void* data)
{
    const bool result = lifecycle.create(data);
    tell(plan().starts);
    return result;
}

void onAppControl(app_control_h request, void* data)
{
    lifecycle.app_control(request, data);
    tell(plan().requests);
}

}  // namespace

extern "C" int faulty_service_app_main(int argc, char** argv, service_app_lifecycle_callback_s* callbacks,
                                       void* data);

int faulty_service_app_main(int argc, char** argv, service_app_lifecycle_callback_s* callbacks, void* data)
{
    static Point point("service_app_main");
    lifecycle = *callbacks;
    service_app_lifecycle_callback_s told = lifecycle;
    told.create = onCreate;
    told.app_control = onAppControl;
    return point.call(
        FAULTS_SITE, [] { return int{TIZEN_ERROR_IO_ERROR}; },
        [&] { return service_app_main(argc, argv, &told, data); });
}
