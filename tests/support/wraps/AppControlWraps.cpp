// App control. Arguments noted: texts, and keys with their values; of a list that is asked for, what its two
// out-parameters hold at first. Handles are left out.
#include <app_control.h>

#include <cstdlib>

#include "CallNotes.h"

extern "C" {
decltype(app_control_create) __real_app_control_create, __wrap_app_control_create;
decltype(app_control_destroy) __real_app_control_destroy, __wrap_app_control_destroy;
decltype(app_control_set_app_id) __real_app_control_set_app_id, __wrap_app_control_set_app_id;
decltype(app_control_set_operation) __real_app_control_set_operation, __wrap_app_control_set_operation;
decltype(app_control_set_uri) __real_app_control_set_uri, __wrap_app_control_set_uri;
decltype(app_control_get_app_id) __real_app_control_get_app_id, __wrap_app_control_get_app_id;
decltype(app_control_get_operation) __real_app_control_get_operation, __wrap_app_control_get_operation;
decltype(app_control_get_uri) __real_app_control_get_uri, __wrap_app_control_get_uri;
decltype(app_control_add_extra_data) __real_app_control_add_extra_data, __wrap_app_control_add_extra_data;
decltype(app_control_add_extra_data_array) __real_app_control_add_extra_data_array,
    __wrap_app_control_add_extra_data_array;
decltype(app_control_get_extra_data) __real_app_control_get_extra_data, __wrap_app_control_get_extra_data;
decltype(app_control_get_extra_data_array) __real_app_control_get_extra_data_array,
    __wrap_app_control_get_extra_data_array;
decltype(app_control_is_extra_data_array) __real_app_control_is_extra_data_array,
    __wrap_app_control_is_extra_data_array;
decltype(app_control_foreach_extra_data) __real_app_control_foreach_extra_data,
    __wrap_app_control_foreach_extra_data;
decltype(app_control_send_launch_request) __real_app_control_send_launch_request,
    __wrap_app_control_send_launch_request;
decltype(app_control_reply_to_launch_request) __real_app_control_reply_to_launch_request,
    __wrap_app_control_reply_to_launch_request;
}

using namespace TestSupport;
using CallNotes::observe;
using CallNotes::text;

namespace {

std::string taken(char* given)
{
    const std::string copy = text(given);
    free(given);
    return copy;
}

std::string read(app_control_h handle, int (*get)(app_control_h, char**))
{
    char* given = nullptr;
    get(handle, &given);
    return taken(given);
}

std::vector<std::string> readList(app_control_h handle, const char* key)
{
    char** given = nullptr;
    int length = 0;
    __real_app_control_get_extra_data_array(handle, key, &given, &length);
    std::vector<std::string> list;
    for (int i = 0; i < length; ++i)
        list.push_back(taken(given[i]));
    free(given);
    return list;
}

bool readKey(app_control_h handle, const char* key, void* message)
{
    auto* launch = static_cast<Launch*>(message);
    bool isList = false;
    __real_app_control_is_extra_data_array(handle, key, &isList);
    launch->keys.emplace_back(key);
    if (isList) {
        launch->lists[key] = readList(handle, key);
        return true;
    }
    char* value = nullptr;
    __real_app_control_get_extra_data(handle, key, &value);
    launch->extras[key] = taken(value);
    return true;
}

Launch readMessage(app_control_h handle)
{
    Launch launch{};
    launch.appId = read(handle, __real_app_control_get_app_id);
    launch.operation = read(handle, __real_app_control_get_operation);
    launch.uri = read(handle, __real_app_control_get_uri);
    __real_app_control_foreach_extra_data(handle, readKey, &launch);
    return launch;
}

void cutList(char** texts, int& length, int newLength)
{
    for (int i = newLength > 0 ? newLength : 0; i < length; ++i)
        free(texts[i]);
    length = newLength;
}

}  // namespace

int __wrap_app_control_create(app_control_h* handle)
{
    return observe("app_control_create", {}, [&] { return __real_app_control_create(handle); });
}

int __wrap_app_control_destroy(app_control_h handle)
{
    return observe("app_control_destroy", {}, [&] { return __real_app_control_destroy(handle); });
}

