// Who may ask this server: its own page, and programs that know its address; no page from elsewhere.
#pragma once

#include <httplib.h>

#include <optional>
#include <string>

namespace Screen {

// Why the request is refused, or nothing. Only a page that came from this server has its origin, and only who
// names this machine means it: a foreign name that leads here is another page's trick.
std::optional<std::string> whyForeign(const httplib::Request& request, int port);

// For every response, once: what the page may load, and that nobody may frame it or guess types.
void addSecurityHeaders(httplib::Response& response);

}  // namespace Screen
