// POST /api/refrigerator/search/datas.ssg
#pragma once

#include "Catalogue.h"
#include "Connections.h"

#include <httplib.h>

#include <string>

namespace Appliance::Retailer {

// Holds references to what it is made of. handle may be called from any thread, and blocks for as long as
// the trouble in the query says.
class SearchRoute {
  public:
    static constexpr const char* path = "/api/refrigerator/search/datas.ssg";

    SearchRoute(const Catalogue& usedCatalogue, const StandIn::Connections& usedConnections,
                std::string pictureHost);

    void handle(const httplib::Request& request, httplib::Response& response) const;

  private:
    const Catalogue& catalogue;
    const StandIn::Connections& connections;
    const std::string host;
};

}  // namespace Appliance::Retailer
