// GET /images/…
#pragma once

#include "Connections.h"
#include "PicturePath.h"
#include "Pictures.h"

#include <httplib.h>

namespace Appliance::StandIn {

// Holds references to what it is made of. handle may be called from any thread; slow answers block the
// thread only while they are written.
class PictureRoute {
  public:
    PictureRoute(const Pictures& usedPictures, const Connections& usedConnections);

    void handle(const httplib::Request& request, httplib::Response& response) const;

  private:
    void stall(const httplib::Request& request, httplib::Response& response, const Picture& picture) const;
    void trickle(const httplib::Request& request, httplib::Response& response, const Picture& picture,
                 std::chrono::milliseconds time) const;

    const Pictures& pictures;
    const Connections& connections;
};

}  // namespace Appliance::StandIn
