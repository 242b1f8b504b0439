// libcurl's easy interface, with its global state counted by the objects that need it.
#include "Curl.h"

#include <mutex>

#include "Log.h"

namespace Util {

namespace {

constexpr long TRANSFER_TIMEOUT_SECONDS = 60;

// libcurl's global state lives as long as there is a Curl object. Searches run one after another, but nothing
// here relies on it.
std::mutex countMutex;

}  // namespace

int Curl::__COUNT = 0;

Curl::Curl()
{
    {
        std::lock_guard<std::mutex> lock(countMutex);
        if (++__COUNT == 1)
            curl_global_init(CURL_GLOBAL_ALL);
    }
    // Only what every request needs. There is no option for TLS: what libcurl checks by default is what is
    // wanted, and where the trusted certificates lie is the platform's matter.
    mHandle = curl_easy_init();
    setOption(CURLOPT_HEADERFUNCTION, __WriteCallback);
    setOption(CURLOPT_HEADERDATA, &mHeader);
    setOption(CURLOPT_WRITEFUNCTION, __WriteCallback);
    setOption(CURLOPT_WRITEDATA, &mBody);
    curl_easy_setopt(mHandle, CURLOPT_VERBOSE, 0L);
    setOption(CURLOPT_TIMEOUT, TRANSFER_TIMEOUT_SECONDS);
    curl_easy_setopt(mHandle, CURLOPT_NOSIGNAL, 1L);
}

Curl::~Curl()
{
    curl_easy_cleanup(mHandle);
    if (mHeaderList)
        curl_slist_free_all(mHeaderList);

    std::lock_guard<std::mutex> lock(countMutex);
    if (--__COUNT == 0)
        curl_global_cleanup();
}

void Curl::appendHeader(const std::string& header)
{
    curl_slist* list = curl_slist_append(mHeaderList, header.c_str());
    // Without memory for one header the request goes out with none, rather than with some of them.
    if (!list)
        curl_slist_free_all(mHeaderList);
    mHeaderList = list;
}

long Curl::perform()
{
    if (mHeaderList)
        curl_easy_setopt(mHandle, CURLOPT_HTTPHEADER, mHeaderList);

    // Blocks until the answer is complete, or the time is up, or there is no answer to be had.
    CURLcode code = mSetUp == CURLE_OK ? curl_easy_perform(mHandle) : mSetUp;
    if (code != CURLE_OK) {
        LOG_E("curl_easy_perform() failed: %s", curl_easy_strerror(code));
        // The error flags go, the bytes received so far stay.
        mHeader.clear();
        mBody.clear();
        return 0;
    }

    // An error status is an answer too: what it means is for the caller to say.
    curl_easy_getinfo(mHandle, CURLINFO_RESPONSE_CODE, &mResponseCode);
    return mResponseCode;
}

// One callback for headers and body alike; what differs is the stream. It takes everything, so libcurl never
// sees a short count and never gives up a transfer because of it. A stream that has run out of memory shows
// in its own state, which nobody asks: such an answer is cut short and fails to parse.
size_t Curl::__WriteCallback(void* data, size_t size, size_t count, void* stream)
{
    size_t length = size * count;
    // libcurl reports an empty body with one call of size zero.
    if (length == 0)
        return 0;

    auto& output = *static_cast<std::ostream*>(static_cast<std::stringstream*>(stream));
    output.write(static_cast<const char*>(data), static_cast<std::streamsize>(length));
    return length;
}

std::string Curl::getBody() const
{
    return mBody.str();
}

// The length is given because a text may hold zero bytes, which are escaped like any other byte that a URL
// cannot hold.
std::string Curl::encode(const std::string& text)
{
    char* escaped = curl_easy_escape(mHandle, text.c_str(), static_cast<int>(text.size()));
    if (!escaped) {
        LOG_E("curl_easy_escape failed");
        return text;
    }
    std::string encoded(escaped);
    curl_free(escaped);
    return encoded;
}

}  // namespace Util
