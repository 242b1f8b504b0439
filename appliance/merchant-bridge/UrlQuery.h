// The parameters behind a URL's '?'.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace Appliance::MerchantBridge {

// Names to values, unescaped, of a target such as "/search?query=milk%20~status=503"; '+' is a blank. The
// first '=' parts name and value, so that a trouble word typed by hand needs no escaping; a name that comes
// twice keeps its first value; a '%' that begins no escape stays as it is. For any thread.
std::map<std::string, std::string> parseUrlQuery(std::string_view target);

}  // namespace Appliance::MerchantBridge
