// What the retailer sells, and the search over it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Appliance::Retailer {

struct Discount {
    std::string type;  // a code: "10", "A0"
    std::string text;  // for the shopper: "10%", "1+1"
};

struct Product {
    std::string id;       // unique
    std::string name;     // Korean, in UTF-8
    std::int64_t price;   // won
    std::string picture;  // a file name of the pictures folder
    std::vector<Discount> discounts;
    std::vector<std::string> badges;  // codes: "90"
};

// Read once from a JSON file; std::runtime_error names the file and what is wrong with it.
// Immutable afterwards, so any thread may use it.
class Catalogue {
  public:
    explicit Catalogue(const std::filesystem::path& file);

    const std::vector<Product>& products() const { return allProducts; }

    // The products whose name holds every word of the term, anywhere in it, in the order of searchNames.
    // The pointers live as long as the catalogue.
    std::vector<const Product*> search(std::string_view term) const;

  private:
    std::vector<Product> allProducts;
};

}  // namespace Appliance::Retailer
