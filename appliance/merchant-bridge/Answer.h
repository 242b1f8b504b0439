// The bodies of the answers to a search. Pure functions, for any thread.
#pragma once

#include "Catalogue.h"
#include "Trouble.h"

#include <string>
#include <vector>

namespace Appliance::MerchantBridge {

struct Answer {
    std::string body;
    std::string contentType;
};

// Every hit, in order, or the body that the trouble asks for. Picture URLs are https://`host`/images/...
// with each picture's own trouble in the path.
Answer searchAnswer(const Merchant& merchant, const std::vector<const Product*>& hits, const Trouble& trouble,
                    const std::string& host);

// {"error":{"status":…,"message":…}}
Answer errorAnswer(int status, const std::string& message);

}  // namespace Appliance::MerchantBridge