int __wrap_app_control_set_app_id(app_control_h handle, const char* value)
{
    return observe("app_control_set_app_id", {text(value)},
                   [&] { return __real_app_control_set_app_id(handle, value); });
}

int __wrap_app_control_set_operation(app_control_h handle, const char* value)
{
    return observe("app_control_set_operation", {text(value)},
                   [&] { return __real_app_control_set_operation(handle, value); });
}

int __wrap_app_control_set_uri(app_control_h handle, const char* value)
{
    return observe("app_control_set_uri", {text(value)},
                   [&] { return __real_app_control_set_uri(handle, value); });
}

int __wrap_app_control_get_app_id(app_control_h handle, char** value)
{
    return observe("app_control_get_app_id", {},
                   [&] { return __real_app_control_get_app_id(handle, value); });
}

int __wrap_app_control_get_operation(app_control_h handle, char** value)
{
    return observe("app_control_get_operation", {},
                   [&] { return __real_app_control_get_operation(handle, value); });
}

int __wrap_app_control_get_uri(app_control_h handle, char** value)
{
    return observe("app_control_get_uri", {}, [&] { return __real_app_control_get_uri(handle, value); });
}

int __wrap_app_control_add_extra_data(app_control_h handle, const char* key, const char* value)
{
    return observe("app_control_add_extra_data", {text(key), text(value)},
                   [&] { return __real_app_control_add_extra_data(handle, key, value); });
}

int __wrap_app_control_add_extra_data_array(app_control_h handle, const char* key, const char* values[],
                                            int length)
{
    CallNotes::Texts arguments = {text(key)};
    for (int i = 0; i < length; ++i)
        arguments.push_back(text(values[i]));
    return observe("app_control_add_extra_data_array", arguments,
                   [&] { return __real_app_control_add_extra_data_array(handle, key, values, length); });
}

int __wrap_app_control_get_extra_data(app_control_h handle, const char* key, char** value)
{
    return observe("app_control_get_extra_data", {text(key)},
                   [&] { return __real_app_control_get_extra_data(handle, key, value); });
}

int __wrap_app_control_get_extra_data_array(app_control_h handle, const char* key, char*** values,
                                            int* length)
{
    const CallNotes::Texts arguments = {text(key), *values ? "given" : "null", std::to_string(*length)};
    const int result = observe("app_control_get_extra_data_array", arguments, [&] {
        return __real_app_control_get_extra_data_array(handle, key, values, length);
    });
    const std::optional<int> newLength = CallNotes::listLength();
    if (newLength && *values)
        cutList(*values, *length, *newLength);
    return result;
}

int __wrap_app_control_is_extra_data_array(app_control_h handle, const char* key, bool* array)
{
    return observe("app_control_is_extra_data_array", {text(key)},
                   [&] { return __real_app_control_is_extra_data_array(handle, key, array); });
}

int __wrap_app_control_foreach_extra_data(app_control_h handle, app_control_extra_data_cb visit, void* data)
{
    return observe("app_control_foreach_extra_data", {},
                   [&] { return __real_app_control_foreach_extra_data(handle, visit, data); });
}

int __wrap_app_control_send_launch_request(app_control_h handle, app_control_reply_cb callback,
                                           void* userData)
{
    Launch launch = readMessage(handle);
    launch.callback = callback;
    launch.userData = userData;
    launch.code = observe("app_control_send_launch_request", {launch.appId, launch.operation}, [&] {
        const CallNotes::PlatformsOwn own;
        return CallNotes::sendsForReal() ? __real_app_control_send_launch_request(handle, callback, userData)
                                         : 0;
    });
    const int code = launch.code;
    CallNotes::keep(std::move(launch));
    return code;
}

int __wrap_app_control_reply_to_launch_request(app_control_h reply, app_control_h request,
                                               app_control_result_e result)
{
    CallNotes::keep(Reply{readMessage(reply), request, result});
    return observe("app_control_reply_to_launch_request", {std::to_string(result)}, [&] {
        const CallNotes::PlatformsOwn own;
        return CallNotes::sendsForReal() ? __real_app_control_reply_to_launch_request(reply, request, result)
                                         : 0;
    });
}
