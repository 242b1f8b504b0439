// A merchant bridge whose every byte a test decides: HTTPS on a random port of this machine.
#pragma once

#include <string>

#include "ScriptedServer.h"
#include "ThrowawayCertificates.h"

using MerchantRequest = ServerRequest;
using MerchantConnection = ServerConnection;

/**
 * The one server of a test process, started on first use; it is the host that the service searches at, and
 * all of this process's HTTPS trusts it.
 */
class MerchantServer : public ScriptedServer {
  public:
    static constexpr const char* SEARCH_PATH = "/merchantbridge-production/api/product/search";

    static MerchantServer& instance();

    void answerSearch(int status, const std::string& body) { answer(SEARCH_PATH, status, body); }

    /** The address of a path on the one server. */
    static std::string url(const std::string& path) { return instance().address(path); }

  private:
    MerchantServer();
    ~MerchantServer() override { stop(); }

    const Appliance::ThrowawayCertificates certificates_;
    const TlsServer tls_;
};
