// The names under which the log tells of voice control's and the response parser's numbers.
#pragma once

namespace Carvoy::VoiceNames {

/** Each takes any number, known to the platform's headers or not, and gives a text that lives forever. */

/** Of a vc_state_e: where this client of voice control stands. Otherwise "UNKNOWN". */
const char* clientState(int state);

/** Of a vc_service_state_e: what the recogniser does. Otherwise "UNKNOWN". */
const char* serviceState(int state);

/** Of a vc_error_e. Otherwise "VC_ERROR_UNKNOWN". */
const char* vcError(int error);

/** Of an ndp_error_e. Otherwise "NDP_ERROR_UNKNOWN". */
const char* ndpError(int error);

}  // namespace Carvoy::VoiceNames
