// APPLIANCE_CONNECT_TO: where connections to a host really go.
#pragma once

#include <string>
#include <vector>

namespace HostPlatform {

// What was read from the setting's comma-separated "HOST:PORT:ADDRESS:PORT" entries.
struct ConnectTo {
    std::vector<std::string> entries;    // well-formed, as libcurl's CURLOPT_CONNECT_TO takes them
    std::vector<std::string> malformed;  // everything else but empty texts
};

// HOST and the first PORT may be empty (any), ADDRESS and the second PORT may be empty (unchanged); IPv6
// addresses stand in square brackets; ports are 1 to 65535.
ConnectTo parseConnectTo(const std::string& setting);

}  // namespace HostPlatform
