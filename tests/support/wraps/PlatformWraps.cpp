// Log, settings, the assistant's data store and the main loop. Arguments noted: keys, columns and values.
#include <Ecore.h>
#include <dlog.h>
#include <nuvex-da-db.h>
#include <unistd.h>
#include <vconf.h>

#include <cstdarg>
#include <cstdio>

#include "CallNotes.h"

extern "C" {
int __wrap_dlog_print(log_priority priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
decltype(vconf_set_int) __real_vconf_set_int, __wrap_vconf_set_int;
decltype(ndd_manager_create) __real_ndd_manager_create, __wrap_ndd_manager_create;
decltype(ndd_manager_get_primary_key) __real_ndd_manager_get_primary_key, __wrap_ndd_manager_get_primary_key;
decltype(ndd_manager_insert) __real_ndd_manager_insert, __wrap_ndd_manager_insert;
decltype(ndd_manager_update) __real_ndd_manager_update, __wrap_ndd_manager_update;
decltype(ndd_manager_destroy) __real_ndd_manager_destroy, __wrap_ndd_manager_destroy;
decltype(ndd_bundle_create) __real_ndd_bundle_create, __wrap_ndd_bundle_create;
decltype(ndd_bundle_add_int) __real_ndd_bundle_add_int, __wrap_ndd_bundle_add_int;
decltype(ndd_bundle_destroy) __real_ndd_bundle_destroy, __wrap_ndd_bundle_destroy;
decltype(ecore_init) __real_ecore_init, __wrap_ecore_init;
decltype(ecore_main_loop_thread_safe_call_async) __real_ecore_main_loop_thread_safe_call_async,
    __wrap_ecore_main_loop_thread_safe_call_async;
decltype(ecore_main_loop_thread_safe_call_sync) __real_ecore_main_loop_thread_safe_call_sync,
    __wrap_ecore_main_loop_thread_safe_call_sync;
}

using namespace TestSupport;
using CallNotes::note;
using CallNotes::text;

namespace {

// These call other observed functions, but nothing of the service.
template <typename Real>
int observe(const char* name, CallNotes::Texts arguments, Real real)
{
    return CallNotes::observe(name, std::move(arguments), [&] {
        const CallNotes::PlatformsOwn own;
        return real();
    });
}

__attribute__((format(printf, 1, 0))) std::string formatted(const char* format, va_list arguments)
{
    va_list copy;
    va_copy(copy, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string bytes(static_cast<std::size_t>(length) + 1, '\0');
    va_copy(copy, arguments);
    std::vsnprintf(bytes.data(), bytes.size(), format, copy);
    va_end(copy);
    bytes.pop_back();
    return bytes;
}

}  // namespace

int __wrap_dlog_print(log_priority priority, const char* tag, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string message = formatted(format, arguments);
    const int result = observe("dlog_print", {std::to_string(priority), message},
                               [&] { return dlog_vprint(priority, tag, format, arguments); });
    va_end(arguments);
    if (!CallNotes::PlatformsOwn::isActive())
        CallNotes::keep(LogEntry{priority, text(tag), format, std::move(message), gettid()});
    return result;
}

int __wrap_vconf_set_int(const char* key, const int value)
{
    return observe("vconf_set_int", {text(key), std::to_string(value)},
                   [&] { return __real_vconf_set_int(key, value); });
}

int __wrap_ndd_manager_create(const char* store, ndd_manager_h* manager)
{
    return observe("ndd_manager_create", {text(store)},
                   [&] { return __real_ndd_manager_create(store, manager); });
}

int __wrap_ndd_manager_get_primary_key(ndd_manager_h manager, char** name)
{
    return observe("ndd_manager_get_primary_key", {},
                   [&] { return __real_ndd_manager_get_primary_key(manager, name); });
}

int __wrap_ndd_manager_insert(ndd_manager_h manager, ndd_bundle_h bundle)
{
    return observe("ndd_manager_insert", {}, [&] { return __real_ndd_manager_insert(manager, bundle); });
}

int __wrap_ndd_manager_update(ndd_manager_h manager, ndd_bundle_h bundle)
{
    return observe("ndd_manager_update", {}, [&] { return __real_ndd_manager_update(manager, bundle); });
}

int __wrap_ndd_manager_destroy(ndd_manager_h manager)
{
    return observe("ndd_manager_destroy", {}, [&] { return __real_ndd_manager_destroy(manager); });
}

int __wrap_ndd_bundle_create(ndd_bundle_h* bundle)
{
    return observe("ndd_bundle_create", {}, [&] { return __real_ndd_bundle_create(bundle); });
}

int __wrap_ndd_bundle_add_int(ndd_bundle_h bundle, const char* column, int value)
{
    return observe("ndd_bundle_add_int", {text(column), std::to_string(value)},
                   [&] { return __real_ndd_bundle_add_int(bundle, column, value); });
}

int __wrap_ndd_bundle_destroy(ndd_bundle_h bundle)
{
    return observe("ndd_bundle_destroy", {}, [&] { return __real_ndd_bundle_destroy(bundle); });
}

int __wrap_ecore_init()
{
    return observe("ecore_init", {}, [] { return __real_ecore_init(); });
}

void __wrap_ecore_main_loop_thread_safe_call_async(Ecore_Cb callback, void* data)
{
    note("ecore_main_loop_thread_safe_call_async");
    __real_ecore_main_loop_thread_safe_call_async(callback, data);
}

void* __wrap_ecore_main_loop_thread_safe_call_sync(Ecore_Data_Cb callback, void* data)
{
    note("ecore_main_loop_thread_safe_call_sync");
    return __real_ecore_main_loop_thread_safe_call_sync(callback, data);
}
