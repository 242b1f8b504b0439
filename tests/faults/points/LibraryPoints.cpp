// libcurl, json-glib and SQLite.
#include <curl/curl.h>
#include <json-glib/json-glib.h>
#include <sqlite3.h>

#include <cstdarg>

#include "Point.h"

using Faults::Point;

POINT0(curl_easy_init, nullptr)
POINT1(curl_easy_perform, CURLE_COULDNT_CONNECT)
POINT3(curl_easy_escape, nullptr)
POINT1(curl_global_init, CURLE_FAILED_INIT)
POINT2(curl_slist_append, nullptr)

// The macros check argument types; here are the functions themselves. Whatever an option takes is one word.
#undef curl_easy_setopt
#undef curl_easy_getinfo

extern "C" CURLcode faulty_curl_easy_setopt(CURL* handle, CURLoption option, ...);
extern "C" CURLcode faulty_curl_easy_getinfo(CURL* handle, CURLINFO info, ...);

CURLcode faulty_curl_easy_setopt(CURL* handle, CURLoption option, ...)
{
    static Point point("curl_easy_setopt");
    va_list arguments;
    va_start(arguments, option);
    void* const value = va_arg(arguments, void*);
    va_end(arguments);
    return point.call(
        FAULTS_SITE, [] { return CURLE_OUT_OF_MEMORY; },
        [&] { return curl_easy_setopt(handle, option, value); });
}

CURLcode faulty_curl_easy_getinfo(CURL* handle, CURLINFO info, ...)
{
    static Point point("curl_easy_getinfo");
    va_list arguments;
    va_start(arguments, info);
    void* const value = va_arg(arguments, void*);
    va_end(arguments);
    return point.call(
        FAULTS_SITE, [] { return CURLE_UNKNOWN_OPTION; },
        [&] { return curl_easy_getinfo(handle, info, value); });
}

POINT0(json_parser_new, nullptr)
POINT1(json_parser_get_root, nullptr)
POINT1(json_node_get_node_type, JSON_NODE_NULL)
POINT1(json_node_get_object, nullptr)
POINT1(json_node_get_value_type, G_TYPE_INVALID)
POINT1(json_node_get_double, 0.0)
POINT2(json_object_has_member, FALSE)
POINT2(json_object_get_member, nullptr)
POINT2(json_object_get_object_member, nullptr)
POINT2(json_object_get_array_member, nullptr)
POINT2(json_object_get_string_member, nullptr)
POINT2(json_object_get_int_member, 0)
POINT2(json_array_get_element, nullptr)
POINT2(json_array_get_object_element, nullptr)
POINT3(g_utf8_validate, FALSE)

extern "C" gboolean faulty_json_parser_load_from_data(JsonParser* parser, const char* text, gssize length,
                                                      GError** error);

gboolean faulty_json_parser_load_from_data(JsonParser* parser, const char* text, gssize length,
                                           GError** error)
{
    static Point point("json_parser_load_from_data");
    const auto failure = [&] {
        g_set_error_literal(error, JSON_PARSER_ERROR, JSON_PARSER_ERROR_UNKNOWN, "as the test wants it");
        return FALSE;
    };
    return point.call(FAULTS_SITE, failure,
                      [&] { return json_parser_load_from_data(parser, text, length, error); });
}

POINT2(sqlite3_busy_timeout, SQLITE_MISUSE)
POINT5(sqlite3_prepare_v2, SQLITE_BUSY)
POINT1(sqlite3_step, SQLITE_BUSY)
POINT1(sqlite3_column_count, 0)
POINT2(sqlite3_column_type, SQLITE_NULL)
POINT2(sqlite3_column_text, nullptr)
END1(sqlite3_finalize, SQLITE_BUSY)
END1(sqlite3_close, SQLITE_BUSY)

extern "C" int faulty_sqlite3_open_v2(const char* path, sqlite3** database, int flags, const char* vfs);

// A connection is handed out also where the file could not be opened, but not where there is no memory for
// one.
int faulty_sqlite3_open_v2(const char* path, sqlite3** database, int flags, const char* vfs)
{
    static Point point("sqlite3_open_v2");
    const auto failure = [&] {
        *database = nullptr;
        return SQLITE_NOMEM;
    };
    return point.call(FAULTS_SITE, failure, [&] { return sqlite3_open_v2(path, database, flags, vfs); });
}
