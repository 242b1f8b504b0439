#include "BridgeProgram.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "SiteValues.h"

namespace TestSupport {

BridgeProgram::BridgeProgram(const std::string& folder, const std::string& tokenFile)
    : authorityFile_(folder + "/bridge-ca.pem"),
      process_({MERCHANT_BRIDGE, "--ca-file", authorityFile_, "--tokens-file", tokenFile})
{
    if (!process_.waitForOutput("\n"))
        throw std::runtime_error("the merchant bridge did not start: " + process_.errors());
    port_ = nlohmann::json::parse(process_.output()).at("port");
}

ChildProcess::Variables BridgeProgram::variables() const
{
    return {{"APPLIANCE_CA_FILE", authorityFile_},
            {"APPLIANCE_CONNECT_TO", CARVOY_MERCHANT_BRIDGE_HOST ":443:127.0.0.1:" + std::to_string(port_)}};
}

}  // namespace TestSupport
