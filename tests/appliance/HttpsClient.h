// One HTTPS request after another, the way the service makes them: libcurl with its checks on.
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

// Reaches `host` at a port of this machine, trusting one authority. One thread per object.
class HttpsClient {
  public:
    HttpsClient(std::string host, int port, std::string caFile);

    std::vector<std::string> headers;  // "Name: value"
    std::function<void(const std::string& bodySoFar)> onData;
    bool followsRedirects = false;

    // `target` is the URL from its first '/' on.
    Reply get(const std::string& target) const;

    static std::string escape(const std::string& text);

  private:
    std::string host;
    int port;
    std::string caFile;
};

}  // namespace ApplianceTest
