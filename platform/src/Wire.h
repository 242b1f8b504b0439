// How app control looks on the bus: its names, its limits, and extra data in a message.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <string>

#include "AppControlHandle.h"

namespace HostPlatform::Wire {

inline const char* const Path = "/org/tizen/AppControl";
inline const char* const Interface = "org.tizen.AppControl1";

constexpr std::chrono::seconds LaunchLimit{25};

/** Appends an a{sv} of texts and text lists; null elements become empty texts. Throws sdbus::Error. */
void writeExtraData(sdbus::Message& message, const ExtraData& extraData);

/** Reads an a{sv}. Throws sdbus::Error where a value is neither s nor as, or a text cannot be read. */
ExtraData readExtraData(sdbus::Message& message);

/** Whether @p name can be owned by an app on the bus. */
bool isAppName(const std::string& name);

}  // namespace HostPlatform::Wire
