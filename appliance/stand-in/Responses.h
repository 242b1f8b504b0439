// The ways in which a response leaves, well or badly. For the thread that handles the request.
#pragma once

#include "Answer.h"
#include "Connections.h"

#include <httplib.h>

#include <functional>

namespace Appliance::StandIn {

// The status that stands in the log for a request that got no answer.
constexpr int noAnswer = 0;

// Here and below: without the body where the status forbids one.
void send(httplib::Response& response, int status, Answer answer);

// Sends the status and the text.
void sendError(httplib::Response& response, int status, const std::string& message);

// Answers a search as its trouble says: late, not at all, half, with another status. `makeAnswer` is called
// where an answer is sent that is not just an error. Blocks for as long as the trouble says.
void sendTroubled(const Connections& connections, const httplib::Request& request,
                  httplib::Response& response, const Trouble& trouble,
                  const std::function<Answer()>& makeAnswer);

}  // namespace Appliance::StandIn
