// App control: requests from app to app, with extra data and replies.
// docs/bus-contract.md says what travels on the bus.
#pragma once

#include <stdbool.h>
#include <tizen.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * One message: a request made by app_control_create(), a request that arrived, or a reply that arrived.
 *
 * A handle holds its own copy of every text and is used by one thread at a time. Different handles,
 * clones of one another included, may be used by different threads at once.
 *
 * Unless a function says otherwise: texts are UTF-8 with a final NUL; a text handed out through a
 * char** is the caller's to free(); a null handle or out-pointer is INVALID_PARAMETER; on error no
 * out-pointer is written; any thread may call.
 */
typedef struct app_control_s* app_control_h;

typedef enum {
    APP_CONTROL_ERROR_NONE = TIZEN_ERROR_NONE,
    APP_CONTROL_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,
    APP_CONTROL_ERROR_OUT_OF_MEMORY = TIZEN_ERROR_OUT_OF_MEMORY,
    APP_CONTROL_ERROR_APP_NOT_FOUND = TIZEN_ERROR_APPLICATION | 0x21,
    APP_CONTROL_ERROR_KEY_NOT_FOUND = TIZEN_ERROR_KEY_NOT_AVAILABLE,
    APP_CONTROL_ERROR_KEY_REJECTED = TIZEN_ERROR_KEY_REJECTED,
    APP_CONTROL_ERROR_INVALID_DATA_TYPE = TIZEN_ERROR_APPLICATION | 0x22,
    APP_CONTROL_ERROR_LAUNCH_REJECTED = TIZEN_ERROR_APPLICATION | 0x23,
    APP_CONTROL_ERROR_PERMISSION_DENIED = TIZEN_ERROR_PERMISSION_DENIED,
    APP_CONTROL_ERROR_LAUNCH_FAILED = TIZEN_ERROR_APPLICATION | 0x24,
    APP_CONTROL_ERROR_TIMED_OUT = TIZEN_ERROR_TIMED_OUT,
    APP_CONTROL_ERROR_IO_ERROR = TIZEN_ERROR_IO_ERROR
} app_control_error_e;

typedef enum {
    APP_CONTROL_RESULT_APP_STARTED = 1,
    APP_CONTROL_RESULT_SUCCEEDED = 0,
    APP_CONTROL_RESULT_FAILED = -1,
    APP_CONTROL_RESULT_CANCELED = -2
} app_control_result_e;

#define APP_CONTROL_OPERATION_MAIN "http://tizen.org/appcontrol/operation/main"
#define APP_CONTROL_OPERATION_DEFAULT "http://tizen.org/appcontrol/operation/default"
#define APP_CONTROL_OPERATION_EDIT "http://tizen.org/appcontrol/operation/edit"
#define APP_CONTROL_OPERATION_VIEW "http://tizen.org/appcontrol/operation/view"
#define APP_CONTROL_OPERATION_PICK "http://tizen.org/appcontrol/operation/pick"
#define APP_CONTROL_OPERATION_CREATE_CONTENT "http://tizen.org/appcontrol/operation/create_content"
#define APP_CONTROL_OPERATION_CALL "http://tizen.org/appcontrol/operation/call"
#define APP_CONTROL_OPERATION_SEND "http://tizen.org/appcontrol/operation/send"
#define APP_CONTROL_OPERATION_SEND_TEXT "http://tizen.org/appcontrol/operation/send_text"
#define APP_CONTROL_OPERATION_DIAL "http://tizen.org/appcontrol/operation/dial"
#define APP_CONTROL_OPERATION_SEARCH "http://tizen.org/appcontrol/operation/search"
#define APP_CONTROL_OPERATION_DOWNLOAD "http://tizen.org/appcontrol/operation/download"
#define APP_CONTROL_OPERATION_PRINT "http://tizen.org/appcontrol/operation/print"
#define APP_CONTROL_OPERATION_COMPOSE "http://tizen.org/appcontrol/operation/compose"
#define APP_CONTROL_OPERATION_SHARE "http://tizen.org/appcontrol/operation/share"
#define APP_CONTROL_OPERATION_MULTI_SHARE "http://tizen.org/appcontrol/operation/multi_share"
#define APP_CONTROL_OPERATION_SHARE_TEXT "http://tizen.org/appcontrol/operation/share_text"
#define APP_CONTROL_OPERATION_LAUNCH_ON_EVENT "http://tizen.org/appcontrol/operation/launch_on_event"
#define APP_CONTROL_OPERATION_ADD "http://tizen.org/appcontrol/operation/add"
#define APP_CONTROL_OPERATION_IMAGE_CAPTURE "http://tizen.org/appcontrol/operation/image_capture"
#define APP_CONTROL_OPERATION_VIDEO_CAPTURE "http://tizen.org/appcontrol/operation/video_capture"
#define APP_CONTROL_OPERATION_SETTING "http://tizen.org/appcontrol/operation/setting"
#define APP_CONTROL_OPERATION_SETTING_WIFI "http://tizen.org/appcontrol/operation/setting/wifi"
#define APP_CONTROL_OPERATION_SETTING_BT_ENABLE "http://tizen.org/appcontrol/operation/setting/bt_enable"

