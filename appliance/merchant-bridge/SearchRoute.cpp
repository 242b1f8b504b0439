// Checks in the order of a real front end: who asks, then what is asked for.
#include "SearchRoute.h"

#include "Numbers.h"
#include "ProductsAnswer.h"
#include "Refusal.h"
#include "Responses.h"
#include "UrlQuery.h"

#include <utility>

namespace Appliance::MerchantBridge {
namespace {

using StandIn::Refusal;

constexpr int mostOnAPage = 100;

void checkTokens(const Tokens& tokens, const httplib::Request& request)
{
    const Tokens sent{request.get_header_value("X-Auth-Session-Token"),
                      request.get_header_value("X-Auth-Access-Token")};
    if (const auto reason = refusal(tokens, sent))
        throw Refusal(401, *reason);
}

// The parameters are all there and not blank once they are checked.
using Parameters = std::map<std::string, std::string>;

Parameters readParameters(const httplib::Request& request)
{
    Parameters parameters = parseUrlQuery(request.target);
    for (const char* name : {"merchant", "query", "searchBy", "pageSize"})
        if (parameters[name].find_first_not_of(" \t") == std::string::npos)
            throw Refusal(400, std::string("parameter ") + name + " is missing");
    if (parameters["searchBy"] != "full")
        throw Refusal(400, "parameter searchBy is not \"full\"");
    if (!StandIn::parseNumber(parameters["pageSize"], 1, mostOnAPage))
        throw Refusal(400, "parameter pageSize is not a number from 1 to 100");
    return parameters;
}

const Merchant& findMerchant(const Catalogue& catalogue, const Parameters& parameters)
{
    const Merchant* merchant = catalogue.find(parameters.at("merchant"));
    if (merchant == nullptr)
        throw Refusal(404, "unknown merchant");
    return *merchant;
}

}  // namespace

SearchRoute::SearchRoute(const Catalogue& usedCatalogue, const StandIn::Connections& usedConnections,
                         Tokens acceptedTokens, std::string pictureHost)
    : catalogue(usedCatalogue),
      connections(usedConnections),
      tokens(std::move(acceptedTokens)),
      host(std::move(pictureHost))
{
}

void SearchRoute::handle(const httplib::Request& request, httplib::Response& response) const
{
    try {
        search(request, response);
    } catch (const Refusal& refusal) {
        StandIn::sendError(response, refusal.status, refusal.what());
    }
}

void SearchRoute::search(const httplib::Request& request, httplib::Response& response) const
{
    checkTokens(tokens, request);
    const Parameters parameters = readParameters(request);
    const Merchant& merchant = findMerchant(catalogue, parameters);
    const StandIn::Query query = StandIn::parseQuery(parameters.at("query"));
    StandIn::sendTroubled(connections, request, response, query.trouble, [&] {
        return productsAnswer(merchant, MerchantBridge::search(merchant, query.term), query.trouble, host);
    });
}

}  // namespace Appliance::MerchantBridge
