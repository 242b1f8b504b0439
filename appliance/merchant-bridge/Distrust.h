// A certificate that nobody trusts, while a file asks for it.
#pragma once

#include <openssl/ssl.h>

#include <filesystem>
#include <string>

#include "ThrowawayCertificates.h"

namespace Appliance::MerchantBridge {

// While the file is there, every handshake presents a certificate for the same host that another authority
// issued, one that nobody has heard of. The file is looked for at each handshake. No handshake resumes an
// earlier connection, where no certificate would be presented. The context's connections must be gone before
// this object is. Construction throws std::runtime_error.
class Distrust {
  public:
    Distrust(SSL_CTX* context, const std::string& host, std::filesystem::path file);
    Distrust(const Distrust&) = delete;
    Distrust& operator=(const Distrust&) = delete;

  private:
    static int chooseCertificate(SSL* connection, void* self);

    std::filesystem::path file;
    Certificate certificate;  // good without its authority, which nobody is told of
};

}  // namespace Appliance::MerchantBridge
