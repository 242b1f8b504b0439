#include "MerchantServer.h"

#include <stdlib.h>

#include "ScratchRoot.h"
#include "SiteValues.h"

MerchantServer& MerchantServer::instance()
{
    static MerchantServer server;
    return server;
}

MerchantServer::MerchantServer()
    : ScriptedServer("https://" CARVOY_MERCHANT_BRIDGE_HOST),
      tls_(certificates_.issue({CARVOY_MERCHANT_BRIDGE_HOST}))
{
    const std::string authority = TestSupport::ScratchRoot::file("merchant-authority.pem");
    certificates_.writeAuthority(authority);
    setenv("APPLIANCE_CA_FILE", authority.c_str(), 1);
    setenv("APPLIANCE_CONNECT_TO", (CARVOY_MERCHANT_BRIDGE_HOST ":443:" + place()).c_str(), 1);
    start([this](int socket) { return tls_.accept(socket); });
}
