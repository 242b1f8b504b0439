#include "MerchantServer.h"

#include <stdlib.h>

#include <stdexcept>

#include "ScratchRoot.h"
#include "SiteValues.h"

namespace {

class TlsStream : public ByteStream {
  public:
    TlsStream(SSL_CTX* context, int socket) : tls_(SSL_new(context))
    {
        SSL_set_fd(tls_, socket);
        isOpen_ = SSL_accept(tls_) == 1;
    }

    ~TlsStream() override
    {
        if (isOpen_)
            SSL_shutdown(tls_);
        SSL_free(tls_);
    }

    bool isOpen() const { return isOpen_; }

    bool receive(char& byte) override { return SSL_read(tls_, &byte, 1) == 1; }

    void send(const std::string& bytes) override
    {
        if (!bytes.empty())
            SSL_write(tls_, bytes.data(), static_cast<int>(bytes.size()));
    }

  private:
    SSL* tls_;
    bool isOpen_ = false;
};

}  // namespace

MerchantServer& MerchantServer::instance()
{
    static MerchantServer server;
    return server;
}

MerchantServer::MerchantServer() : ScriptedServer("https://" CARVOY_MERCHANT_BRIDGE_HOST)
{
    makeContext();
    setenv("APPLIANCE_CONNECT_TO", (CARVOY_MERCHANT_BRIDGE_HOST ":443:" + place()).c_str(), 1);
    start([this](int socket) -> std::unique_ptr<ByteStream> {
        auto stream = std::make_unique<TlsStream>(context_.get(), socket);
        return stream->isOpen() ? std::move(stream) : nullptr;
    });
}

void MerchantServer::makeContext()
{
    const std::string authority = TestSupport::ScratchRoot::file("merchant-authority.pem");
    certificates_.writeAuthority(authority);
    setenv("APPLIANCE_CA_FILE", authority.c_str(), 1);

    const Appliance::Certificate certificate = certificates_.issue({CARVOY_MERCHANT_BRIDGE_HOST});
    context_.reset(SSL_CTX_new(TLS_server_method()));
    if (!context_ || SSL_CTX_use_certificate(context_.get(), certificate.x509.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context_.get(), certificate.key.get()) != 1)
        throw std::runtime_error("the merchant has no certificate");
}
