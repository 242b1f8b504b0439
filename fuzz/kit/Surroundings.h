// What lies around the code under a fuzzer: the bus, the network, the shell and the disk, as this process has
// them.
#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>
#include <vector>

#include "AppControlHandle.h"

/**
 * Stands in, at link time, for the calls that would leave the process or take milliseconds, so that a run
 * is cheap and everything happens on the calling thread. All else is the product's own code: a
 * message passes through the sender and the host platform up to the point where the bus would take it.
 *
 * The calls are looked at while they are at it: a shell command, a status record or an outgoing message that
 * must not be ends the process, and so does whatever GLib complains about. The log is formatted and goes
 * nowhere.
 */
namespace Fuzz {

/** A message that the bus would have taken. */
using Message = std::shared_ptr<app_control_s>;

/** What was sent since the last call, in order. */
std::vector<Message> takeSent();

/** What a message holds under a key: a missing text is empty, a missing list has no elements. */
std::string textOf(const Message& message, const std::string& key);
std::vector<std::string> listOf(const Message& message, const std::string& key);

/** A request of libcurl's, as far as it was set up. */
struct Request {
    std::string url;
    std::vector<std::string> headers;
};

/** What transfers end with from now on. The body goes to the write function if the code says that it worked.
 */
void answerTransfers(CURLcode code, long status, const std::string& body);

/** The requests that were performed since the last call. */
std::vector<Request> takeRequests();

/** Puts `size` bytes into a file, whose folder is made. */
void writeFile(const std::string& path, const void* data, size_t size);

}  // namespace Fuzz
