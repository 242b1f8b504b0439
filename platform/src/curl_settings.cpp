// Linked in place of curl_easy_init by -Wl,--wrap: APPLIANCE_CA_FILE and APPLIANCE_CONNECT_TO reach every
// handle of the process without the apps' knowing.
#include <curl/curl.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "connect_to.h"

extern "C" CURL* __real_curl_easy_init();
extern "C" CURL* __wrap_curl_easy_init();

namespace {

std::string textFromEnvironment(const char* variable)
{
    const char* value = std::getenv(variable);
    return value == nullptr ? std::string() : std::string(value);
}

struct CurlSettings {
    std::string caFile;               // empty: libcurl's own
    curl_slist* connectTo = nullptr;  // null: no host is redirected
};

void append(curl_slist*& list, const std::string& text)
{
    curl_slist* const longer = curl_slist_append(list, text.c_str());
    if (longer == nullptr)
        throw std::bad_alloc();
    list = longer;
}

curl_slist* connectToList(const std::string& setting)
{
    const HostPlatform::ConnectTo read = HostPlatform::parseConnectTo(setting);
    for (const std::string& text : read.malformed)
        std::fprintf(stderr, "host platform: APPLIANCE_CONNECT_TO: '%s' is not HOST:PORT:ADDRESS:PORT\n",
                     text.c_str());
    curl_slist* list = nullptr;
    for (const std::string& entry : read.entries)
        append(list, entry);
    return list;
}

const CurlSettings& settings()
{
    // Never freed: libcurl keeps no copy of the list, and handles may live until the process ends.
    static const auto* const read = new CurlSettings{
        textFromEnvironment("APPLIANCE_CA_FILE"), connectToList(textFromEnvironment("APPLIANCE_CONNECT_TO"))};
    return *read;
}

// The system's authorities are out: both the default file and the default folder.
bool trustOnly(CURL* handle, const std::string& caFile)
{
    return curl_easy_setopt(handle, CURLOPT_CAINFO, caFile.c_str()) == CURLE_OK &&
           curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr) == CURLE_OK;
}

bool apply(CURL* handle)
{
    const CurlSettings& wanted = settings();
    if (!wanted.caFile.empty() && !trustOnly(handle, wanted.caFile))
        return false;
    return wanted.connectTo == nullptr ||
           curl_easy_setopt(handle, CURLOPT_CONNECT_TO, wanted.connectTo) == CURLE_OK;
}

bool applied(CURL* handle)
try {
    return apply(handle);
} catch (const std::bad_alloc&) {
    return false;
}

}  // namespace

CURL* __wrap_curl_easy_init()
{
    CURL* const handle = __real_curl_easy_init();
    if (handle == nullptr || applied(handle))
        return handle;
    // Rather no handle than one that trusts others, or reaches others, than it was told to.
    curl_easy_cleanup(handle);
    return nullptr;
}
