// The product lists of a message to the UI app.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

#include "Demand.h"
#include "Surroundings.h"

namespace Fuzz {

constexpr size_t MOST_PRODUCTS = 6;

/** Demands that all lists of `message` under these keys are as long as its count says, 6 at most. Returns
 * that. */
inline size_t countOf(const Message& message, std::initializer_list<std::string> keys)
{
    const size_t count = std::stoul(textOf(message, "key_total_num_of_products"));
    DEMAND(count <= MOST_PRODUCTS);
    for (const std::string& key : keys)
        DEMAND(listOf(message, key).size() == count);
    return count;
}

}  // namespace Fuzz
