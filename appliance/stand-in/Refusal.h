// Why a request gets an error instead of what it asks for.
#pragma once

#include <stdexcept>
#include <string>

namespace Appliance::StandIn {

// The text is for the client.
struct Refusal : std::runtime_error {
    Refusal(int refusalStatus, const std::string& message)
        : std::runtime_error(message), status(refusalStatus)
    {
    }
    int status;  // 400 to 499
};

}  // namespace Appliance::StandIn
