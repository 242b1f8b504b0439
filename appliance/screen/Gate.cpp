#include "Gate.h"

namespace Screen {

namespace {

bool isHere(const std::string& place, int port)
{
    constexpr int usual = 80;  // is left out by those who ask
    const std::string number = ":" + std::to_string(port);
    const bool isBare = port == usual && (place == "127.0.0.1" || place == "localhost");
    return isBare || place == "127.0.0.1" + number || place == "localhost" + number;
}

bool isOurs(const std::string& origin, int port)
{
    const std::string scheme = "http://";
    return origin.compare(0, scheme.size(), scheme) == 0 && isHere(origin.substr(scheme.size()), port);
}

bool allAre(const httplib::Request& request, const char* header, bool (*isFine)(const std::string&, int),
            int port)
{
    const auto [begin, end] = request.headers.equal_range(header);
    for (auto at = begin; at != end; ++at) {
        if (!isFine(at->second, port)) {
            return false;
        }
    }
    return true;
}

// What a browser says of a request that it makes for another site's page, but for a link that is followed.
bool isFromAnotherSite(const httplib::Request& request)
{
    const std::string site = request.get_header_value("Sec-Fetch-Site");
    const bool isOther = site == "cross-site" || site == "same-site";
    return isOther && request.get_header_value("Sec-Fetch-Mode") != "navigate";
}

}  // namespace

std::optional<std::string> whyForeign(const httplib::Request& request, int port)
{
    if (!request.has_header("Host") || !allAre(request, "Host", isHere, port)) {
        return "this is not the host that was asked for";
    }
    if (!allAre(request, "Origin", isOurs, port)) {
        return "only this server's own page may ask";
    }
    if (isFromAnotherSite(request)) {
        return "only this server's own page may ask";
    }
    return std::nullopt;
}

void addSecurityHeaders(httplib::Response& response)
{
    if (response.has_header("Content-Security-Policy")) {
        return;
    }
    response.set_header(
        "Content-Security-Policy",
        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; "
        "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Referrer-Policy", "no-referrer");
    response.set_header("Cross-Origin-Resource-Policy", "same-origin");
    response.set_header("Cross-Origin-Opener-Policy", "same-origin");
}

}  // namespace Screen
