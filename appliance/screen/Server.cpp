// Routes by hand but for the commands, whose bodies the library reads for its own routes only.
#include "Server.h"

#include <httplib.h>

#include <atomic>
#include <csignal>
#include <string_view>
#include <thread>
#include <utility>

#include "EventStream.h"
#include "Gate.h"
#include "JsonText.h"
#include "PageFiles.h"
#include "PictureFolder.h"
#include "PlainServer.h"
#include "Refusal.h"
#include "RequestLog.h"

namespace Screen {

namespace {

namespace StandIn = Appliance::StandIn;
using HandlerResponse = httplib::Server::HandlerResponse;

const char Loopback[] = "127.0.0.1";
const char EventPath[] = "/events";
constexpr std::string_view PictureRoot = "/pictures/";
// A peer on this machine that takes longer for its next bytes has stopped.
constexpr std::chrono::seconds Patience{5};
// What is left of them beside the streams serves everything else.
constexpr std::size_t Threads = Server::StreamsServed + 8;

void sendError(httplib::Response& response, int status, const std::string& why)
{
    response.status = status;
    response.set_content(jsonText({{"error", why}}), "application/json");
}

// For requests that the library refuses itself.
void explainStatus(const httplib::Request&, httplib::Response& response)
{
    if (!response.has_header("Content-Type")) {
        sendError(response, response.status,
                  response.status == 413   ? "the body is too long"
                  : response.status >= 500 ? "this went wrong here"
                                           : "the request cannot be read");
    }
    addSecurityHeaders(response);
}

bool isPicturePath(const std::string& path)
{
    return path.compare(0, PictureRoot.size(), PictureRoot) == 0;
}

bool isJson(const httplib::Request& request)
{
    const std::string type = request.get_header_value("Content-Type");
    return type.substr(0, type.find(';')) == "application/json";
}

// The library would let an exception end the process.
bool sendNext(EventStream& stream, httplib::DataSink& sink)
{
    try {
        return stream.sendNext(sink);
    } catch (const std::exception&) {
        return false;  // no memory: the page comes again
    }
}

// Threads that are started meanwhile leave the signals to the main one.
class SignalsHeld {
  public:
    SignalsHeld()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

  private:
    sigset_t before_{};
};

}  // namespace

class Server::Parts {
  public:
    Parts(const ServerSettings& settings, Timeline& timeline, CommandHandler onCommand);
    ~Parts();

    int port = 0;

  private:
    HandlerResponse route(const httplib::Request& request, httplib::Response& response);
    HandlerResponse admit(const httplib::Request& request, httplib::Response& response) const;
    bool isKnown(const std::string& path) const;
    void serve(const httplib::Request& request, httplib::Response& response);
    void sendFile(const httplib::Request& request, httplib::Response& response) const;
    void sendPicture(const httplib::Request& request, httplib::Response& response) const;
    void sendEvents(httplib::Response& response);
    void takeCommand(const httplib::Request& request, httplib::Response& response) const;

