// The open connections of a server that speaks TLS.
#pragma once

#include "Connections.h"

#include <openssl/ssl.h>

namespace Appliance::StandIn {

class TlsConnections : public Connections {
  public:
    // Watches every connection made from `context`, from its handshake on. The context's connections must
    // be gone before this object is.
    explicit TlsConnections(SSL_CTX* context);

  private:
    static void handshakeChanged(const SSL* connection, int where, int);
    static void connectionFreed(void* connection, void* owner, CRYPTO_EX_DATA*, int, long, void*);
    static int ownerIndex();

    int socketOf(const httplib::Request& request) const override;
};

}  // namespace Appliance::StandIn
