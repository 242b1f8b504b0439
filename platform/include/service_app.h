// A service application: a process without a screen that lives by its requests.
#pragma once

#include <app_common.h>
#include <app_control.h>
#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/** First call, before any request. False: the app does not run; terminate follows at once. */
typedef bool (*service_app_create_cb)(void* user_data);

/** Last call, once, after the main loop has ended. */
typedef void (*service_app_terminate_cb)(void* user_data);

/** A request. The handle is destroyed when the callback returns; a clone of it can be kept and replied to. */
typedef void (*service_app_control_cb)(app_control_h app_control, void* user_data);

/** All three are called on the thread that called service_app_main(). */
typedef struct {
    service_app_create_cb create;
    service_app_terminate_cb terminate;
    service_app_control_cb app_control;
} service_app_lifecycle_callback_s;

/**
 * Runs the process's app: takes its app id as a name on the session bus, calls create, runs the main
 * loop (Ecore's) until SIGTERM, SIGINT or service_app_exit(), calls terminate and returns NONE.
 *
 * @p callback is copied. Its create is required, the other two may be null. The app id is the one that
 * appliance_app() of the build gave to the program.
 *
 * When create returns false, no request is handled, terminate is called and the result is NONE.
 *
 * argc below 1, null argv, callback or create: INVALID_PARAMETER. Called while it runs: ALREADY_RUNNING.
 * The program is no app: INVALID_CONTEXT. Before create, with the reason on standard error:
 * TIZEN_ERROR_IO_ERROR where the bus cannot be reached, TIZEN_ERROR_RESOURCE_BUSY where the name is taken.
 * After terminate, with the reason on standard error: TIZEN_ERROR_IO_ERROR where the bus went away.
 */
int service_app_main(int argc, char** argv, service_app_lifecycle_callback_s* callback, void* user_data);

/** Asks the main loop to end; does nothing while no app runs. Any thread; does not block. */
void service_app_exit(void);

#ifdef __cplusplus
}
#endif
