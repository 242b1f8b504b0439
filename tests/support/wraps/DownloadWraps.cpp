// URL downloads. Arguments noted: the id, texts, numbers and user data; callbacks not.
#include <download.h>

#include <map>
#include <mutex>

#include "CallNotes.h"
#include "DownloadStandIn.h"

#define WRAPPED(function) decltype(function) __real_##function, __wrap_##function
extern "C" {
WRAPPED(download_create);
WRAPPED(download_destroy);
WRAPPED(download_set_url);
WRAPPED(download_set_network_type);
WRAPPED(download_set_destination);
WRAPPED(download_set_file_name);
WRAPPED(download_set_state_changed_cb);
WRAPPED(download_set_progress_cb);
WRAPPED(download_unset_state_changed_cb);
WRAPPED(download_unset_progress_cb);
WRAPPED(download_start);
WRAPPED(download_pause);
WRAPPED(download_cancel);
WRAPPED(download_get_downloaded_file_path);
}

using namespace TestSupport;
using CallNotes::text;

namespace {

template <typename Function>
struct Listener {
    Function function = nullptr;
    void* userData = nullptr;
};

struct Listeners {
    std::mutex mutex;
    std::map<int, Listener<download_state_changed_cb>> state;
    std::map<int, Listener<download_progress_cb>> progress;
};

Listeners& listeners()
{
    static auto* const all = new Listeners;
    return *all;
}

template <typename Function>
void keep(std::map<int, Listener<Function>> Listeners::*map, int id, Listener<Function> listener)
{
    const std::lock_guard<std::mutex> lock(listeners().mutex);
    (listeners().*map)[id] = listener;
}

void forget(int id)
{
    const std::lock_guard<std::mutex> lock(listeners().mutex);
    listeners().state.erase(id);
    listeners().progress.erase(id);
}

template <typename Function, typename Value>
bool call(std::map<int, Listener<Function>> Listeners::*map, int id, Value value)
{
    Listener<Function> listener;
    {
        const std::lock_guard<std::mutex> lock(listeners().mutex);
        listener = (listeners().*map)[id];
    }
    if (listener.function)
        listener.function(id, value, listener.userData);
    return listener.function != nullptr;
}

template <typename Real>
int observe(const char* name, CallNotes::Texts arguments, Real real)
{
    return CallNotes::observe(name, std::move(arguments), [&] {
        const CallNotes::PlatformsOwn own;
        return real();
    });
}

template <typename Real>
int observe(const char* name, int id, Real real)
{
    return observe(name, CallNotes::Texts{std::to_string(id)}, [&] { return real(id); });
}

}  // namespace

void DownloadStandIn::reset()
{
    const std::lock_guard<std::mutex> lock(listeners().mutex);
    listeners().state.clear();
    listeners().progress.clear();
}

bool DownloadStandIn::changeState(int id, int state)
{
    return call(&Listeners::state, id, static_cast<download_state_e>(state));
}

bool DownloadStandIn::progress(int id, unsigned long long received)
{
    return call(&Listeners::progress, id, received);
}

int __wrap_download_create(int* id)
{
    return observe("download_create", CallNotes::Texts{}, [&] { return __real_download_create(id); });
}

int __wrap_download_destroy(int id)
{
    return observe("download_destroy", {std::to_string(id)}, [&] {
        forget(id);
        return __real_download_destroy(id);
    });
}

int __wrap_download_set_url(int id, const char* url)
{
    return observe("download_set_url", {std::to_string(id), text(url)},
                   [&] { return __real_download_set_url(id, url); });
}

int __wrap_download_set_network_type(int id, download_network_type_e type)
{
    return observe("download_set_network_type", {std::to_string(id), std::to_string(type)},
                   [&] { return __real_download_set_network_type(id, type); });
}

int __wrap_download_set_destination(int id, const char* folder)
{
    return observe("download_set_destination", {std::to_string(id), text(folder)},
                   [&] { return __real_download_set_destination(id, folder); });
}

int __wrap_download_set_file_name(int id, const char* name)
{
    return observe("download_set_file_name", {std::to_string(id), text(name)},
                   [&] { return __real_download_set_file_name(id, name); });
}

int __wrap_download_set_state_changed_cb(int id, download_state_changed_cb callback, void* userData)
{
    return observe("download_set_state_changed_cb", {std::to_string(id), text(userData)}, [&] {
        const int result = __real_download_set_state_changed_cb(id, callback, userData);
        if (result == DOWNLOAD_ERROR_NONE)
            keep(&Listeners::state, id, {callback, userData});
        return result;
    });
}

int __wrap_download_set_progress_cb(int id, download_progress_cb callback, void* userData)
{
    return observe("download_set_progress_cb", {std::to_string(id), text(userData)}, [&] {
        const int result = __real_download_set_progress_cb(id, callback, userData);
        if (result == DOWNLOAD_ERROR_NONE)
            keep(&Listeners::progress, id, {callback, userData});
        return result;
    });
}

int __wrap_download_unset_state_changed_cb(int id)
{
    return observe("download_unset_state_changed_cb", {std::to_string(id)}, [&] {
        keep(&Listeners::state, id, {});
        return __real_download_unset_state_changed_cb(id);
    });
}

int __wrap_download_unset_progress_cb(int id)
{
    return observe("download_unset_progress_cb", {std::to_string(id)}, [&] {
        keep(&Listeners::progress, id, {});
        return __real_download_unset_progress_cb(id);
    });
}

int __wrap_download_start(int id)
{
    return observe("download_start", id, __real_download_start);
}

int __wrap_download_pause(int id)
{
    return observe("download_pause", id, __real_download_pause);
}

int __wrap_download_cancel(int id)
{
    return observe("download_cancel", id, __real_download_cancel);
}

int __wrap_download_get_downloaded_file_path(int id, char** path)
{
    return observe("download_get_downloaded_file_path", {std::to_string(id)},
                   [&] { return __real_download_get_downloaded_file_path(id, path); });
}
