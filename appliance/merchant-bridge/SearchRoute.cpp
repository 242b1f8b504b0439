// Checks in the order of a real front end: who asks, then what is asked for.
#include "SearchRoute.h"

#include "Numbers.h"
#include "Responses.h"
#include "UrlQuery.h"

#include <utility>

namespace Appliance::MerchantBridge {
namespace {

constexpr int mostOnAPage = 100;

struct Refusal : std::runtime_error {
    Refusal(int refusalStatus, const std::string& message)
        : std::runtime_error(message), status(refusalStatus)
    {
    }
    int status;
};

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
    if (!parseNumber(parameters["pageSize"], 1, mostOnAPage))
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

Query readQuery(const Parameters& parameters)
{
    try {
        return parseQuery(parameters.at("query"));
    } catch (const TroubleError& error) {
        throw Refusal(400, error.what());
    }
}

Answer makeAnswer(const Merchant& merchant, const Query& query, int status, const std::string& host)
{
    if (status >= 300 && query.trouble.body == Body::Products)
        return errorAnswer(status, "asked for by the search term");
    return searchAnswer(merchant, MerchantBridge::search(merchant, query.term), query.trouble, host);
}

}  // namespace

SearchRoute::SearchRoute(const Catalogue& usedCatalogue, const Connections& usedConnections,
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
        send(response, refusal.status, errorAnswer(refusal.status, refusal.what()));
    }
}

void SearchRoute::search(const httplib::Request& request, httplib::Response& response) const
{
    checkTokens(tokens, request);
    const Parameters parameters = readParameters(request);
    const Merchant& merchant = findMerchant(catalogue, parameters);
    const Query query = readQuery(parameters);
    const Trouble& trouble = query.trouble;

    if (trouble.delay.count() > 0 && !connections.wait(request.ssl, trouble.delay))
        return sendNothing(request, response);
    if (trouble.reset)
        return sendNothing(request, response);
    const int status = trouble.status.value_or(200);
    Answer answer = makeAnswer(merchant, query, status, host);
    if (trouble.truncate)
        sendHalf(response, status, std::move(answer));
    else
        send(response, status, std::move(answer));
}

}  // namespace Appliance::MerchantBridge
