// Voice control: what the voice assistant adds to commands.
#pragma once

#include <voice_control_command.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Formats of the commands that the assistant's language understanding answers. */
#define VC_CMD_FORMAT_ACTION 5
#define VC_CMD_FORMAT_PARTIAL 6

/**
 * Hands out the assistant's answer, a JSON text of at most 10,000,000 bytes, for a command that came with a
 * result; the caller's to free().
 *
 * NOT_SUPPORTED: the command's format is not ACTION. OPERATION_FAILED: there is no answer for it.
 */
int vc_cmd_get_nlu_json(vc_cmd_h vc_command, char** json);

#ifdef __cplusplus
}
#endif
