// The answer to a search. A pure function, for any thread.
#pragma once

#include "Answer.h"
#include "Catalogue.h"

#include <string>
#include <vector>

namespace Appliance::MerchantBridge {

// Every hit, in order, or the body that the trouble asks for. Picture URLs are https://`host`/images/...
// with each picture's own trouble in the path.
StandIn::Answer productsAnswer(const Merchant& merchant, const std::vector<const Product*>& hits,
                               const StandIn::Trouble& trouble, const std::string& host);

}  // namespace Appliance::MerchantBridge
