// However few products the client wants, it gets all: that it takes no more is its own affair.
#include "SearchRoute.h"

#include "ProductsAnswer.h"
#include "Refusal.h"
#include "Responses.h"
#include "SearchRequest.h"

#include <utility>

namespace Appliance::Retailer {

SearchRoute::SearchRoute(const Catalogue& usedCatalogue, const StandIn::Connections& usedConnections,
                         std::string pictureHost)
    : catalogue(usedCatalogue), connections(usedConnections), host(std::move(pictureHost))
{
}

void SearchRoute::handle(const httplib::Request& request, httplib::Response& response) const
{
    try {
        const StandIn::Query query = StandIn::parseQuery(readSearchRequest(request));
        StandIn::sendTroubled(connections, request, response, query.trouble, [&] {
            return productsAnswer(catalogue.search(query.term), query.trouble, host);
        });
    } catch (const StandIn::Refusal& refusal) {
        StandIn::sendError(response, refusal.status, refusal.what());
    }
}

}  // namespace Appliance::Retailer
