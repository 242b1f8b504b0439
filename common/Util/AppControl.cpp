// Messages are read from the platform's handles and sent through them here, and nowhere else.
#include "AppControl.h"

#include <cstdlib>

#include "Log.h"

namespace Util {

namespace {

using TextGetter = int (*)(app_control_h, char**);

/** The text that `get` hands out, or an empty one if it hands out none. */
std::string readText(app_control_h handle, TextGetter get)
{
    // The platform reports a text that was never set as a success with a null pointer.
    char* text = nullptr;
    std::string copy;
    if (get(handle, &text) == APP_CONTROL_ERROR_NONE && text) {
        copy = text;
        free(text);
    }
    return copy;
}

/**
 * Copies and releases the platform's array and its elements; a null element becomes an empty text. With a
 * length below 1 there are no elements, and only the array is released.
 */
std::vector<std::string> takeTexts(char** texts, int length)
{
    std::vector<std::string> copies;
    for (int i = 0; i < length; ++i) {
        copies.emplace_back(texts[i] ? texts[i] : "");
        free(texts[i]);
    }
    free(texts);
    return copies;
}

}  // namespace

AppControlData::AppControlData()
{
    clearData();
}

AppControlData::~AppControlData()
{
    clearData();
}

AppControlData::AppControlData(app_control_h& handle)
{
    clearData();
    if (!handle)
        return;

    // All that is behind this constructor works on copies: the platform's handle ends with the callback that
    // brought it.
    mPackageName = readText(handle, app_control_get_app_id);
    mOperation = readText(handle, app_control_get_operation);
    mUri = readText(handle, app_control_get_uri);

    // The visitor is called by C code, once for each key, in the order in which the sender added them. A key
    // that cannot be read is not a reason to lose the ones behind it: the walk always goes on.
    auto visit = [](app_control_h request, const char* key, void* self) {
        auto* data = static_cast<AppControlData*>(self);
        bool isArray = false;
        if (app_control_is_extra_data_array(request, key, &isArray) != APP_CONTROL_ERROR_NONE) {
            LOG_E("app_control_is_extra_data_array() failed");
            return true;
        }
        if (isArray)
            data->readExtraVectorData(request, key);
        else
            data->readExtraData(request, key);
        return true;
    };
    app_control_foreach_extra_data(handle, visit, this);
}

void AppControlData::readExtraData(app_control_h handle, const char* key)
{
    char* value = nullptr;
    std::string copy;
    if (app_control_get_extra_data(handle, key, &value) == APP_CONTROL_ERROR_NONE && value) {
        copy = value;
        free(value);
    }
    addExtraData(key, copy);
}

void AppControlData::readExtraVectorData(app_control_h handle, const char* key)
{
    char** values = nullptr;
    int length = -1;
    std::vector<std::string> copies;
    int error = app_control_get_extra_data_array(handle, key, &values, &length);
    if (error == APP_CONTROL_ERROR_NONE && values)
        copies = takeTexts(values, length);
    addExtraVectorData(key, copies);
}

AppControlData& AppControlData::setPackageName(const std::string& packageName)
{
    mPackageName = packageName;
    return *this;
}

AppControlData& AppControlData::setOperation(const std::string& operation)
{
    mOperation = operation;
    return *this;
}

AppControlData& AppControlData::setUri(const std::string& uri)
{
    mUri = uri;
    return *this;
}

void AppControlData::setReplyCallback(app_control_reply_cb callback, void* userData)
{
    mReplyCallback = callback;
    mReplyCallbackUserData = userData;
}

void AppControlData::setRequestedAppControl(app_control_h request)
{
    mRequestedAppControl = request;
}

void AppControlData::setResultCode(app_control_result_e resultCode)
{
    mResultCode = resultCode;
}

app_control_reply_cb AppControlData::getReplyCallback() const
{
    return mReplyCallback;
}

void* AppControlData::getReplyCallbackUserData() const
{
    return mReplyCallbackUserData;
}

app_control_h AppControlData::getRequestedAppControl() const
{
    return mRequestedAppControl;
}

app_control_result_e AppControlData::getResultCode() const
{
    return mResultCode;
}

// Indexing adds what is missing: whoever asks for a key need not care whether the sender left it out or sent
// nothing under it.
std::string& AppControlData::getExtraData(const std::string& key)
{
    return mExtraData[key];
}

std::vector<std::string>& AppControlData::getExtraVectorData(const std::string& key)
{
    return mExtraVectorData[key];
}

AppControlData& AppControlData::addExtraData(const std::string& key, const std::string& value)
{
    mExtraData[key] = value;
    return *this;
}

AppControlData& AppControlData::addExtraVectorData(const std::string& key,
                                                   const std::vector<std::string>& values)
{
    mExtraVectorData[key] = values;
    return *this;
}

AppControlData& AppControlData::clearExtraData()
{
    mExtraData.clear();
    return *this;
}

AppControlData& AppControlData::clearExtraVectorData()
{
    mExtraVectorData.clear();
    return *this;
}

void AppControlData::clearData()
{
    mPackageName.clear();
    mOperation.clear();
    mUri.clear();
    mReplyCallback = nullptr;
    mReplyCallbackUserData = nullptr;
    mRequestedAppControl = nullptr;
    mResultCode = APP_CONTROL_RESULT_APP_STARTED;
    mExtraData.clear();
    mExtraVectorData.clear();
}

// Works from load time on. Being a static object it is destroyed after main has returned, when the platform
// has left the bus already: a send that is under way then ends with the platform's error, and those behind it
// are dropped.
AsyncThread AppControl::asyncThread;

void AppControl::performAppControl(AppControlData& data)
{
    if (data.getRequestedAppControl()) {
        LOG_E("Reply App Control must be called by sync");
        return;
    }

    // The caller goes on using its message, and the worker may be a poll or more behind it.
    auto send = [data] {
        AppControlData message(data);
        performAppControlSync(message);
        return false;
    };
    asyncThread.asyncCall(send, [] {});
}

int AppControl::performAppControlSync(AppControlData& data)
{
    // Only a message that was sent gives its handle back: one that the platform refused is left as it is, for
    // whoever looks at the process to see what it was.
    app_control_h handle = nullptr;
    int error = app_control_create(&handle);
    if (!handle) {
        LOG_E("Failed to create app_control handle");
        return error;
    }

    if (!data.getPackageName().empty()) {
        error = app_control_set_app_id(handle, data.getPackageName().c_str());
        if (error != APP_CONTROL_ERROR_NONE) {
            LOG_E("Failed to set app id");
            return error;
        }
    }

    if (!data.getOperation().empty()) {
        error = app_control_set_operation(handle, data.getOperation().c_str());
        if (error != APP_CONTROL_ERROR_NONE) {
            LOG_E("Failed to set operation");
            return error;
        }
    }

    if (!data.getUri().empty()) {
        error = app_control_set_uri(handle, data.getUri().c_str());
        if (error != APP_CONTROL_ERROR_NONE) {
            LOG_E("Failed to set uri");
            return error;
        }
    }

    for (const auto& [key, value] : data.getExtraDataMap()) {
        bool isGiven = !key.empty() && !value.empty();
        error = isGiven ? app_control_add_extra_data(handle, key.c_str(), value.c_str()) : 0;
        if (error != APP_CONTROL_ERROR_NONE) {
            LOG_E("Failed to add extra data");
            return error;
        }
    }

    for (const auto& [key, values] : data.getExtraVectorDataMap()) {
        if (key.empty() || values.empty())
            continue;
        std::vector<const char*> texts;
        texts.reserve(values.size());
        for (const std::string& value : values)
            texts.push_back(value.c_str());
        // The platform copies the texts: the array of pointers ends with this pass, whatever comes of it.
        error = app_control_add_extra_data_array(handle, key.c_str(), texts.data(),
                                                 static_cast<int>(texts.size()));
        if (error != APP_CONTROL_ERROR_NONE) {
            LOG_E("Failed to add extra vector data");
            return error;
        }
    }

    // A reply goes back on the calling thread, a request may wait here for the other app to be started.
    if (app_control_h request = data.getRequestedAppControl())
        error = app_control_reply_to_launch_request(handle, request, data.getResultCode());
    else
        error =
            app_control_send_launch_request(handle, data.getReplyCallback(), data.getReplyCallbackUserData());

    if (error != APP_CONTROL_ERROR_NONE) {
        LOG_E("Failed to launch request");
        return error;
    }

    error = app_control_destroy(handle);
    if (error != APP_CONTROL_ERROR_NONE)
        LOG_E("Failed to destroy app_control handle");
    return error;
}

}  // namespace Util
