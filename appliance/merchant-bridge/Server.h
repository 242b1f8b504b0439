// The merchant bridge: an HTTPS server that answers product searches and serves their pictures.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace Appliance::MerchantBridge {

struct Settings {
    std::string address = "127.0.0.1";  // to listen on
    int port = 0;                       // 0: any that is free
    std::string host;                   // in the certificate and in the pictures' URLs
    std::filesystem::path caFile;       // written: what clients are to trust, in PEM
    std::filesystem::path tokensFile;   // read once
    std::filesystem::path catalogueFile;
    std::filesystem::path picturesFolder;
    std::filesystem::path logFile;         // empty: no log
    std::filesystem::path untrustedWhile;  // while it is there, nobody can trust the server; empty: never
};

// Accepts connections from its construction to its destruction, on threads of its own, which end with it.
// Destruction cuts transfers that are under way. Construction throws an exception of std that says which
// setting cannot be met. One thread owns the object.
class Server {
  public:
    explicit Server(const Settings& settings);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    int port() const;

  private:
    class Parts;
    std::unique_ptr<Parts> parts;
};

}  // namespace Appliance::MerchantBridge
