// The screen's web server: the page, what it is told, and what is done on it. On this machine only.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "Commands.h"
#include "Timeline.h"

namespace Screen {

struct ServerSettings {
    int port = 0;  // 0: any that is free
    std::filesystem::path pageFolder;
    std::filesystem::path pictureFolder;
};

// Accepts connections from its construction to its destruction, on threads of its own, which have all signals
// blocked. Construction throws an exception of std that says what cannot be had. One thread owns the object.
class Server {
  public:
    static constexpr std::size_t StreamsServed = 16;
    static constexpr std::size_t BodyBytes = 16 * 1024;

    // Called on the server's threads. False: too much is to be done already.
    using CommandHandler = std::function<bool(Command command)>;

    // The timeline outlives the server, whose destruction ends it.
    Server(const ServerSettings& settings, Timeline& timeline, CommandHandler onCommand);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    int port() const;

  private:
    class Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace Screen
