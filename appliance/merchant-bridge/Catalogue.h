// What the merchants sell, and the search over it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Appliance::MerchantBridge {

struct Variant {
    std::string size;                          // for the shopper: "1 gal", "each"
    std::string reference;                     // unique over all merchants
    std::int64_t amount;                       // minor units (cents)
    std::optional<std::int64_t> formerAmount;  // where reduced; more than amount
};

struct Product {
    std::string name;
    std::string brand;
    std::string category;
    std::string picture;            // a file name of the pictures folder
    std::vector<Variant> variants;  // at least one
};

struct Merchant {
    std::string id;
    std::string name;
    std::string currency;  // ISO 4217
    std::vector<Product> products;
};

// Read once from a JSON file; std::runtime_error names the file and what is wrong with it.
// Immutable afterwards, so any thread may use it.
class Catalogue {
  public:
    explicit Catalogue(const std::filesystem::path& file);

    const std::vector<Merchant>& merchants() const { return allMerchants; }

    // Null when there is no such merchant.
    const Merchant* find(std::string_view merchantId) const;

  private:
    std::vector<Merchant> allMerchants;
};

// The products whose name holds every word of the term, in the order of searchNames.
// The pointers live as long as the merchant.
std::vector<const Product*> search(const Merchant& merchant, std::string_view term);

}  // namespace Appliance::MerchantBridge
