#include <app_control.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "AppControlHandle.h"

namespace {

using HostPlatform::ExtraData;
using HostPlatform::handOut;
using HostPlatform::Text;
using HostPlatform::TextList;

bool isEmpty(const char* text)
{
    return !text || !*text;
}

// Runs what allocates: an app of the platform gets a code, never an exception.
template <typename Function>
int guarded(Function function)
{
    try {
        return function();
    } catch (const std::bad_alloc&) {
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    }
}

int setText(app_control_h handle, Text app_control_s::*field, const char* value)
{
    if (!handle)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return guarded([&] {
        handle->*field = value ? Text(value) : Text();
        return APP_CONTROL_ERROR_NONE;
    });
}

int getText(app_control_h handle, const Text app_control_s::*field, char** out)
{
    if (!handle || !out)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    const Text& text = handle->*field;
    if (text)
        return handOut(text->c_str(), out);
    *out = nullptr;
    return APP_CONTROL_ERROR_NONE;
}

template <typename Kind>
int store(app_control_h handle, const char* key, Kind value)
{
    if (HostPlatform::isReservedKey(key))
        return APP_CONTROL_ERROR_KEY_REJECTED;
    const ExtraData::Value* present = handle->extraData.find(key);
    if (present && !std::holds_alternative<Kind>(*present))
        return APP_CONTROL_ERROR_KEY_REJECTED;
    handle->extraData.set(key, std::move(value));
    return APP_CONTROL_ERROR_NONE;
}

TextList listOf(const char* const* texts, int length)
{
    TextList list;
    for (int i = 0; i < length; ++i)
        list.push_back(texts[i] ? Text(texts[i]) : Text());
    return list;
}

// A caller frees each element and then the array; so does this, where the copy stays incomplete.
struct FreeArray {
    int length;
    void operator()(char** array) const
    {
        for (int i = 0; i < length; ++i)
            free(array[i]);
        free(array);
    }
};

int copyOut(const TextList& list, char*** out, int* length)
{
    const int count = static_cast<int>(list.size());
    // One element more than needed: an empty list is no null pointer.
    std::unique_ptr<char*, FreeArray> array(static_cast<char**>(calloc(list.size() + 1, sizeof(char*))),
                                            FreeArray{count});
    if (!array)
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    for (int i = 0; i < count; ++i) {
        const Text& text = list[static_cast<std::size_t>(i)];
        if (text && handOut(text->c_str(), &array.get()[i]) != APP_CONTROL_ERROR_NONE)
            return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    }
    *out = array.release();
    *length = count;
    return APP_CONTROL_ERROR_NONE;
}

// Looks for a value of one kind; NONE only where there is one.
template <typename Kind>
int find(app_control_h handle, const char* key, const Kind** found)
{
    return guarded([&]() -> int {
        const ExtraData::Value* value = handle->extraData.find(key);
        if (!value)
            return APP_CONTROL_ERROR_KEY_NOT_FOUND;
        *found = std::get_if<Kind>(value);
        return *found ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_INVALID_DATA_TYPE;
    });
}

}  // namespace

int app_control_create(app_control_h* app_control)
{
    if (!app_control)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    auto* handle = new (std::nothrow) app_control_s;
    if (!handle)
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    *app_control = handle;
    return APP_CONTROL_ERROR_NONE;
}

int app_control_destroy(app_control_h app_control)
{
    if (!app_control)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    delete app_control;
    return APP_CONTROL_ERROR_NONE;
}

int app_control_clone(app_control_h* clone, app_control_h app_control)
{
    if (!clone || !app_control)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return guarded([&] {
        *clone = new app_control_s(*app_control);
        return APP_CONTROL_ERROR_NONE;
    });
}

int app_control_set_operation(app_control_h app_control, const char* operation)
{
    return setText(app_control, &app_control_s::operation, operation);
}

