// libcurl. Arguments noted: the option's name and value; the text to escape; the header line.
#include <curl/curl.h>
#include <dlfcn.h>

#include <cstdarg>

#include "CallNotes.h"

// The macros check argument types; a wrap must have the functions themselves.
#undef curl_easy_setopt
#undef curl_easy_getinfo

extern "C" {
decltype(curl_global_init) __real_curl_global_init, __wrap_curl_global_init;
decltype(curl_global_cleanup) __real_curl_global_cleanup, __wrap_curl_global_cleanup;
// The platform has its own wrap of curl_easy_init; this stands behind that.
decltype(curl_easy_init) __wrap___real_curl_easy_init;
decltype(curl_easy_setopt) __real_curl_easy_setopt, __wrap_curl_easy_setopt;
decltype(curl_easy_perform) __real_curl_easy_perform, __wrap_curl_easy_perform;
decltype(curl_easy_getinfo) __real_curl_easy_getinfo, __wrap_curl_easy_getinfo;
decltype(curl_easy_escape) __real_curl_easy_escape, __wrap_curl_easy_escape;
decltype(curl_easy_cleanup) __real_curl_easy_cleanup, __wrap_curl_easy_cleanup;
decltype(curl_slist_append) __real_curl_slist_append, __wrap_curl_slist_append;
decltype(curl_slist_free_all) __real_curl_slist_free_all, __wrap_curl_slist_free_all;
}

using namespace TestSupport;
using CallNotes::note;
using CallNotes::observe;
using CallNotes::text;

namespace {

CallNotes::Texts linesOf(const curl_slist* list)
{
    CallNotes::Texts lines;
    for (; list; list = list->next)
        lines.push_back(text(list->data));
    return lines;
}

CallNotes::Texts describe(CURLoption option, const void* value)
{
    const curl_easyoption* known = curl_easy_option_by_id(option);
    CallNotes::Texts texts = {known->name};
    if (known->type == CURLOT_SLIST)
        for (const std::string& line : linesOf(static_cast<const curl_slist*>(value)))
            texts.push_back(line);
    else
        texts.push_back(known->type == CURLOT_STRING ? text(static_cast<const char*>(value)) : text(value));
    return texts;
}

}  // namespace

CURLcode __wrap_curl_global_init(long flags)
{
    return observe("curl_global_init", {std::to_string(flags)},
                   [&] { return __real_curl_global_init(flags); });
}

void __wrap_curl_global_cleanup()
{
    note("curl_global_cleanup");
    __real_curl_global_cleanup();
}

CURL* __wrap___real_curl_easy_init()
{
    if (CallNotes::mustFail("curl_easy_init"))
        return nullptr;
    static const auto real = reinterpret_cast<decltype(&curl_easy_init)>(dlsym(RTLD_NEXT, "curl_easy_init"));
    return real();
}

// Whatever the option takes is one word on this machine, and passed on as that.
CURLcode __wrap_curl_easy_setopt(CURL* handle, CURLoption option, ...)
{
    va_list arguments;
    va_start(arguments, option);
    void* const value = va_arg(arguments, void*);
    va_end(arguments);
    return observe("curl_easy_setopt", describe(option, value),
                   [&] { return __real_curl_easy_setopt(handle, option, value); });
}

CURLcode __wrap_curl_easy_perform(CURL* handle)
{
    return observe("curl_easy_perform", {}, [&] { return __real_curl_easy_perform(handle); });
}

CURLcode __wrap_curl_easy_getinfo(CURL* handle, CURLINFO info, ...)
{
    va_list arguments;
    va_start(arguments, info);
    void* const value = va_arg(arguments, void*);
    va_end(arguments);
    return observe("curl_easy_getinfo", {std::to_string(info)},
                   [&] { return __real_curl_easy_getinfo(handle, info, value); });
}

char* __wrap_curl_easy_escape(CURL* handle, const char* bytes, int length)
{
    const bool fails = CallNotes::mustFail("curl_easy_escape", {text(bytes), std::to_string(length)});
    return fails ? nullptr : __real_curl_easy_escape(handle, bytes, length);
}

void __wrap_curl_easy_cleanup(CURL* handle)
{
    note("curl_easy_cleanup", {text(handle)});
    __real_curl_easy_cleanup(handle);
}

curl_slist* __wrap_curl_slist_append(curl_slist* list, const char* line)
{
    return CallNotes::mustFail("curl_slist_append", {text(line)}) ? nullptr
                                                                  : __real_curl_slist_append(list, line);
}

void __wrap_curl_slist_free_all(curl_slist* list)
{
    note("curl_slist_free_all", linesOf(list));
    __real_curl_slist_free_all(list);
}
