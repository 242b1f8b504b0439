// Makes functions of voice control fail in the service, always: those that VOICE_FAULT names, with commas
// between them.
#include <voice_control.h>

#include <cstdlib>
#include <string>

namespace {

bool fails(const std::string& function)
{
    const char* const chosen = std::getenv("VOICE_FAULT");
    return chosen && ("," + std::string(chosen) + ",").find("," + function + ",") != std::string::npos;
}

}  // namespace

#define FAULT(function, parameters, arguments)                                               \
    extern "C" int __real_##function parameters;                                             \
    extern "C" int __wrap_##function parameters;                                             \
    int __wrap_##function parameters                                                         \
    {                                                                                        \
        return fails(#function) ? VC_ERROR_OPERATION_REJECTED : __real_##function arguments; \
    }

FAULT(vc_initialize, (), ())
FAULT(vc_deinitialize, (), ())
FAULT(vc_prepare, (), ())
FAULT(vc_unprepare, (), ())
FAULT(vc_set_invocation_name, (const char* name), (name))
FAULT(vc_set_command_list, (vc_cmd_list_h list, int type), (list, type))
FAULT(vc_unset_command_list, (int type), (type))
FAULT(vc_set_result_cb, (vc_result_cb callback, void* data), (callback, data))
FAULT(vc_unset_result_cb, (), ())
FAULT(vc_set_state_changed_cb, (vc_state_changed_cb callback, void* data), (callback, data))
FAULT(vc_unset_state_changed_cb, (), ())
FAULT(vc_set_service_state_changed_cb, (vc_service_state_changed_cb callback, void* data), (callback, data))
FAULT(vc_unset_service_state_changed_cb, (), ())
FAULT(vc_set_current_language_changed_cb, (vc_current_language_changed_cb callback, void* data),
      (callback, data))
FAULT(vc_unset_current_language_changed_cb, (), ())
FAULT(vc_set_error_cb, (vc_error_cb callback, void* data), (callback, data))
FAULT(vc_unset_error_cb, (), ())
FAULT(vc_cmd_list_create, (vc_cmd_list_h * list), (list))
FAULT(vc_cmd_list_add, (vc_cmd_list_h list, vc_cmd_h command), (list, command))
FAULT(vc_cmd_create, (vc_cmd_h * command), (command))
FAULT(vc_cmd_set_command, (vc_cmd_h command, const char* text), (command, text))
FAULT(vc_cmd_set_type, (vc_cmd_h command, int type), (command, type))
FAULT(vc_cmd_set_format, (vc_cmd_h command, int format), (command, format))

// What they destroy goes also where they must fail: nobody else could.
#define FAULT_BEHIND(function, parameters, arguments)                   \
    extern "C" int __real_##function parameters;                        \
    extern "C" int __wrap_##function parameters;                        \
    int __wrap_##function parameters                                    \
    {                                                                   \
        const int result = __real_##function arguments;                 \
        return fails(#function) ? VC_ERROR_OPERATION_REJECTED : result; \
    }

FAULT_BEHIND(vc_cmd_destroy, (vc_cmd_h command), (command))
FAULT_BEHIND(vc_cmd_list_destroy, (vc_cmd_list_h list, bool commands), (list, commands))
