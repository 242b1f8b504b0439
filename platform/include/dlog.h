// Platform logging: one entry goes to the system log under a tag and a priority.
// Callable from any thread and at any time, static initialisation and destruction included.
#pragma once

#include <stdarg.h>
#include <tizen.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    DLOG_UNKNOWN = 0,
    DLOG_DEFAULT = 1,
    DLOG_VERBOSE = 2,
    DLOG_DEBUG = 3,
    DLOG_INFO = 4,
    DLOG_WARN = 5,
    DLOG_ERROR = 6,
    DLOG_FATAL = 7,
    DLOG_SILENT = 8,
    DLOG_PRIO_MAX = 9
} log_priority;

typedef enum {
    DLOG_ERROR_NONE = TIZEN_ERROR_NONE,
    DLOG_ERROR_NOT_PERMITTED = TIZEN_ERROR_NOT_PERMITTED,
    DLOG_ERROR_INVALID_PARAMETER = TIZEN_ERROR_INVALID_PARAMETER
} dlog_error_e;

// Writes one entry. A null tag counts as ""; every line of a message with several lines carries the
// prefix. The formatted message is cut to 4076 bytes, never inside a UTF-8 character.
// A tag is cut to 128 bytes, an entry of very many lines after the last line that fits 16 KiB.
// Returns the number of bytes written (0 or more); DLOG_ERROR_INVALID_PARAMETER for a priority below
// DLOG_VERBOSE or from DLOG_PRIO_MAX up, for a null format and for one that cannot be formatted;
// DLOG_ERROR_NOT_PERMITTED when the log refuses the entry. Allocates nothing itself, never blocks on a
// lock of its own, leaves errno alone.
int dlog_print(log_priority prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

// The same with the arguments as a list; the list is used up.
int dlog_vprint(log_priority prio, const char* tag, const char* fmt, va_list ap)
    __attribute__((format(printf, 3, 0)));

#ifdef __cplusplus
}
#endif