#define APP_CONTROL_DATA_SUBJECT "http://tizen.org/appcontrol/data/subject"
#define APP_CONTROL_DATA_TO "http://tizen.org/appcontrol/data/to"
#define APP_CONTROL_DATA_CC "http://tizen.org/appcontrol/data/cc"
#define APP_CONTROL_DATA_BCC "http://tizen.org/appcontrol/data/bcc"
#define APP_CONTROL_DATA_TEXT "http://tizen.org/appcontrol/data/text"
#define APP_CONTROL_DATA_TITLE "http://tizen.org/appcontrol/data/title"
#define APP_CONTROL_DATA_SELECTED "http://tizen.org/appcontrol/data/selected"
#define APP_CONTROL_DATA_PATH "http://tizen.org/appcontrol/data/path"
#define APP_CONTROL_DATA_SELECTION_MODE "http://tizen.org/appcontrol/data/selection_mode"
#define APP_CONTROL_DATA_EMAIL "http://tizen.org/appcontrol/data/email"
#define APP_CONTROL_DATA_PHONE "http://tizen.org/appcontrol/data/phone"
#define APP_CONTROL_DATA_URL "http://tizen.org/appcontrol/data/url"
#define APP_CONTROL_DATA_ID "http://tizen.org/appcontrol/data/id"
#define APP_CONTROL_DATA_TYPE "http://tizen.org/appcontrol/data/type"
#define APP_CONTROL_DATA_TOTAL_COUNT "http://tizen.org/appcontrol/data/total_count"
#define APP_CONTROL_DATA_TOTAL_SIZE "http://tizen.org/appcontrol/data/total_size"
#define APP_CONTROL_DATA_NAME "http://tizen.org/appcontrol/data/name"

/**
 * Called on the main loop with the answer to a request, exactly once if the request was sent and the
 * loop goes on running.
 *
 * @p request (a clone of what was sent) and @p reply (its extra data is the answer) are destroyed when
 * the callback returns. A receiver that left the bus gives FAILED and a reply without extra data.
 */
typedef void (*app_control_reply_cb)(app_control_h request, app_control_h reply, app_control_result_e result,
                                     void* user_data);

/** Called once for each extra data key, in the order of insertion; false stops the walk. */
typedef bool (*app_control_extra_data_cb)(app_control_h app_control, const char* key, void* user_data);

/** Makes an empty request, the caller's until app_control_destroy(). OUT_OF_MEMORY. */
int app_control_create(app_control_h* app_control);

/** Destroys a handle that came from app_control_create() or app_control_clone(). */
int app_control_destroy(app_control_h app_control);

/** Makes an independent copy; a clone of a request that arrived can still be replied to. OUT_OF_MEMORY. */
int app_control_clone(app_control_h* clone, app_control_h app_control);

/** Each setter copies its text; null clears the value. */
int app_control_set_operation(app_control_h app_control, const char* operation);
int app_control_set_uri(app_control_h app_control, const char* uri);
int app_control_set_app_id(app_control_h app_control, const char* app_id);
/** MIME type and category stay with the handle and its clones; they do not travel to another app. */
int app_control_set_mime(app_control_h app_control, const char* mime);
int app_control_set_category(app_control_h app_control, const char* category);

/**
 * Each getter hands out a copy, or null where the value is not set, which is no error. The app id of a
 * request that arrived is its sender's.
 */
