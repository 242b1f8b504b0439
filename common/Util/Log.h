// The service's log: one statement writes the platform's log and standard output.
#pragma once

#include <cstdio>
#include <string>

#include <dlog.h>
#include <sys/syscall.h>
#include <unistd.h>

/**
 * LOG_D (progress), LOG_I (lifecycle) and LOG_E (a failed call, a rejected input) take a printf format, which
 * must be a string literal, and its arguments:
 *
 *     LOG_E("Can't open database: %s", sqlite3_errmsg(database));
 *
 * The platform's log gets the message in the level's colour behind the kernel's thread id, the source file's
 * base name, the function's bare name and the line; standard output gets it plain behind function and line.
 * Both formats are pasted together by the compiler, so a statement costs two formatting calls and one system
 * call, and allocates nothing. Any thread may log at any time. The two lines of one statement are two calls:
 * those of other threads may come between them. Nothing is reported back and standard output is not flushed.
 * The arguments are evaluated twice: once for each output.
 *
 * On line 10 of main.cpp, in the function _create, on thread 4711, LOG_I("_create") writes
 *
 *     ESC[34m[4711] main.cpp: _create(10) > _createESC[0m      to the platform's log, and
 *     [_create:10] _create                                     to standard output.
 */
#define LOG_D(format, ...) UTIL_LOG_WRITE(DLOG_DEBUG, UTIL_LOG_GREEN, format, ##__VA_ARGS__)
#define LOG_I(format, ...) UTIL_LOG_WRITE(DLOG_INFO, UTIL_LOG_BLUE, format, ##__VA_ARGS__)
#define LOG_E(format, ...) UTIL_LOG_WRITE(DLOG_ERROR, UTIL_LOG_RED, format, ##__VA_ARGS__)

#define UTIL_LOG_TAG "carvoy-service"

#define UTIL_LOG_RED "\033[31m"
#define UTIL_LOG_GREEN "\033[32m"
#define UTIL_LOG_BLUE "\033[34m"
#define UTIL_LOG_RESET "\033[0m"

#define UTIL_LOG_WRITE(priority, colour, format, ...)                                                      \
    do {                                                                                                   \
        constexpr const char* utilLogFile = Util::baseName(__FILE__);                                      \
        dlog_print(priority, UTIL_LOG_TAG, colour "[%d] %s: %s(%d) > " format UTIL_LOG_RESET,              \
                   static_cast<int>(syscall(SYS_gettid)), utilLogFile, __func__, __LINE__, ##__VA_ARGS__); \
        printf("[%s:%d] " format "\n", __func__, __LINE__, ##__VA_ARGS__);                                 \
    } while (0)

namespace Util {

/** The part of `path` behind its last slash, found by the compiler. */
constexpr const char* baseName(const char* path)
{
    const char* name = path;
    for (const char* c = path; *c != '\0'; ++c) {
        if (*c == '/')
            name = c + 1;
    }
    return name;
}

/**
 * Logs the version of this build: one of the first things that main does, so that every log tells its writer.
 * The version is put together here and not by the build, so that it can never differ between the log and the
 * sources that wrote it.
 */
inline void printVersion()
{
    std::string version = "Unknown";
    version = "0.0.1";
    version += "-";
    version += "5.12";

    LOG_I("Carvoy Version: %s", version.c_str());
}

}  // namespace Util
