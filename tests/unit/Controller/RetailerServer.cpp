#include "RetailerServer.h"

#include <stdlib.h>
#include <sys/socket.h>

#include <memory>

#include "SiteValues.h"

namespace {

class SocketStream : public ByteStream {
  public:
    explicit SocketStream(int socket) : socket_(socket) {}

    bool receive(char& byte) override { return recv(socket_, &byte, 1, 0) == 1; }

    void send(const std::string& bytes) override
    {
        size_t sent = 0;
        while (sent < bytes.size()) {
            const ssize_t count = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count < 0)
                return;
            sent += static_cast<size_t>(count);
        }
    }

  private:
    int socket_;
};

}  // namespace

RetailerServer& RetailerServer::instance()
{
    static RetailerServer server;
    return server;
}

RetailerServer::RetailerServer() : ScriptedServer("http://" CARVOY_RETAILER_API_HOST)
{
    const std::string connectTo =
        CARVOY_RETAILER_API_HOST ":80:" + place() + "," CARVOY_RETAILER_ICON_HOST ":80:" + place();
    setenv("APPLIANCE_CONNECT_TO", connectTo.c_str(), 1);
    // Somebody's proxy would know neither of them.
    setenv("no_proxy", "*", 1);
    start([](int socket) { return std::make_unique<SocketStream>(socket); });
}

std::string RetailerServer::iconPath(int badge)
{
    return "/ui/app/6001/icon/" + std::to_string(badge) + ".png";
}
