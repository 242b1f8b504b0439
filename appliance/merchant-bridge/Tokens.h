// The two tokens a customer of the shop is known by.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace Appliance::MerchantBridge {

struct Tokens {
    std::string session;
    std::string access;
};

// The file's first line up to its last comma, and what follows it. std::runtime_error, which never quotes
// the line, when the file cannot be read or lacks one of the two.
Tokens readTokens(const std::filesystem::path& file);

// Why the tokens of a request are refused, without quoting any of them; nothing when both are right.
// A token that was not sent is empty.
std::optional<std::string> refusal(const Tokens& wanted, const Tokens& sent);

}  // namespace Appliance::MerchantBridge
