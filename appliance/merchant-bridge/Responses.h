// The ways in which a response leaves, well or badly. For the thread that handles the request.
#pragma once

#include "Answer.h"

#include <httplib.h>

namespace Appliance::MerchantBridge {

// The status that stands in the log for a request that got no answer.
constexpr int noAnswer = 0;

// Here and below: without the body where the status forbids one.
void send(httplib::Response& response, int status, Answer answer);

// Announces the whole body, sends its first half and closes the connection.
void sendHalf(httplib::Response& response, int status, Answer answer);

// Resets the connection instead of answering.
void sendNothing(const httplib::Request& request, httplib::Response& response);

}  // namespace Appliance::MerchantBridge
