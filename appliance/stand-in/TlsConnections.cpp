// The HTTP library does not tell which sockets it serves; the TLS library does, at the first handshake
// step and when the connection is freed, which comes before its socket is closed.
#include "TlsConnections.h"

namespace Appliance::StandIn {

TlsConnections::TlsConnections(SSL_CTX* context)
{
    SSL_CTX_set_app_data(context, this);
    SSL_CTX_set_info_callback(context, handshakeChanged);
}

void TlsConnections::handshakeChanged(const SSL* connection, int where, int)
{
    if ((where & SSL_CB_HANDSHAKE_START) == 0)
        return;
    auto* owner = static_cast<TlsConnections*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(connection)));
    SSL_set_ex_data(const_cast<SSL*>(connection), ownerIndex(), owner);
    owner->add(SSL_get_fd(connection));
}

void TlsConnections::connectionFreed(void* connection, void* owner, CRYPTO_EX_DATA*, int, long, void*)
{
    if (owner != nullptr)
        static_cast<TlsConnections*>(owner)->remove(SSL_get_fd(static_cast<SSL*>(connection)));
}

int TlsConnections::ownerIndex()
{
    static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, connectionFreed);
    return index;
}

int TlsConnections::socketOf(const httplib::Request& request) const
{
    return SSL_get_fd(request.ssl);
}

}  // namespace Appliance::StandIn
