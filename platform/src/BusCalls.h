// What all objects of an app have in common on the bus: their errors, their limits, and how calls are taken.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstddef>

namespace HostPlatform::BusCalls {

inline constexpr const char* InvalidArgs = "org.freedesktop.DBus.Error.InvalidArgs";
inline constexpr const char* LimitsExceeded = "org.freedesktop.DBus.Error.LimitsExceeded";

/** Texts of one message, together; the bus drops a client that sends more than it takes. */
constexpr std::size_t MaxTextBytes = 16 * 1024 * 1024;

/** Elements of a text list, each of which costs a few bytes beside its text. */
constexpr std::size_t MaxTexts = 1'000'000;

/** Requests, replies and voice calls that wait for the receiver's main loop: room for a burst that comes
 *  while a search blocks it. */
constexpr std::size_t MaxWaiting = 16'384;

/** Answers a call that has no output, where an answer is wanted. Throws sdbus::Error. */
inline void acknowledge(const sdbus::MethodCall& call)
{
    if (!call.doesntExpectReply())
        call.createReply().send();
}

/** Gives what @p read gives. What cannot be read is the caller's mistake, whatever sd-bus calls it. */
template <typename Read>
auto readArguments(Read read)
{
    try {
        return read();
    } catch (const sdbus::Error& error) {
        throw sdbus::Error(InvalidArgs, error.getMessage());
    }
}

}  // namespace HostPlatform::BusCalls
