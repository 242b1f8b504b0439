// What the retailer's stand-in has of a product: the messages about a search do not tell which pictures will
// come.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "Card.h"

namespace Tool {

// Immutable; any thread.
class RetailerStock {
  public:
    // Reads the stock that this build's stand-in sells. Throws std::runtime_error.
    RetailerStock();

    // Whether the service will fetch this picture. Nothing comes for a product that the retailer does not
    // have.
    bool has(const std::string& productId, Ui::PictureKind kind) const;

  private:
    std::map<std::string, bool> hasIcon_;  // by product id
};

}  // namespace Tool
