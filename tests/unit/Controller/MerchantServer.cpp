#include "MerchantServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "Patience.h"
#include "ScratchRoot.h"
#include "SiteValues.h"

namespace {

void require(bool isTrue, const char* what)
{
    if (!isTrue)
        throw std::runtime_error(what);
}

bool isWhole(const std::string& head)
{
    constexpr const char* end = "\r\n\r\n";
    return head.size() >= 4 && head.compare(head.size() - 4, 4, end) == 0;
}

std::string readHead(SSL* tls)
{
    std::string head;
    char byte;
    while (!isWhole(head) && SSL_read(tls, &byte, 1) == 1)
        head += byte;
    return head;
}

MerchantRequest parse(std::string head)
{
    MerchantRequest request;
    const size_t begin = head.find(' ') + 1;
    request.target = head.substr(begin, head.find(' ', begin) - begin);
    request.path = request.target.substr(0, request.target.find('?'));
    request.head = std::move(head);
    return request;
}

}  // namespace

void MerchantConnection::send(const std::string& bytes)
{
    // A client that has gone away is none of the handler's business.
    if (!bytes.empty())
        SSL_write(tls_, bytes.data(), static_cast<int>(bytes.size()));
}

void MerchantConnection::answer(int status, const std::string& body, const std::string& headerLines)
{
    answerHead(status, body.size(), headerLines);
    send(body);
}

void MerchantConnection::answerHead(int status, size_t length, const std::string& headerLines)
{
    send("HTTP/1.1 " + std::to_string(status) + " Status\r\nConnection: close\r\nContent-Length: " +
         std::to_string(length) + "\r\n" + headerLines + "\r\n");
}

MerchantServer& MerchantServer::instance()
{
    static MerchantServer server;
    return server;
}

MerchantServer::MerchantServer()
{
    signal(SIGPIPE, SIG_IGN);
    makeContext();
    listen();
    acceptor_ = std::thread([this] { accept(); });
}

MerchantServer::~MerchantServer()
{
    shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    close(listener_);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (Connection& connection : connections_) {
            if (!connection.isOver)
                shutdown(connection.socket, SHUT_RDWR);
        }
    }
    for (Connection& connection : connections_)
        connection.thread.join();
}

void MerchantServer::makeContext()
{
    const std::string authority = TestSupport::ScratchRoot::file("merchant-authority.pem");
    certificates_.writeAuthority(authority);
    setenv("APPLIANCE_CA_FILE", authority.c_str(), 1);

    const Appliance::Certificate certificate = certificates_.issue({CARVOY_MERCHANT_BRIDGE_HOST});
    context_.reset(SSL_CTX_new(TLS_server_method()));
    require(context_ && SSL_CTX_use_certificate(context_.get(), certificate.x509.get()) == 1 &&
                SSL_CTX_use_PrivateKey(context_.get(), certificate.key.get()) == 1,
            "the merchant has no certificate");
}

void MerchantServer::listen()
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(bind(listener_, generic, length) == 0 && ::listen(listener_, SOMAXCONN) == 0 &&
                getsockname(listener_, generic, &length) == 0,
            "the merchant has no port");
    const std::string port = std::to_string(ntohs(address.sin_port));
    setenv("APPLIANCE_CONNECT_TO", (CARVOY_MERCHANT_BRIDGE_HOST ":443:127.0.0.1:" + port).c_str(), 1);
}

void MerchantServer::accept()
{
    for (int peer; (peer = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        forgetFinished();
        std::lock_guard<std::mutex> lock(mutex_);
        Connection& connection = connections_.emplace_back();
        connection.socket = peer;
        connection.thread = std::thread([this, &connection] { serve(connection); });
    }
}

void MerchantServer::serve(Connection& connection)
{
    int socket;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        socket = connection.socket;
    }
    SSL* tls = SSL_new(context_.get());
    SSL_set_fd(tls, socket);
    if (SSL_accept(tls) == 1)
        converse(tls);
    SSL_free(tls);

    std::lock_guard<std::mutex> lock(mutex_);
    close(socket);
    connection.isOver = true;
    changed_.notify_all();
}

void MerchantServer::converse(SSL* tls)
{
    std::string head = readHead(tls);
    // A client may go away without having asked for anything.
    if (!isWhole(head))
        return;
    const MerchantRequest request = parse(std::move(head));
    MerchantConnection connection(tls);
    if (const Handler handler = note(request))
        handler(request, connection);
    else
        connection.answer(404, "");
    SSL_shutdown(tls);
}

MerchantServer::Handler MerchantServer::note(const MerchantRequest& request)
{
    std::lock_guard<std::mutex> lock(mutex_);
    requests_.push_back(request);
    const auto found = handlers_.find(request.path);
    return found == handlers_.end() ? Handler() : found->second;
}

void MerchantServer::forgetFinished()
{
    std::list<Connection> finished;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (auto it = connections_.begin(); it != connections_.end();) {
            const auto next = std::next(it);
            if (it->isOver)
                finished.splice(finished.end(), connections_, it);
            it = next;
        }
    }
    for (Connection& connection : finished)
        connection.thread.join();
}

void MerchantServer::handle(const std::string& path, Handler handler)
{
    std::lock_guard<std::mutex> lock(mutex_);
    handlers_[path] = std::move(handler);
}

void MerchantServer::answer(const std::string& path, int status, const std::string& body,
                            const std::string& headerLines)
{
    handle(path, [=](const MerchantRequest&, MerchantConnection& connection) {
        connection.answer(status, body, headerLines);
    });
}

void MerchantServer::reset()
{
    std::unique_lock<std::mutex> lock(mutex_);
    auto isIdle = [this] {
        return std::all_of(connections_.begin(), connections_.end(), [](auto& one) { return one.isOver; });
    };
    require(changed_.wait_for(lock, TestSupport::Patience, isIdle), "a handler of the merchant does not end");
    handlers_.clear();
    requests_.clear();
}

std::vector<MerchantRequest> MerchantServer::requests() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

int MerchantServer::countOf(const std::string& path) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(std::count_if(requests_.begin(), requests_.end(),
                                          [&](const auto& request) { return request.path == path; }));
}

std::string MerchantServer::url(const std::string& path)
{
    return "https://" CARVOY_MERCHANT_BRIDGE_HOST + path;
}
