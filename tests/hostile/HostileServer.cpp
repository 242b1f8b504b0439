#include "HostileServer.h"

#include <ostream>
#include <utility>

namespace ServiceTest {

namespace {

using Appliance::ThrowawayCertificates;
using Handler = Hostility::Handler;
using std::chrono::seconds;

// libcurl's words.
const std::string Empty = "Server returned nothing (no headers, no data)";
const std::string NotHttp = "Unsupported protocol";
const std::string Weird = "Weird server reply";
const std::string Partial = "Transferred a partial file";
const std::string Unreadable = "Failure when receiving data from the peer";
const std::string NoTls = "SSL connect error";
const std::string Untrusted = "SSL peer certificate or SSH remote key was not OK";

constexpr size_t HeaderSize = 100 * 1024;
constexpr int ManyHeaders = 4000;

const std::string Ok = "HTTP/1.1 200 OK\r\n";

Handler thenReset(const std::string& begin)
{
    return [begin](const ServerRequest&, ServerConnection& connection) {
        connection.send(begin);
        connection.reset();
    };
}

Handler thenNothing(const std::string& begin)
{
    return [begin](const ServerRequest&, ServerConnection& connection) {
        connection.send(begin);
        connection.stayUntilClientLeaves();
    };
}

Handler thenAByteASecond(const std::string& begin)
{
    return [begin](const ServerRequest&, ServerConnection& connection) {
        connection.send(begin);
        while (!connection.clientLeaves(seconds(1)))
            connection.send("x");
    };
}

std::string lengthLine(const std::string& length)
{
    return "Content-Length: " + length + "\r\n";
}

std::string chunked(const std::string& body)
{
    return Ok + "Transfer-Encoding: chunked\r\n\r\n" + body;
}

std::string manyHeaders()
{
    std::string lines;
    for (int i = 0; i < ManyHeaders; ++i)
        lines += "X-Header-" + std::to_string(i) + ": " + std::string(80, 'h') + "\r\n";
    return lines;
}

Opening resetDuringHandshake()
{
    return [](int socket) {
        SocketStream stream(socket);
        char first;
        stream.receive(first);
        stream.reset();
        return nullptr;
    };
}

Opening wordsInsteadOfTls()
{
    return [](int socket) {
        auto stream = std::make_unique<SocketStream>(socket);
        stream->send(Ok + "\r\n{}");
        return stream;
    };
}

Opening silentForEver()
{
    return [](int socket) {
        SocketStream stream(socket);
        ServerConnection(stream).stayUntilClientLeaves();
        return nullptr;
    };
}

auto always(const Opening& opening)
{
    return [opening](const ThrowawayCertificates&, const std::string&) { return opening; };
}

/** Speaks this protocol and no other, or so it says. */
auto promising(const std::string& protocol)
{
    return [protocol](const ThrowawayCertificates& authority, const std::string& host) {
        return overTls(authority.issue({host}), {protocol});
    };
}

/** The client's preface with a settings frame, which only a server of HTTP/2 would understand. */
std::string http2Preface()
{
    return std::string("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n") + std::string("\0\0\0\4\0\0\0\0\0", 9);
}

/** The first frame of a server of HTTP/2: its settings, none. */
std::string http2Settings()
{
    return std::string("\0\0\0\4\0\0\0\0\0", 9);
}

}  // namespace

Opening plainHttp()
{
    return [](int socket) { return std::make_unique<SocketStream>(socket); };
}

Opening overTls(const Appliance::Certificate& certificate, const std::vector<std::string>& protocols)
{
    const auto tls = std::make_shared<const TlsServer>(certificate, protocols);
    return [tls](int socket) { return tls->accept(socket); };
}

HostileServer::HostileServer(const std::string& origin, Opening opening, const ServerPlace& place)
    : ScriptedServer(origin, place)
{
    start(std::move(opening));
}

std::ostream& operator<<(std::ostream& stream, const Hostility& hostility)
{
    return stream << hostility.name;
}

Opening openingOf(const Hostility& hostility, const ThrowawayCertificates& authority, const std::string& host)
{
    return hostility.opening ? hostility.opening(authority, host) : overTls(authority.issue({host}));
}

void misbehave(ScriptedServer& server, const std::string& path, const Hostility& hostility)
{
    server.handle(path, hostility.handler);
    server.handle("*", hostility.handler);
}

Handler bytes(const std::string& all)
{
    return [all](const ServerRequest&, ServerConnection& connection) { connection.send(all); };
}

const std::vector<Hostility>& hostilitiesOverHttp()
{
    static const std::vector<Hostility> all = {
        {"NoAnswer", bytes(""), Empty},
        {"HalfAStatusLine", bytes("HTTP/1.1 20"), Empty},
        {"NoStatusLine", bytes("<html>Welcome</html>"), NotHttp},
        {"AnotherProtocol", bytes("220 mail.example ESMTP\r\n"), NotHttp},
        {"StatusWithoutANumber", bytes("HTTP/1.1 OK\r\n\r\n"), NotHttp},
        {"StatusOfFourDigits", bytes("HTTP/1.1 2000 OK\r\n" + lengthLine("2") + "\r\n{}"), NotHttp},
        {"UnknownVersion", bytes("HTTP/7.3 200 OK\r\n" + lengthLine("2") + "\r\n{}"), NotHttp},
        {"Http2WithoutWarning", bytes(http2Settings()), NotHttp},
        {"Http2Preface", bytes(http2Preface()), NotHttp},
        {"NullInAHeader", bytes(Ok + std::string("X-Null: \0\r\n", 11) + "\r\n{}"), Weird},
        {"HeaderOf100KB", bytes(Ok + "X-Big: " + std::string(HeaderSize, 'h') + "\r\n\r\n{}"),
         "Out of memory"},
        {"HeadersWithoutEnd", bytes(Ok + manyHeaders() + "\r\n{}"), Unreadable},
        {"ShortOfItsLength", bytes(Ok + lengthLine("100") + "\r\n{\"prod"), Partial},
        {"NegativeLength", bytes(Ok + lengthLine("-1") + "\r\n{}"), Weird},
        {"LengthWithoutANumber", bytes(Ok + lengthLine("many") + "\r\n{}"), Weird},
        {"HugeLength", bytes(Ok + lengthLine("9223372036854775807") + "\r\n{}"), Partial},
        {"TwoLengths", bytes(Ok + lengthLine("2") + lengthLine("50") + "\r\n{}"), Partial},
        {"ChunkWithoutASize", bytes(chunked("milk\r\n{}\r\n0\r\n\r\n")), Unreadable},
        {"ChunkOfNegativeSize", bytes(chunked("-2\r\n{}\r\n0\r\n\r\n")), Unreadable},
        {"ChunkOfHugeSize", bytes(chunked("ffffffffffffffffff\r\n{}\r\n0\r\n\r\n")), Unreadable},
        {"ChunkLongerThanItsSize", bytes(chunked("1\r\n{}\r\n0\r\n\r\n")), Unreadable},
        {"ChunksWithoutEnd", bytes(chunked("2\r\n{}\r\n")), Partial},
        {"UnknownEncoding", bytes(Ok + "Transfer-Encoding: zip\r\n\r\n{}"),
         "Unrecognized or bad HTTP Content or Transfer-Encoding"},
        {"ResetInsteadOfAnAnswer", thenReset(""), Unreadable},
        {"ResetInTheBody", thenReset(Ok + lengthLine("100") + "\r\n{\"prod"), Unreadable},
    };
    return all;
}

const std::vector<Hostility>& hostilitiesOverTls()
{
    static const Handler any = bytes(Ok + lengthLine("2") + "\r\n{}");
    static const std::vector<Hostility> all = {
        {"ResetDuringTheHandshake", any, NoTls, always(resetDuringHandshake())},
        {"ClosedBeforeTheHandshake", any, NoTls, always([](int) { return nullptr; })},
        {"NoTls", any, NoTls, always(wordsInsteadOfTls())},
        {"Expired", any, Untrusted,
         [](const auto& authority, const auto& host) { return overTls(authority.issueExpired({host})); }},
        {"OtherHost", any, Untrusted,
         [](const auto& authority, const auto&) { return overTls(authority.issue({"other.example"})); }},
        {"SelfSigned", any, Untrusted,
         [](const auto&, const auto& host) { return overTls(ThrowawayCertificates::selfSigned({host})); }},
        {"Http2WithoutFrames", thenNothing(Ok + "\r\n{}"), Empty, promising("h2")},
        {"UnknownProtocol", any, NoTls, promising("spdy/1")},
    };
    return all;
}

const std::vector<Hostility>& stalls()
{
    static const std::vector<Hostility> all = {
        {"NoHandshake", {}, "", always(silentForEver())},
        {"NoAnswer", thenNothing(""), ""},
        {"NothingBehindTheStatusLine", thenNothing(Ok), ""},
        {"NothingBehindHalfABody", thenNothing(Ok + lengthLine("100") + "\r\n{\"prod"), ""},
        {"AByteASecond", thenAByteASecond(Ok + lengthLine("100000") + "\r\n"), ""},
        {"AByteOfAHeaderASecond", thenAByteASecond(Ok + "X-Slow: "), ""},
        {"Http2WithoutAnAnswer", thenNothing(""), "", promising("h2")},
    };
    return all;
}

}  // namespace ServiceTest
