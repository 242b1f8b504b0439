// GET /merchantbridge-production/api/product/search
#pragma once

#include "Catalogue.h"
#include "Connections.h"
#include "Tokens.h"

#include <httplib.h>

#include <string>

namespace Appliance::MerchantBridge {

// Holds references to what it is made of. handle may be called from any thread, and blocks for as long as
// the trouble in the search term says.
class SearchRoute {
  public:
    static constexpr const char* path = "/merchantbridge-production/api/product/search";

    SearchRoute(const Catalogue& usedCatalogue, const StandIn::Connections& usedConnections,
                Tokens acceptedTokens, std::string pictureHost);

    void handle(const httplib::Request& request, httplib::Response& response) const;

  private:
    void search(const httplib::Request& request, httplib::Response& response) const;

    const Catalogue& catalogue;
    const StandIn::Connections& connections;
    const Tokens tokens;
    const std::string host;
};

}  // namespace Appliance::MerchantBridge
