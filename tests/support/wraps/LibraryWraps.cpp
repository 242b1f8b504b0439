// SQLite, the JSON parser, and what the system has for files, memory, commands and time.
// Arguments noted: paths, SQL, commands, numbers.
#include <json-glib/json-glib.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>

#include "CallNotes.h"

extern "C" {
decltype(sqlite3_open_v2) __real_sqlite3_open_v2, __wrap_sqlite3_open_v2;
decltype(sqlite3_busy_timeout) __real_sqlite3_busy_timeout, __wrap_sqlite3_busy_timeout;
decltype(sqlite3_prepare_v2) __real_sqlite3_prepare_v2, __wrap_sqlite3_prepare_v2;
decltype(sqlite3_step) __real_sqlite3_step, __wrap_sqlite3_step;
decltype(sqlite3_column_count) __real_sqlite3_column_count, __wrap_sqlite3_column_count;
decltype(sqlite3_finalize) __real_sqlite3_finalize, __wrap_sqlite3_finalize;
decltype(sqlite3_close) __real_sqlite3_close, __wrap_sqlite3_close;
decltype(json_parser_new) __real_json_parser_new, __wrap_json_parser_new;
decltype(json_node_get_object) __real_json_node_get_object, __wrap_json_node_get_object;
FILE* __real_fopen(const char*, const char*);
FILE* __wrap_fopen(const char*, const char*);
size_t __real_fread(void*, size_t, size_t, FILE*);
size_t __wrap_fread(void*, size_t, size_t, FILE*);
size_t __real_fwrite(const void*, size_t, size_t, FILE*);
size_t __wrap_fwrite(const void*, size_t, size_t, FILE*);
int __real_fseek(FILE*, long, int);
int __wrap_fseek(FILE*, long, int);
long __real_ftell(FILE*);
long __wrap_ftell(FILE*);
int __real_fflush(FILE*);
int __wrap_fflush(FILE*);
int __real_fclose(FILE*);
int __wrap_fclose(FILE*);
int __real_fsync(int);
int __wrap_fsync(int);
void __real_sync();
void __wrap_sync();
int __real_unlink(const char*);
int __wrap_unlink(const char*);
void* __real__ZnamRKSt9nothrow_t(size_t, const std::nothrow_t&);
void* __wrap__ZnamRKSt9nothrow_t(size_t, const std::nothrow_t&);
int __real_system(const char*);
int __wrap_system(const char*);
int __real_mkdir(const char*, mode_t);
int __wrap_mkdir(const char*, mode_t);
int __real_nanosleep(const timespec*, timespec*);
int __wrap_nanosleep(const timespec*, timespec*);
long __real_syscall(long, ...);
long __wrap_syscall(long, ...);
}

using namespace TestSupport;
using CallNotes::note;
using CallNotes::observe;
using CallNotes::observePosix;
using CallNotes::text;

int __wrap_sqlite3_open_v2(const char* path, sqlite3** database, int flags, const char* vfs)
{
    return observe("sqlite3_open_v2", {text(path), std::to_string(flags), text(vfs)},
                   [&] { return __real_sqlite3_open_v2(path, database, flags, vfs); });
}

int __wrap_sqlite3_busy_timeout(sqlite3* database, int milliseconds)
{
    return observe("sqlite3_busy_timeout", {std::to_string(milliseconds)},
                   [&] { return __real_sqlite3_busy_timeout(database, milliseconds); });
}

int __wrap_sqlite3_prepare_v2(sqlite3* database, const char* sql, int length, sqlite3_stmt** statement,
                              const char** rest)
{
    return observe("sqlite3_prepare_v2", {text(sql)},
                   [&] { return __real_sqlite3_prepare_v2(database, sql, length, statement, rest); });
}

int __wrap_sqlite3_step(sqlite3_stmt* statement)
{
    return observe("sqlite3_step", {}, [&] { return __real_sqlite3_step(statement); });
}

int __wrap_sqlite3_column_count(sqlite3_stmt* statement)
{
    return observe("sqlite3_column_count", {}, [&] { return __real_sqlite3_column_count(statement); });
}

int __wrap_sqlite3_finalize(sqlite3_stmt* statement)
{
    return observe("sqlite3_finalize", {}, [&] { return __real_sqlite3_finalize(statement); });
}

int __wrap_sqlite3_close(sqlite3* database)
{
    return observe("sqlite3_close", {}, [&] { return __real_sqlite3_close(database); });
}

JsonParser* __wrap_json_parser_new()
{
    return CallNotes::mustFail("json_parser_new") ? nullptr : __real_json_parser_new();
}

JsonObject* __wrap_json_node_get_object(JsonNode* node)
{
    return CallNotes::mustFail("json_node_get_object") ? nullptr : __real_json_node_get_object(node);
}

FILE* __wrap_fopen(const char* path, const char* mode)
{
    return CallNotes::mustFail("fopen", {text(path), text(mode)}) ? nullptr : __real_fopen(path, mode);
}

// The failure of these two is a short count: the code is how many items they take.
size_t __wrap_fread(void* bytes, size_t size, size_t count, FILE* file)
{
    return observe("fread", {std::to_string(size), std::to_string(count)},
                   [&] { return __real_fread(bytes, size, count, file); });
}

size_t __wrap_fwrite(const void* bytes, size_t size, size_t count, FILE* file)
{
    return observe("fwrite", {std::to_string(size), std::to_string(count)},
                   [&] { return __real_fwrite(bytes, size, count, file); });
}

int __wrap_fseek(FILE* file, long offset, int whence)
{
    return observePosix("fseek", {std::to_string(offset), std::to_string(whence)},
                        [&] { return __real_fseek(file, offset, whence); });
}

long __wrap_ftell(FILE* file)
{
    return observe("ftell", {}, [&] { return __real_ftell(file); });
}

int __wrap_fflush(FILE* file)
{
    return observePosix("fflush", {}, [&] { return __real_fflush(file); });
}

int __wrap_fclose(FILE* file)
{
    return observePosix("fclose", {}, [&] { return __real_fclose(file); });
}

int __wrap_fsync(int descriptor)
{
    return observePosix("fsync", {}, [&] { return __real_fsync(descriptor); });
}

void __wrap_sync()
{
    note("sync");
    __real_sync();
}

int __wrap_unlink(const char* path)
{
    return observePosix("unlink", {text(path)}, [&] { return __real_unlink(path); });
}

void* __wrap__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t& tag)
{
    return CallNotes::mustFail("operator new[]", {std::to_string(size)})
               ? nullptr
               : __real__ZnamRKSt9nothrow_t(size, tag);
}

int __wrap_system(const char* command)
{
    return observe("system", {text(command)}, [&] { return __real_system(command); });
}

int __wrap_mkdir(const char* path, mode_t mode)
{
    return observePosix("mkdir", {text(path), std::to_string(mode)},
                        [&] { return __real_mkdir(path, mode); });
}

int __wrap_nanosleep(const timespec* time, timespec* rest)
{
    return observePosix("nanosleep", {std::to_string(time->tv_sec), std::to_string(time->tv_nsec)},
                        [&] { return __real_nanosleep(time, rest); });
}

// None of the calls made through it here has more than the five arguments that come in registers, where
// reading those that were not given does no harm.
long __wrap_syscall(long number, ...)
{
    long words[5];
    va_list arguments;
    va_start(arguments, number);
    for (long& word : words)
        word = va_arg(arguments, long);
    va_end(arguments);
    return observe("syscall", {std::to_string(number)},
                   [&] { return __real_syscall(number, words[0], words[1], words[2], words[3], words[4]); });
}
