// Voice control: a client of the recogniser. docs/bus-contract.md says what others see of it on the bus.
#pragma once

#include <voice_control_command.h>
#include <voice_control_common.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * There is one client in a process. Its state goes from NONE to INITIALIZED (vc_initialize()) to READY (the
 * end of what vc_prepare() began), and back (vc_unprepare(), vc_deinitialize()); the recogniser's side may
 * move it too.
 *
 * Every function is for the main loop's thread and returns a vc_error_e: INVALID_PARAMETER for a null
 * argument, then INVALID_STATE where the state is not the one that the function asks for. Every callback
 * comes on the main loop, never inside a function of this header, and in the order in which its causes
 * arrived; none comes after vc_deinitialize().
 */

/**
 * Called with a result. @p vc_cmd_list and @p result (null: there is no text) are valid during the callback
 * only. A rejected result may carry commands, or none.
 */
typedef void (*vc_result_cb)(vc_result_event_e event, vc_cmd_list_h vc_cmd_list, const char* result,
                             void* user_data);

/** Called with the client's new state, which is in force already. */
typedef void (*vc_state_changed_cb)(vc_state_e previous, vc_state_e current, void* user_data);

/** Called with the recogniser's new state, which is in force already. */
typedef void (*vc_service_state_changed_cb)(vc_service_state_e previous, vc_service_state_e current,
                                            void* user_data);

/** Called with the recogniser's new language, such as "en_US"; both texts are valid during the callback. */
typedef void (*vc_current_language_changed_cb)(const char* previous, const char* current, void* user_data);

/** Called with what went wrong on the recogniser's side. */
typedef void (*vc_error_cb)(vc_error_e reason, void* user_data);

/**
 * NONE to INITIALIZED, without a callback; the client is then seen on the bus. Blocks until it is there.
 * OPERATION_FAILED: no bus. INVALID_STATE: a client is there, even if the recogniser's side moved it to NONE.
 */
int vc_initialize(void);

/**
 * Back to NONE, without a callback, from every state that a client can be in after vc_initialize(), with or
 * without a bus; everything that was set is forgotten. The client is no longer on the bus when it returns.
 * OPERATION_FAILED: called inside a callback.
 */
int vc_deinitialize(void);

/**
 * INITIALIZED only. Begins to connect to the recogniser; READY follows on the main loop, with the state
 * callback, or the error callback with ENGINE_NOT_FOUND where the bus is gone by then. Where it has begun
 * already, nothing is added. A change of state ends it. OPERATION_FAILED: no bus.
 */
int vc_prepare(void);

/** READY to INITIALIZED; the state callback follows. Invocation name and commands are no longer in force. */
int vc_unprepare(void);

/** Hands out the client's state; NONE is no error here. */
int vc_get_state(vc_state_e* state);

/** Hands out the recogniser's state. INVALID_STATE before vc_initialize(). */
int vc_get_service_state(vc_service_state_e* state);

/**
 * READY only. The name by which speech addresses this client; null takes it away. Blocks until others see it.
 * INVALID_PARAMETER: not UTF-8. OPERATION_FAILED: no bus, or longer than 16 MiB.
 */
int vc_set_invocation_name(const char* name);

/**
 * READY only. Puts the texts of a list in force, in place of those of an earlier list of the same type
 * (VC_COMMAND_TYPE_FOREGROUND or _BACKGROUND, else INVALID_PARAMETER). The list stays the caller's; its
 * commands without a text count for nothing. Blocks until others see the texts. INVALID_PARAMETER: a text is
 * not UTF-8. OPERATION_FAILED: no bus, or texts of more than 16 MiB.
 */
int vc_set_command_list(vc_cmd_list_h vc_cmd_list, int type);

/** READY only. Takes back what was set for the type; nothing was: NONE. Errors as above. */
int vc_unset_command_list(int type);

/** INITIALIZED only, all of them. A callback replaces the one before it. */
int vc_set_result_cb(vc_result_cb callback, void* user_data);
int vc_unset_result_cb(void);
int vc_set_state_changed_cb(vc_state_changed_cb callback, void* user_data);
int vc_unset_state_changed_cb(void);
int vc_set_service_state_changed_cb(vc_service_state_changed_cb callback, void* user_data);
int vc_unset_service_state_changed_cb(void);
int vc_set_current_language_changed_cb(vc_current_language_changed_cb callback, void* user_data);
int vc_unset_current_language_changed_cb(void);
int vc_set_error_cb(vc_error_cb callback, void* user_data);
int vc_unset_error_cb(void);

#ifdef __cplusplus
}
#endif
