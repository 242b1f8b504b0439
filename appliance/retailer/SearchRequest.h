// What the shop's own client sends when it searches, member by member.
#pragma once

#include <httplib.h>

#include <string>

namespace Appliance::Retailer {

// The query of a sound request; StandIn::Refusal says what is wrong with another one: 403 for a client that
// is not the shop's own, 415 for another type of body, 400 for anything in the body. For any thread.
std::string readSearchRequest(const httplib::Request& request);

}  // namespace Appliance::Retailer
