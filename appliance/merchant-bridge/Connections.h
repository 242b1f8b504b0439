// The open TLS connections of a server: waiting on one, resetting one, ending them all.
#pragma once

#include <openssl/ssl.h>

#include <chrono>
#include <map>
#include <mutex>
#include <optional>

namespace Appliance::MerchantBridge {

// The member functions may be called from any thread.
class Connections {
  public:
    // Watches every connection made from `context`, from its handshake on. The context's connections must
    // be gone before this object is. std::system_error when the system lacks resources.
    explicit Connections(SSL_CTX* context);
    ~Connections();
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    // Blocks for that time, or without end. False at once when the client leaves or endAll is called.
    bool wait(const SSL* connection, std::optional<std::chrono::milliseconds> time) const;

    // Resets the connection under TLS's feet; what is still written to it goes nowhere.
    static void reset(const SSL* connection);

    // Shuts every connection down, those that are still to come as well, and ends every wait.
    void endAll();

  private:
    static void handshakeChanged(const SSL* connection, int where, int);
    static void connectionFreed(void* connection, void* owner, CRYPTO_EX_DATA*, int, long, void*);
    static int ownerIndex();
    void add(SSL* connection);
    void remove(const SSL* connection);

    int endEvent;
    std::mutex mutex;
    std::map<const SSL*, int> sockets;
    bool isEnded = false;
};

}  // namespace Appliance::MerchantBridge
