// The merchant's answer to a search, as a test writes it down.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ServiceTest {

struct Product {
    std::string name;
    std::string picture;          // path at the merchant, or a URL of another host
    std::string label{};          // size or weight
    std::optional<int> amount{};  // in minor units
    std::optional<int> former{};
    std::string ref{};
};

/** The URL of a path at the merchant; a URL stays as it is. */
std::string urlOf(const std::string& path);

/** The body of an answer with these products; what a product does not have is left out. */
std::string answerOf(const std::vector<Product>& products);

}  // namespace ServiceTest
