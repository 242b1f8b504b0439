// Voice control: the numbers and handles that its headers share.
#pragma once

#include <tizen.h>

#ifdef __cplusplus
extern "C" {
#endif

/* In C++ too these enumerations hold every int: the recogniser's side may send a number that no list has. */
#ifdef __cplusplus
#define VC_ANY_INT : int
#else
#define VC_ANY_INT
#endif

typedef enum VC_ANY_INT {
    VC_ERROR_NONE = TIZEN_ERROR_NONE,
    VC_ERROR_OUT_OF_MEMORY = TIZEN_ERROR_OUT_OF_MEMORY,
    VC_ERROR_IO_ERROR = TIZEN_ERROR_IO_ERROR,
    VC_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,
    VC_ERROR_TIMED_OUT = TIZEN_ERROR_TIMED_OUT,
    VC_ERROR_RECORDER_BUSY = TIZEN_ERROR_RESOURCE_BUSY,
    VC_ERROR_PERMISSION_DENIED = TIZEN_ERROR_PERMISSION_DENIED,
    VC_ERROR_NOT_SUPPORTED = TIZEN_ERROR_NOT_SUPPORTED,
    VC_ERROR_INVALID_STATE = TIZEN_ERROR_VOICE_CONTROL | 0x11,
    VC_ERROR_INVALID_LANGUAGE = TIZEN_ERROR_VOICE_CONTROL | 0x12,
    VC_ERROR_ENGINE_NOT_FOUND = TIZEN_ERROR_VOICE_CONTROL | 0x13,
    VC_ERROR_OPERATION_FAILED = TIZEN_ERROR_VOICE_CONTROL | 0x14,
    VC_ERROR_OPERATION_REJECTED = TIZEN_ERROR_VOICE_CONTROL | 0x15,
    VC_ERROR_ITERATION_END = TIZEN_ERROR_VOICE_CONTROL | 0x16,
    VC_ERROR_EMPTY = TIZEN_ERROR_VOICE_CONTROL | 0x17,
    VC_ERROR_SERVICE_RESET = TIZEN_ERROR_VOICE_CONTROL | 0x18,
    VC_ERROR_IN_PROGRESS_TO_READY = TIZEN_ERROR_VOICE_CONTROL | 0x19,
    VC_ERROR_IN_PROGRESS_TO_RECORDING = TIZEN_ERROR_VOICE_CONTROL | 0x20,
    VC_ERROR_IN_PROGRESS_TO_PROCESSING = TIZEN_ERROR_VOICE_CONTROL | 0x21,
    VC_ERROR_NOT_SUPPORTED_FEATURE = TIZEN_ERROR_VOICE_CONTROL | 0x22
} vc_error_e;

/** Where a client of voice control stands. */
typedef enum VC_ANY_INT { VC_STATE_NONE = 0, VC_STATE_INITIALIZED = 1, VC_STATE_READY = 2 } vc_state_e;

/** What the recogniser behind the clients does. */
typedef enum VC_ANY_INT {
    VC_SERVICE_STATE_NONE = 0,
    VC_SERVICE_STATE_READY = 1,
    VC_SERVICE_STATE_RECORDING = 2,
    VC_SERVICE_STATE_PROCESSING = 3
} vc_service_state_e;

typedef enum VC_ANY_INT {
    VC_RESULT_EVENT_RESULT_SUCCESS = 0,
    VC_RESULT_EVENT_REJECTED = 1
} vc_result_event_e;

#undef VC_ANY_INT

/** A command, and a list of commands; see voice_control_command.h. */
typedef struct vc_cmd_s* vc_cmd_h;
typedef struct vc_cmd_list_s* vc_cmd_list_h;

#ifdef __cplusplus
}
#endif