int app_control_set_uri(app_control_h app_control, const char* uri)
{
    return setText(app_control, &app_control_s::uri, uri);
}

int app_control_set_app_id(app_control_h app_control, const char* app_id)
{
    return setText(app_control, &app_control_s::appId, app_id);
}

int app_control_set_mime(app_control_h app_control, const char* mime)
{
    return setText(app_control, &app_control_s::mime, mime);
}

int app_control_set_category(app_control_h app_control, const char* category)
{
    return setText(app_control, &app_control_s::category, category);
}

int app_control_get_operation(app_control_h app_control, char** operation)
{
    return getText(app_control, &app_control_s::operation, operation);
}

int app_control_get_uri(app_control_h app_control, char** uri)
{
    return getText(app_control, &app_control_s::uri, uri);
}

int app_control_get_app_id(app_control_h app_control, char** app_id)
{
    return getText(app_control, &app_control_s::appId, app_id);
}

int app_control_get_mime(app_control_h app_control, char** mime)
{
    return getText(app_control, &app_control_s::mime, mime);
}

int app_control_get_category(app_control_h app_control, char** category)
{
    return getText(app_control, &app_control_s::category, category);
}

int app_control_add_extra_data(app_control_h app_control, const char* key, const char* value)
{
    if (!app_control || isEmpty(key) || isEmpty(value))
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return guarded([&] { return store(app_control, key, std::string(value)); });
}

int app_control_add_extra_data_array(app_control_h app_control, const char* key, const char* value[],
                                     int length)
{
    if (!app_control || isEmpty(key) || !value || length < 1)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return guarded([&] { return store(app_control, key, listOf(value, length)); });
}

int app_control_remove_extra_data(app_control_h app_control, const char* key)
{
    if (!app_control || isEmpty(key))
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return guarded([&]() -> int {
        if (HostPlatform::isReservedKey(key))
            return APP_CONTROL_ERROR_KEY_REJECTED;
        return app_control->extraData.remove(key) ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_KEY_NOT_FOUND;
    });
}

int app_control_get_extra_data(app_control_h app_control, const char* key, char** value)
{
    if (!app_control || isEmpty(key) || !value)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    const std::string* text = nullptr;
    const int result = find(app_control, key, &text);
    return text ? handOut(text->c_str(), value) : result;
}

int app_control_get_extra_data_array(app_control_h app_control, const char* key, char*** value, int* length)
{
    if (!app_control || isEmpty(key) || !value || !length)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    const TextList* list = nullptr;
    const int result = find(app_control, key, &list);
    return list ? copyOut(*list, value, length) : result;
}

int app_control_is_extra_data_array(app_control_h app_control, const char* key, bool* array)
{
    if (!app_control || isEmpty(key) || !array)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    const TextList* list = nullptr;
    const int result = find(app_control, key, &list);
    if (result == APP_CONTROL_ERROR_OUT_OF_MEMORY)
        return result;
    *array = list != nullptr;
    return APP_CONTROL_ERROR_NONE;
}

int app_control_foreach_extra_data(app_control_h app_control, app_control_extra_data_cb callback,
                                   void* user_data)
{
    if (!app_control || !callback)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    std::vector<std::string> keys;
    const int result = guarded([&] {
        keys = app_control->extraData.keys();
        return APP_CONTROL_ERROR_NONE;
    });
    for (const std::string& key : keys) {
        if (!HostPlatform::isReservedKey(key) && !callback(app_control, key.c_str(), user_data))
            break;
    }
    return result;
}

int app_control_get_caller(app_control_h app_control, char** id)
{
    if (!app_control || !id || !app_control->origin || app_control->origin->caller.empty())
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return handOut(app_control->origin->caller.c_str(), id);
}

int app_control_is_reply_requested(app_control_h app_control, bool* requested)
{
    if (!app_control || !requested || !app_control->origin)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    *requested = app_control->origin->requestId != 0;
    return APP_CONTROL_ERROR_NONE;
}
