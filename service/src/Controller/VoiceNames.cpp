// Only what the log has always named has a name here: newer errors of the platform fall back like unknown
// ones.
#include "VoiceNames.h"

#include <nuvex-da-parser.h>
#include <voice_control_common.h>

namespace Carvoy::VoiceNames {

const char* clientState(int state)
{
    switch (state) {
        case VC_STATE_NONE:
            return "None";
        case VC_STATE_INITIALIZED:
            return "Initialized";
        case VC_STATE_READY:
            return "Ready";
        default:
            return "UNKNOWN";
    }
}

const char* serviceState(int state)
{
    switch (state) {
        case VC_SERVICE_STATE_NONE:
            return "None";
        case VC_SERVICE_STATE_READY:
            return "Ready";
        case VC_SERVICE_STATE_RECORDING:
            return "Recording";
        case VC_SERVICE_STATE_PROCESSING:
            return "Processing";
        default:
            return "UNKNOWN";
    }
}

const char* vcError(int error)
{
    switch (error) {
        case VC_ERROR_NONE:
            return "NONE";
        case VC_ERROR_OUT_OF_MEMORY:
            return "OUT_OF_MEMORY";
        case VC_ERROR_IO_ERROR:
            return "IO_ERROR";
        case VC_ERROR_INVALID_PARAMETER:
            return "INVALID_PARAMETER";
        case VC_ERROR_TIMED_OUT:
            return "TIMED_OUT";
        case VC_ERROR_RECORDER_BUSY:
            return "RECORDER_BUSY";
        case VC_ERROR_PERMISSION_DENIED:
            return "PERMISSION_DENIED";
        case VC_ERROR_NOT_SUPPORTED:
            return "NOT_SUPPORTED";
        case VC_ERROR_INVALID_STATE:
            return "INVALID_STATE";
        case VC_ERROR_INVALID_LANGUAGE:
            return "INVALID_LANGUAGE";
        case VC_ERROR_ENGINE_NOT_FOUND:
            return "ENGINE_NOT_FOUND";
        case VC_ERROR_OPERATION_FAILED:
            return "OPERATION_FAILED";
        case VC_ERROR_OPERATION_REJECTED:
            return "OPERATION_REJECTED";
        case VC_ERROR_ITERATION_END:
            return "ITERATION_END";
        case VC_ERROR_EMPTY:
            return "EMPTY";
        default:
            return "VC_ERROR_UNKNOWN";
    }
}

const char* ndpError(int error)
{
    switch (error) {
        case NDP_ERROR_NONE:
            return "NONE";
        case NDP_ERROR_OUT_OF_MEMORY:
            return "OUT_OF_MEMORY";
        case NDP_ERROR_INVALID_PARAMETER:
            return "INVALID_PARAMETER";
        case NDP_ERROR_PARSE_JSON_FAILED:
            return "PARSE JSON FAILED";
        case NDP_ERROR_NO_SUCH_VALUE:
            return "NO SUCH VALUE";
        case NDP_ERROR_INVALID_TYPE:
            return "INVALID TYPE";
        case NDP_ERROR_INTERNAL_ERROR:
            return "INTERNAL_ERROR";
        default:
            return "NDP_ERROR_UNKNOWN";
    }
}

}  // namespace Carvoy::VoiceNames