int app_control_get_operation(app_control_h app_control, char** operation);
int app_control_get_uri(app_control_h app_control, char** uri);
int app_control_get_app_id(app_control_h app_control, char** app_id);
int app_control_get_mime(app_control_h app_control, char** mime);
int app_control_get_category(app_control_h app_control, char** category);

/**
 * Stores a text under a key, replacing an earlier text.
 *
 * Null or empty key or value: INVALID_PARAMETER. A key that starts with __AUL_ or __APP_SVC_, or that
 * holds a text list: KEY_REJECTED.
 */
int app_control_add_extra_data(app_control_h app_control, const char* key, const char* value);

/**
 * Stores a list of @p length texts under a key, replacing an earlier list. Elements may be null: they
 * read back as null here and arrive at another app as empty texts.
 *
 * Null or empty key, null @p value, @p length below 1: INVALID_PARAMETER. A key that starts with __AUL_
 * or __APP_SVC_, or that holds a single text: KEY_REJECTED.
 */
int app_control_add_extra_data_array(app_control_h app_control, const char* key, const char* value[],
                                     int length);

/** Null or empty key: INVALID_PARAMETER; reserved: KEY_REJECTED; not there: KEY_NOT_FOUND. */
int app_control_remove_extra_data(app_control_h app_control, const char* key);

/** Null or empty key: INVALID_PARAMETER; not there: KEY_NOT_FOUND; a text list: INVALID_DATA_TYPE. */
int app_control_get_extra_data(app_control_h app_control, const char* key, char** value);

/**
 * Hands out a list that the caller frees: each element, then the array.
 *
 * Null or empty key: INVALID_PARAMETER; not there: KEY_NOT_FOUND; a single text: INVALID_DATA_TYPE.
 */
int app_control_get_extra_data_array(app_control_h app_control, const char* key, char*** value, int* length);

/** Tells whether the key holds a text list; false for a key that is not there. Empty key: INVALID_PARAMETER.
 */
int app_control_is_extra_data_array(app_control_h app_control, const char* key, bool* array);

/** Walks the extra data; @p callback must not add to or remove from the handle. */
int app_control_foreach_extra_data(app_control_h app_control, app_control_extra_data_cb callback,
                                   void* user_data);

/**
 * Sends a request to the app named by app_control_set_app_id(), and starts that app where the bus knows
 * how to. Blocks until the receiver's process has queued the request, for at most 25 seconds.
 *
 * The handle is the caller's again when the call returns. @p callback may be null: no reply is wanted;
 * it is called only where the send returns NONE. A program without service_app_main() gets its replies
 * when it runs Ecore's loop: its first send with a callback from its main thread initialises Ecore, and
 * leaves what the program does on signals as it is.
 *
 * APP_NOT_FOUND: no app id, or nobody of that name. LAUNCH_REJECTED: operation launch_on_event.
 * INVALID_PARAMETER: a text is not valid UTF-8, or the receiver found the request malformed.
 * PERMISSION_DENIED: refused. TIMED_OUT. IO_ERROR: no bus, or this process's app has ended.
 * LAUNCH_FAILED: anything else, such as texts of more than 16 MiB together.
 */
int app_control_send_launch_request(app_control_h app_control, app_control_reply_cb callback,
                                    void* user_data);

/**
 * Answers a request that arrived with the extra data of @p reply. @p request may be a clone.
 *
 * Returns once the answer is on its way; a sender that wanted no reply gets none, and that is NONE.
 * INVALID_PARAMETER: @p request did not arrive from another app, @p result is APP_STARTED or unknown, or
 * a text is not valid UTF-8. IO_ERROR: no bus, or this process's app has ended.
 * LAUNCH_FAILED: texts of more than 16 MiB together.
 */
int app_control_reply_to_launch_request(app_control_h reply, app_control_h request,
                                        app_control_result_e result);

/** Hands out the app id of a request's sender. A handle without a known sender: INVALID_PARAMETER. */
int app_control_get_caller(app_control_h app_control, char** id);

/** Tells whether the sender of a request that arrived wants a reply. Any other handle: INVALID_PARAMETER. */
int app_control_is_reply_requested(app_control_h app_control, bool* requested);

#ifdef __cplusplus
}
#endif
