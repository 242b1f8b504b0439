// The folder under which the host platform keeps everything.
#pragma once

#include <string>

namespace HostPlatform {

// The root's absolute path, without a final '/': APPLIANCE_ROOT, else the user's state folder (see
// docs/host-platform.md). Resolved once per process, at the first call, which also makes the root and the
// folders that apps expect in it; one that cannot be made is told on standard error. Callable from any thread
// and at any time, static initialisation and destruction included.
const std::string& applianceRoot();

// Folders of the platform paths, in the root.
constexpr const char* kUserAppFolder = "apps_rw";
constexpr const char* kUserContentFolder = "media";

}  // namespace HostPlatform
