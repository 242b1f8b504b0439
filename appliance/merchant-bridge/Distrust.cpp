#include "Distrust.h"

#include <utility>

namespace Appliance::MerchantBridge {

Distrust::Distrust(SSL_CTX* context, const std::string& host, std::filesystem::path usedFile)
    : file(std::move(usedFile)), certificate(ThrowawayCertificates().issue({host}))
{
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(context, SSL_OP_NO_TICKET);
    SSL_CTX_set_num_tickets(context, 0);
    SSL_CTX_set_cert_cb(context, chooseCertificate, this);
}

// Without a choice it is the context's own certificate.
int Distrust::chooseCertificate(SSL* connection, void* self)
{
    const auto& distrust = *static_cast<const Distrust*>(self);
    std::error_code unknown;
    if (!std::filesystem::exists(distrust.file, unknown))
        return 1;
    const bool chosen = SSL_use_certificate(connection, distrust.certificate.x509.get()) == 1 &&
                        SSL_use_PrivateKey(connection, distrust.certificate.key.get()) == 1;
    return chosen ? 1 : 0;
}

}  // namespace Appliance::MerchantBridge
