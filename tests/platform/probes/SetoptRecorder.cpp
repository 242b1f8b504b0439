// Stands in for curl_easy_setopt (--wrap) and prints which options of trust and routing are set to what.
#include <curl/curl.h>

#include <cstdarg>
#include <cstdio>

extern "C" CURLcode __real_curl_easy_setopt(CURL* handle, CURLoption option, ...);
extern "C" CURLcode __wrap_curl_easy_setopt(CURL* handle, CURLoption option, ...);

namespace {

const char* nameOf(CURLoption option)
{
    switch (option) {
        case CURLOPT_CAINFO:
            return "CAINFO";
        case CURLOPT_CAPATH:
            return "CAPATH";
        case CURLOPT_CONNECT_TO:
            return "CONNECT_TO";
        case CURLOPT_SSL_VERIFYPEER:
            return "SSL_VERIFYPEER";
        case CURLOPT_SSL_VERIFYHOST:
            return "SSL_VERIFYHOST";
        default:
            return nullptr;
    }
}

}  // namespace

CURLcode __wrap_curl_easy_setopt(CURL* handle, CURLoption option, ...)
{
    va_list arguments;
    va_start(arguments, option);
    void* const value = va_arg(arguments, void*);
    va_end(arguments);
    if (const char* name = nameOf(option))
        std::printf("%s %s\n", name, value == nullptr ? "null" : "set");
    return __real_curl_easy_setopt(handle, option, value);
}
