// Voice control: commands, and lists of them.
#pragma once

#include <stdbool.h>
#include <voice_control_common.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Commands and lists are plain data: they need no initialised client. A handle is used by one thread at a
 * time. Every function returns a vc_error_e: a null handle, callback or out-pointer is INVALID_PARAMETER, and
 * on error no out-pointer is written. A text handed out through a char** is the caller's to free().
 */

/** Types of commands: heard while the app is in front, or always once the invocation name was said. */
#define VC_COMMAND_TYPE_FOREGROUND 1
#define VC_COMMAND_TYPE_BACKGROUND 2

/** Formats of commands; those that come from the assistant are in voice_control_command_expand.h. */
#define VC_CMD_FORMAT_FIXED 0
#define VC_CMD_FORMAT_FIXED_AND_VFIXED 1
#define VC_CMD_FORMAT_VFIXED_AND_FIXED 2
#define VC_CMD_FORMAT_FIXED_AND_NONFIXED 3
#define VC_CMD_FORMAT_NONFIXED_AND_FIXED 4

/** Called once for each command, in the list's order; false stops the walk. */
typedef bool (*vc_cmd_list_cb)(vc_cmd_h vc_command, void* user_data);

/** Makes an empty list, the caller's until vc_cmd_list_destroy(). OUT_OF_MEMORY. */
int vc_cmd_list_create(vc_cmd_list_h* vc_cmd_list);

/** Destroys a list, and its commands with it where @p free_command is set. */
int vc_cmd_list_destroy(vc_cmd_list_h vc_cmd_list, bool free_command);

/** Hands out how many commands the list has. */
int vc_cmd_list_get_count(vc_cmd_list_h vc_cmd_list, int* count);

/**
 * Adds a command at the end. The list keeps the handle, no copy. A command that is there already:
 * INVALID_PARAMETER.
 */
int vc_cmd_list_add(vc_cmd_list_h vc_cmd_list, vc_cmd_h vc_command);

/** Walks the list; @p callback must not change it. A list without commands: EMPTY. */
int vc_cmd_list_foreach_commands(vc_cmd_list_h vc_cmd_list, vc_cmd_list_cb callback, void* user_data);

/** Makes a command without a text, of type 0 and format FIXED. OUT_OF_MEMORY. */
int vc_cmd_create(vc_cmd_h* vc_command);

/** Destroys a command that is in no list. */
int vc_cmd_destroy(vc_cmd_h vc_command);

/** Sets the command's text, which is copied; null takes it away. */
int vc_cmd_set_command(vc_cmd_h vc_command, const char* command);

/** Hands out a copy of the text; where there is none, nothing is written and that is no error. */
int vc_cmd_get_command(vc_cmd_h vc_command, char** command);

/** The type is not checked here: vc_set_command_list() names the one that counts. */
int vc_cmd_set_type(vc_cmd_h vc_command, int type);
int vc_cmd_get_type(vc_cmd_h vc_command, int* type);

/** The format is any number: the platform knows more of them than these headers. */
int vc_cmd_set_format(vc_cmd_h vc_command, int format);
int vc_cmd_get_format(vc_cmd_h vc_command, int* format);

#ifdef __cplusplus
}
#endif
