#include <download.h>

#include <new>

#include "DownloadService.h"
#include "Text.h"

namespace {

using HostPlatform::Download;
using HostPlatform::DownloadCallback;
using HostPlatform::DownloadService;

// Runs a step that allocates.
template <typename Step>
int guarded(Step step)
{
    try {
        return step(DownloadService::instance());
    } catch (const std::bad_alloc&) {
        return DOWNLOAD_ERROR_OUT_OF_MEMORY;
    }
}

template <typename Change>
int configure(int id, Change change)
{
    return guarded([&](DownloadService& service) { return service.configure(id, change); });
}

// Hands out a value of a download.
template <typename Value, typename Reader>
int get(int id, Value* value, Reader reader)
{
    if (!value)
        return DOWNLOAD_ERROR_INVALID_PARAMETER;
    return guarded([&](DownloadService& service) {
        return service.read(id, [&](const Download& download) {
            *value = static_cast<Value>(reader(download));
            return DOWNLOAD_ERROR_NONE;
        });
    });
}

template <typename Function>
int setCallback(int id, DownloadCallback<Function> Download::*slot, Function callback, void* userData)
{
    if (!callback)
        return DOWNLOAD_ERROR_INVALID_PARAMETER;
    return guarded([&](DownloadService& service) {
        return service.setCallback(id, [&](Download& download) {
            download.*slot = {callback, userData};
            return DOWNLOAD_ERROR_NONE;
        });
    });
}

template <typename Function>
int unsetCallback(int id, DownloadCallback<Function> Download::*slot)
{
    return guarded([&](DownloadService& service) {
        return service.unsetCallback(id, [&](Download& download) {
            download.*slot = {};
            return DOWNLOAD_ERROR_NONE;
        });
    });
}

}  // namespace

int download_create(int* download_id)
{
    if (!download_id)
        return DOWNLOAD_ERROR_INVALID_PARAMETER;
    return guarded([&](DownloadService& service) { return service.create(*download_id); });
}

int download_destroy(int download_id)
{
    return guarded([&](DownloadService& service) { return service.destroy(download_id); });
}

int download_set_url(int download_id, const char* url)
{
    if (!url)
        return DOWNLOAD_ERROR_INVALID_PARAMETER;
    return configure(download_id, [&](Download& download) {
        if (!HostPlatform::isWebAddress(url))
            return DOWNLOAD_ERROR_INVALID_URL;
        download.order.url = url;
        return DOWNLOAD_ERROR_NONE;
    });
}

// A PC has one network, whatever the type.
int download_set_network_type(int download_id, download_network_type_e net_type)
{
    return configure(download_id, [&](Download& download) {
        if (net_type < DOWNLOAD_NETWORK_DATA || net_type > DOWNLOAD_NETWORK_ALL)
            return DOWNLOAD_ERROR_INVALID_NETWORK_TYPE;
        download.networkType = net_type;
        return DOWNLOAD_ERROR_NONE;
    });
}

int download_set_destination(int download_id, const char* destination)
{
    if (!destination)
        return DOWNLOAD_ERROR_INVALID_PARAMETER;
    const bool isThere = HostPlatform::isFolder(destination);
    return configure(download_id, [&](Download& download) {
        if (!isThere)
            return DOWNLOAD_ERROR_INVALID_DESTINATION;
        download.order.folder = destination;
        return DOWNLOAD_ERROR_NONE;
    });
}

int download_set_file_name(int download_id, const char* file_name)
{
    if (!file_name)
        return DOWNLOAD_ERROR_INVALID_PARAMETER;
    return configure(download_id, [&](Download& download) {
        if (!HostPlatform::isFileName(file_name))
            return DOWNLOAD_ERROR_INVALID_PARAMETER;
        download.order.name = file_name;
        return DOWNLOAD_ERROR_NONE;
    });
}

int download_set_state_changed_cb(int download_id, download_state_changed_cb callback, void* user_data)
{
    return setCallback(download_id, &Download::stateChanged, callback, user_data);
}

int download_set_progress_cb(int download_id, download_progress_cb callback, void* user_data)
{
    return setCallback(download_id, &Download::progress, callback, user_data);
}

int download_unset_state_changed_cb(int download_id)
{
    return unsetCallback(download_id, &Download::stateChanged);
}

int download_unset_progress_cb(int download_id)
{
    return unsetCallback(download_id, &Download::progress);
}

int download_start(int download_id)
{
    return guarded([&](DownloadService& service) { return service.start(download_id); });
}

int download_pause(int download_id)
{
    return guarded([&](DownloadService& service) { return service.pause(download_id); });
}

int download_cancel(int download_id)
{
    return guarded([&](DownloadService& service) { return service.cancel(download_id); });
}

int download_get_downloaded_file_path(int download_id, char** path)
{
    if (!path)
        return DOWNLOAD_ERROR_INVALID_PARAMETER;
    return guarded([&](DownloadService& service) {
        return service.read(download_id, [&](const Download& download) {
            return download.state == DOWNLOAD_STATE_COMPLETED
                       ? HostPlatform::handOut(download.path.c_str(), path)
                       : static_cast<int>(DOWNLOAD_ERROR_INVALID_STATE);
        });
    });
}

int download_get_state(int download_id, download_state_e* state)
{
    return get(download_id, state, [](const Download& download) { return download.state; });
}

int download_get_error(int download_id, download_error_e* error)
{
    return get(download_id, error, [](const Download& download) { return download.error; });
}

int download_get_http_status(int download_id, int* http_status)
{
    return get(download_id, http_status, [](const Download& download) { return download.httpStatus; });
}

int download_get_content_size(int download_id, unsigned long long* content_size)
{
    return get(download_id, content_size, [](const Download& download) { return download.contentSize; });
}
