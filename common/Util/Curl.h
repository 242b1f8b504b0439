// One HTTP(S) request with libcurl.
#pragma once

#include <sstream>
#include <string>

#include <curl/curl.h>

namespace Util {

/**
 * One request, one object: construct it, set the URL (and method, body, cookie) on `mHandle`, append the
 * headers, perform, read the body. Nothing is reset in between: a second perform() appends to the same body.
 *
 * The whole transfer ends after 60 seconds at the latest. Peer and host of a TLS connection are checked, as
 * libcurl does by default. An object is used by one thread at a time; it is neither copied nor moved.
 */
class Curl {
  public:
    Curl();
    virtual ~Curl();
    Curl(const Curl&) = delete;
    Curl& operator=(const Curl&) = delete;

    /** Adds one whole header line: name, colon, value. */
    void appendHeader(const std::string& header);

    /**
     * Sends the request and waits for the answer. Returns the HTTP status, whatever it is, or 0 when there
     * was no answer; that is logged with libcurl's reason. A handle that could not be prepared for these
     * streams and this time limit sends nothing: that is no answer, too.
     */
    long perform();

    /** `text` escaped for use in a URL (a blank is %20); `text` itself if that fails, which is logged. */
    std::string encode(const std::string& text);

    /** All of the answer's body that has been received so far, byte for byte. */
    std::string getBody() const;

  private:
    static int __COUNT;  // live objects, and so users of libcurl's global state

    static size_t __WriteCallback(void* data, size_t size, size_t count, void* stream);

    /** Sets an option without which no request may be sent. */
    template <typename Value>
    void setOption(CURLoption option, Value value)
    {
        const CURLcode code = curl_easy_setopt(mHandle, option, value);
        if (mSetUp == CURLE_OK)
            mSetUp = code;
    }

    std::stringstream mHeader;
    std::stringstream mBody;
    long mResponseCode = 0;
    CURLcode mSetUp = CURLE_OK;  // the first failure of setOption()

  public:
    /** libcurl's easy handle, for the options of this one request. Owned by the object. */
    CURL* mHandle = nullptr;

  private:
    curl_slist* mHeaderList = nullptr;
};

}  // namespace Util
