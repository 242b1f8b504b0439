// The partner app: turns the service's messages into what its web shop shows.
#pragma once

#include "ScreenApp.h"
#include "Shop.h"

namespace Partner {

// Everything runs on the main loop of run().
class PartnerApp : public Appliance::ScreenApp {
  public:
    PartnerApp() : ScreenApp("carvoy-partner", "partner.json") {}

  private:
    std::string take(app_control_h message, const std::string& operation, const std::string& caller) override;
    void noteReceived(Appliance::Received received) override { shop_.noteReceived(std::move(received)); }
    nlohmann::json content() const override;

    std::string outcomeOfClick(app_control_h message, const std::string& operation);

    Shop shop_;
};

}  // namespace Partner
