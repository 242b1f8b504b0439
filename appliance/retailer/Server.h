// The retailer: an HTTP server that answers product searches and serves pictures and badge icons.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace Appliance::Retailer {

struct Settings {
    std::string address = "127.0.0.1";  // to listen on
    int port = 0;                       // 0: any that is free
    std::string host;                   // of the search and of the product pictures
    std::string iconHost;               // of the badge icons
    std::filesystem::path catalogueFile;
    std::filesystem::path picturesFolder;
    std::filesystem::path iconsFolder;
    std::filesystem::path logFile;  // empty: no log
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

}  // namespace Appliance::Retailer
