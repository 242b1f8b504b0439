// Voice control.
#include <voice_control.h>
#include <voice_control_command_expand.h>

#include "Point.h"

using Faults::plan;
using Faults::Point;
using Faults::tell;

POINT0(vc_initialize, VC_ERROR_OPERATION_REJECTED)
POINT0(vc_deinitialize, VC_ERROR_OPERATION_REJECTED)
POINT0(vc_prepare, VC_ERROR_OPERATION_REJECTED)
POINT0(vc_unprepare, VC_ERROR_OPERATION_REJECTED)
POINT1(vc_set_invocation_name, VC_ERROR_OPERATION_REJECTED)
POINT2(vc_set_command_list, VC_ERROR_OPERATION_REJECTED)
POINT1(vc_unset_command_list, VC_ERROR_OPERATION_REJECTED)
POINT0(vc_unset_result_cb, VC_ERROR_OPERATION_REJECTED)
POINT2(vc_set_state_changed_cb, VC_ERROR_OPERATION_REJECTED)
POINT0(vc_unset_state_changed_cb, VC_ERROR_OPERATION_REJECTED)
POINT2(vc_set_service_state_changed_cb, VC_ERROR_OPERATION_REJECTED)
POINT0(vc_unset_service_state_changed_cb, VC_ERROR_OPERATION_REJECTED)
POINT2(vc_set_current_language_changed_cb, VC_ERROR_OPERATION_REJECTED)
POINT0(vc_unset_current_language_changed_cb, VC_ERROR_OPERATION_REJECTED)
POINT2(vc_set_error_cb, VC_ERROR_OPERATION_REJECTED)
POINT0(vc_unset_error_cb, VC_ERROR_OPERATION_REJECTED)
POINT1(vc_cmd_list_create, VC_ERROR_OPERATION_REJECTED)
POINT2(vc_cmd_list_add, VC_ERROR_OPERATION_REJECTED)
POINT3(vc_cmd_list_foreach_commands, VC_ERROR_OPERATION_REJECTED)
POINT1(vc_cmd_create, VC_ERROR_OPERATION_REJECTED)
POINT2(vc_cmd_set_command, VC_ERROR_OPERATION_REJECTED)
POINT2(vc_cmd_set_type, VC_ERROR_OPERATION_REJECTED)
POINT2(vc_cmd_set_format, VC_ERROR_OPERATION_REJECTED)
POINT2(vc_cmd_get_nlu_json, VC_ERROR_OPERATION_REJECTED)
END1(vc_cmd_destroy, VC_ERROR_OPERATION_REJECTED)
END2(vc_cmd_list_destroy, VC_ERROR_OPERATION_REJECTED)

namespace {

vc_result_cb resultCallback;

void onResult(vc_result_event_e event, vc_cmd_list_h commands, const char* text, void* data)
{
    resultCallback(event, commands, text, data);
    tell(plan().results);
}

}  // namespace

extern "C" int faulty_vc_set_result_cb(vc_result_cb callback, void* data);

int faulty_vc_set_result_cb(vc_result_cb callback, void* data)
{
    static Point point("vc_set_result_cb");
    resultCallback = callback;
    return point.call(
        FAULTS_SITE, [] { return int{VC_ERROR_OPERATION_REJECTED}; },
        [&] { return vc_set_result_cb(onResult, data); });
}
