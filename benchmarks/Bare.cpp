#include "Bare.h"

#include <algorithm>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "Rig.h"
#include "SiteValues.h"

namespace Benchmarks {

Bare::Bare(const TestSupport::PrivateBus& bus, const TestSupport::ChildProcess::Variables& variables)
    : mProgram((bus.use(), std::vector<std::string>{BARE_PROGRAM}), variables),
      mConnection(sdbus::createSessionBusConnection())
{
    if (!TestSupport::waitForName(BARE_ID, true))
        throw std::runtime_error("the bare program did not start: " + mProgram.errors());
    mProxy = sdbus::createProxy(*mConnection, BARE_ID, "/org/tizen/AppControl");
    mConnection->enterEventLoopAsync();
}

void Bare::hold(const std::map<std::string, sdbus::Variant>& extras)
{
    mProxy->callMethod("Hold").onInterface("org.example.Bare1").withArguments(extras);
}

std::vector<std::string> Bare::pictureUrls()
{
    const auto answer = nlohmann::json::parse(ask<std::string>("Fetch", searchUrl(), searchHeaders()));
    std::vector<std::string> urls;
    for (const nlohmann::json& product : answer.at("products"))
        urls.push_back(product.at("imageUrl"));
    urls.resize(std::min<std::size_t>(urls.size(), 6));
    return urls;
}

std::string Bare::searchUrl()
{
    return "https://" CARVOY_MERCHANT_BRIDGE_HOST
           "/merchantbridge-production/api/product/"
           "search?merchant=freshmart&query=milk&searchBy=full&pageSize=6";
}

std::vector<std::string> Bare::searchHeaders()
{
    return {std::string("X-Auth-Access-Token:") + Market::ACCESS_TOKEN,
            std::string("X-Auth-Session-Token:") + Market::SESSION_TOKEN};
}

}  // namespace Benchmarks
