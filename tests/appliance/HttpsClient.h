// One HTTPS request after another, with libcurl's checks on.
#pragma once

#include "HttpClient.h"

namespace ApplianceTest {

// Trusts one authority.
class HttpsClient : public HttpClient {
  public:
    HttpsClient(const std::string& usedHost, int usedPort, const std::string& usedCaFile)
        : HttpClient(usedHost, usedPort, usedCaFile)
    {
    }
};

}  // namespace ApplianceTest