    Timeline& timeline_;
    const CommandHandler onCommand_;
    const PageFiles page_;
    const PictureFolder pictures_;
    std::atomic<std::size_t> streams_{0};
    StandIn::RequestLog noLog_{""};
    StandIn::PlainConnections connections_;
    StandIn::PlainServer server_;
    std::thread listener_;
};

Server::Parts::Parts(const ServerSettings& settings, Timeline& timeline, CommandHandler onCommand)
    : timeline_(timeline),
      onCommand_(std::move(onCommand)),
      page_(settings.pageFolder),
      pictures_(settings.pictureFolder),
      server_(connections_, Patience)
{
    StandIn::setUp(server_, noLog_);
    server_.new_task_queue = [] { return new httplib::ThreadPool(Threads); };
    server_.set_payload_max_length(BodyBytes);
    server_.set_pre_routing_handler(
        [this](const auto& request, auto& response) { return route(request, response); });
    server_.Post("/api/.*", [this](const auto& request, auto& response) { takeCommand(request, response); });
    server_.set_error_handler(explainStatus);
    port = server_.open(Loopback, settings.port);
    const SignalsHeld held;
    listener_ = std::thread([this] { server_.listen_after_bind(); });
}

Server::Parts::~Parts()
{
    timeline_.end();
    connections_.endAll();
    server_.endListening();
    listener_.join();
}

HandlerResponse Server::Parts::route(const httplib::Request& request, httplib::Response& response)
{
    addSecurityHeaders(response);
    if (const auto why = whyForeign(request, port)) {
        sendError(response, 403, *why);
        return HandlerResponse::Handled;
    }
    if (!isKnown(request.path)) {
        sendError(response, 404, "there is nothing here");
        return HandlerResponse::Handled;
    }
    const bool isCommand = isCommandPath(request.path);
    const char* method = isCommand ? "POST" : "GET";
    if (request.method != method) {
        response.set_header("Allow", method);
        sendError(response, 405, "only " + std::string(method) + " is served here");
    } else if (isCommand) {
        return admit(request, response);
    } else if (request.has_header("Range")) {
        sendError(response, 416, "nothing is served in parts");
    } else {
        serve(request, response);
    }
    return HandlerResponse::Handled;
}

bool Server::Parts::isKnown(const std::string& path) const
{
    return isCommandPath(path) || path == EventPath || isPicturePath(path) || page_.has(path);
}

// The library counts the bytes of a body whose length stands in front of it, and of no other.
HandlerResponse Server::Parts::admit(const httplib::Request& request, httplib::Response& response) const
{
    if (!isJson(request) || request.has_header("Content-Encoding")) {
        sendError(response, 415, "a command is plain JSON");
    } else if (!request.has_header("Content-Length") || request.has_header("Transfer-Encoding")) {
        sendError(response, 411, "a command tells its length");
    } else {
        return HandlerResponse::Unhandled;
    }
    return HandlerResponse::Handled;
}

void Server::Parts::serve(const httplib::Request& request, httplib::Response& response)
{
    if (request.path == EventPath) {
        sendEvents(response);
    } else if (isPicturePath(request.path)) {
        sendPicture(request, response);
    } else {
        sendFile(request, response);
    }
}

void Server::Parts::sendFile(const httplib::Request& request, httplib::Response& response) const
{
    const auto file = page_.find(request.path);
    if (!file) {
        sendError(response, 404, "there is nothing here");
        return;
    }
    response.set_header("Cache-Control", "no-cache");
    response.set_content(file->bytes, file->type);
}

void Server::Parts::sendPicture(const httplib::Request& request, httplib::Response& response) const
{
    const std::string name = request.path.substr(PictureRoot.size());
    const auto bytes = pictures_.read(name, request.get_param_value("v"));
    if (!bytes) {
        sendError(response, 404, "there is no such picture, or no longer");
        return;
    }
    response.set_header("Cache-Control", "private, max-age=86400, immutable");
    response.set_content(*bytes, pictureType(*bytes));
}

void Server::Parts::sendEvents(httplib::Response& response)
{
    auto seat = std::make_unique<EventStream::Seat>(streams_);
    if (seat->number() > StreamsServed) {
        sendError(response, 503, "too many pages are open");
        return;
    }
    const auto stream = std::make_shared<EventStream>(timeline_, std::move(seat));
    response.set_header("Cache-Control", "no-store");
    response.set_chunked_content_provider(
        "text/event-stream",
        [stream](std::size_t, httplib::DataSink& sink) { return sendNext(*stream, sink); });
}

void Server::Parts::takeCommand(const httplib::Request& request, httplib::Response& response) const
{
    try {
        if (onCommand_(parseCommand(request.path, request.body))) {
            response.status = 202;
        } else {
            sendError(response, 503, "too much is to be done already");
        }
    } catch (const StandIn::Refusal& refusal) {
        sendError(response, refusal.status, refusal.what());
    }
}

Server::Server(const ServerSettings& settings, Timeline& timeline, CommandHandler onCommand)
    : parts_(std::make_unique<Parts>(settings, timeline, std::move(onCommand)))
{
}

Server::~Server() = default;

int Server::port() const
{
    return parts_->port;
}

}  // namespace Screen
