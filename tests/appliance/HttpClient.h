// One request after another, the way the service makes them with libcurl.
#pragma once

#include <curl/curl.h>

#include <functional>
#include <string>
#include <vector>

namespace ApplianceTest {

struct Reply {
    CURLcode result = CURLE_OK;
    long status = 0;
    std::string contentType;
    std::string body;  // what came of it, where the transfer failed
};

// Reaches `host` at a port of this machine. One thread per object.
class HttpClient {
  public:
    HttpClient(std::string host, int port);

    std::vector<std::string> headers;  // "Name: value"
    std::function<void(const std::string& bodySoFar)> onData;
    bool followsRedirects = false;

    // `target` is the URL from its first '/' on.
    Reply get(const std::string& target) const;
    Reply post(const std::string& target, const std::string& body) const;

    // With a handle of the caller's, which remembers the host from request to request; what is set in it is
    // kept.
    Reply getWith(CURL* handle, const std::string& target) const { return perform(handle, target); }

    static std::string escape(const std::string& text);

  protected:
    // With TLS, trusting one authority.
    HttpClient(std::string host, int port, std::string caFile);

  private:
    Reply perform(CURL* handle, const std::string& target) const;
    void setUpTls(CURL* handle) const;

    std::string host;
    int port;
    std::string caFile;  // empty: no TLS
};

}  // namespace ApplianceTest
