// The bodies of answers, sound and broken. Pure functions, for any thread.
#pragma once

#include "Trouble.h"

#include <functional>
#include <string>

namespace Appliance::StandIn {

struct Answer {
    std::string body;
    std::string contentType;
};

// {"error":{"status":…,"message":…}}
Answer errorAnswer(int status, const std::string& message);

// The bodies of a search in the form that is the shop's own, each a JSON object.
struct ShopBodies {
    std::function<std::string()> products;    // every hit
    std::function<std::string()> noProducts;  // the same with an empty list
    const char* oddTypes;                     // the first elements each break another habit
    const char* beforeList;                   // what stands around the list of products at least
    const char* behindList;
};

// The body that the trouble asks for.
Answer searchAnswer(const Trouble& trouble, const ShopBodies& bodies);

}  // namespace Appliance::StandIn
