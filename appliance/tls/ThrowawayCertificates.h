// A certificate authority that lives as long as the program: for HTTPS servers on this machine.
#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace Appliance {

struct OpenSslDeleter {
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};

// A certificate with its private key, owned. httplib::SSLServer takes both pointers and keeps its own
// references, so a Certificate need not outlive the server's construction.
struct Certificate {
    std::unique_ptr<X509, OpenSslDeleter> x509;
    std::unique_ptr<EVP_PKEY, OpenSslDeleter> key;
};

// Host names ("merchant-bridge.example") and addresses ("127.0.0.1", "::1") a certificate is good for.
using Hosts = std::vector<std::string>;

// Makes its own authority when constructed (EC P-256, valid for one day); its key never leaves memory.
// The const members may be called from any thread. Failures throw std::runtime_error.
class ThrowawayCertificates {
  public:
    ThrowawayCertificates();

    // Replaces `file` atomically by the authority's certificate in PEM: what clients are to trust.
    void writeAuthority(const std::filesystem::path& file) const;

    // A server certificate of this authority, valid for one day.
    Certificate issue(const Hosts& hosts) const;

    // The same, but its day ended yesterday.
    Certificate issueExpired(const Hosts& hosts) const;

    // A server certificate that only vouches for itself: no authority stands behind it.
    static Certificate selfSigned(const Hosts& hosts);

  private:
    Certificate authority;
};

}  // namespace Appliance
