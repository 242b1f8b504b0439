// URL downloads: files fetched over HTTP in the background.
//
// Any thread may call. Calls return a download_error_e and do not wait for the network; those that
// set or unset a callback or destroy the download wait for a callback of its that is running. What calls set
// going is told to the callbacks, which the download service calls on a thread of its own, one at a time, in
// the order of what happened. Once download_destroy() or the callback's unset has returned, the callback is
// neither running nor called any more; called from inside that callback they do not wait for it. A callback
// must not wait for another thread that makes one of these calls.
#pragma once

#include <tizen.h>

#ifdef __cplusplus
extern "C" {
#endif

/* In C++ too these enumerations hold every int: callers hand in numbers, and compare numbers, that no list
 * has. */
#ifdef __cplusplus
#define DOWNLOAD_ANY_INT : int
#else
#define DOWNLOAD_ANY_INT
#endif

typedef enum DOWNLOAD_ANY_INT {
    DOWNLOAD_ERROR_NONE = TIZEN_ERROR_NONE,
    DOWNLOAD_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER,
    DOWNLOAD_ERROR_OUT_OF_MEMORY = TIZEN_ERROR_OUT_OF_MEMORY,
    DOWNLOAD_ERROR_NETWORK_UNREACHABLE = TIZEN_ERROR_NETWORK_UNREACHABLE,
    DOWNLOAD_ERROR_CONNECTION_TIMED_OUT = TIZEN_ERROR_CONNECTION_TIME_OUT,
    DOWNLOAD_ERROR_NO_SPACE = TIZEN_ERROR_FILE_NO_SPACE_ON_DEVICE,
    DOWNLOAD_ERROR_PERMISSION_DENIED = TIZEN_ERROR_PERMISSION_DENIED,
    DOWNLOAD_ERROR_NOT_SUPPORTED = TIZEN_ERROR_NOT_SUPPORTED,
    DOWNLOAD_ERROR_NO_DATA = TIZEN_ERROR_NO_DATA,
    DOWNLOAD_ERROR_IO_ERROR = TIZEN_ERROR_IO_ERROR,
    DOWNLOAD_ERROR_INVALID_STATE = TIZEN_ERROR_DOWNLOAD | 0x21,
    DOWNLOAD_ERROR_CONNECTION_FAILED = TIZEN_ERROR_DOWNLOAD | 0x22,
    DOWNLOAD_ERROR_INVALID_URL = TIZEN_ERROR_DOWNLOAD | 0x24,
    DOWNLOAD_ERROR_INVALID_DESTINATION = TIZEN_ERROR_DOWNLOAD | 0x25,
    DOWNLOAD_ERROR_TOO_MANY_DOWNLOADS = TIZEN_ERROR_DOWNLOAD | 0x26,
    DOWNLOAD_ERROR_QUEUE_FULL = TIZEN_ERROR_DOWNLOAD | 0x27,
    DOWNLOAD_ERROR_ALREADY_COMPLETED = TIZEN_ERROR_DOWNLOAD | 0x28,
    DOWNLOAD_ERROR_FILE_ALREADY_EXISTS = TIZEN_ERROR_DOWNLOAD | 0x29,
    DOWNLOAD_ERROR_CANNOT_RESUME = TIZEN_ERROR_DOWNLOAD | 0x2a,
    DOWNLOAD_ERROR_FIELD_NOT_FOUND = TIZEN_ERROR_DOWNLOAD | 0x2b,
    DOWNLOAD_ERROR_TOO_MANY_REDIRECTS = TIZEN_ERROR_DOWNLOAD | 0x30,
    DOWNLOAD_ERROR_UNHANDLED_HTTP_CODE = TIZEN_ERROR_DOWNLOAD | 0x31,
    DOWNLOAD_ERROR_REQUEST_TIMEOUT = TIZEN_ERROR_DOWNLOAD | 0x32,
    DOWNLOAD_ERROR_RESPONSE_TIMEOUT = TIZEN_ERROR_DOWNLOAD | 0x33,
    DOWNLOAD_ERROR_SYSTEM_DOWN = TIZEN_ERROR_DOWNLOAD | 0x34,
    DOWNLOAD_ERROR_ID_NOT_FOUND = TIZEN_ERROR_DOWNLOAD | 0x35,
    DOWNLOAD_ERROR_INVALID_NETWORK_TYPE = TIZEN_ERROR_DOWNLOAD | 0x36
} download_error_e;

/** Where a download stands. */
typedef enum DOWNLOAD_ANY_INT {
    DOWNLOAD_STATE_NONE = 0,
    DOWNLOAD_STATE_READY = 1,        // made, not started
    DOWNLOAD_STATE_QUEUED = 2,       // started; nothing of the file has come yet
    DOWNLOAD_STATE_DOWNLOADING = 3,  // the file is coming
    DOWNLOAD_STATE_PAUSED = 4,       // what has come is kept
    DOWNLOAD_STATE_COMPLETED = 5,    // the file is there
    DOWNLOAD_STATE_FAILED = 6,       // as CANCELED; download_get_error() tells why
    DOWNLOAD_STATE_CANCELED = 7      // once this is told nothing is left on the disk
} download_state_e;

/** The networks that a download may use. */
typedef enum DOWNLOAD_ANY_INT {
    DOWNLOAD_NETWORK_DATA = 0,
    DOWNLOAD_NETWORK_WIFI = 1,
    DOWNLOAD_NETWORK_WIFI_DIRECT = 2,
    DOWNLOAD_NETWORK_ALL = 3
} download_network_type_e;

#undef DOWNLOAD_ANY_INT

/* For all functions with an id: INVALID_PARAMETER for a null argument is looked at first, then ID_NOT_FOUND,
 * then INVALID_STATE, then the rest. */

/** Makes a download in state READY and stores its id, which is above 0 and never given again in this process.
 *  TOO_MANY_DOWNLOADS where 32 exist. */
int download_create(int* download_id);

/** Ends the download in any state, without a callback. An unfinished file is removed soon after. */
int download_destroy(int download_id);

/* Settings: in READY, FAILED and CANCELED only. */

/** An http or https address; another one: INVALID_URL. */
int download_set_url(int download_id, const char* url);

/** One of the four numbers; another one: INVALID_NETWORK_TYPE. At first ALL. */
int download_set_network_type(int download_id, download_network_type_e net_type);

/** The folder for the file, an absolute path; INVALID_DESTINATION where it is not a folder that exists. At
 *  first the user's downloads. */
int download_set_destination(int download_id, const char* destination);

/** The file's name: 1 to 255 bytes, without '/', not "." or "..". Where there is such a file already a number
 *  is put in front of the extension. At first what the address ends with. */
int download_set_file_name(int download_id, const char* file_name);

typedef void (*download_state_changed_cb)(int download_id, download_state_e state, void* user_data);

/** Bytes of the file received so far. */
typedef void (*download_progress_cb)(int download_id, unsigned long long received, void* user_data);

int download_set_state_changed_cb(int download_id, download_state_changed_cb callback, void* user_data);
int download_set_progress_cb(int download_id, download_progress_cb callback, void* user_data);

/** In any state, and also where none is set. */
int download_unset_state_changed_cb(int download_id);
int download_unset_progress_cb(int download_id);

/** From READY, FAILED and CANCELED a new download, from PAUSED the rest of the file: QUEUED, DOWNLOADING, and
 *  COMPLETED or FAILED. INVALID_URL without an address, SYSTEM_DOWN where the service cannot work any more.
 */
int download_start(int download_id);

/** From QUEUED and DOWNLOADING to PAUSED. */
int download_pause(int download_id);

/** From QUEUED, DOWNLOADING and PAUSED to CANCELED. */
int download_cancel(int download_id);

/** In COMPLETED only: the file's absolute path, which the caller free()s. */
int download_get_downloaded_file_path(int download_id, char** path);

/* In every state. */

int download_get_state(int download_id, download_state_e* state);

/** Why the download is FAILED; otherwise NONE. */
int download_get_error(int download_id, download_error_e* error);

/** The status of the last answer, 0 before it. */
int download_get_http_status(int download_id, int* http_status);

/** Bytes of the whole file, 0 as long as nobody has told them. */
int download_get_content_size(int download_id, unsigned long long* content_size);

#ifdef __cplusplus
}
#endif
