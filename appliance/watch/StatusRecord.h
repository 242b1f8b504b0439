// What the service leaves for others after a search: its record in the assistant's data store, and a flag.
#pragma once

#include <array>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace Appliance {

inline constexpr char SearchFlag[] = "db/nuvex/e-commerce/response";

inline constexpr std::array<const char*, 5> StatusColumns = {"isLoggedIn", "isLinked", "totalCount",
                                                             "productCountInCart", "currentViewType"};

// One value for each of StatusColumns; nothing where the column is null.
using StatusRecord = std::array<std::optional<int>, StatusColumns.size()>;

// The record with the primary key 0; nothing where there is none yet. Opens the file read-only.
// Throws std::runtime_error for a file that cannot be read as a data store.
// Waits for at most `limit` while another program writes; it throws after that, too.
std::optional<StatusRecord> readStatusRecord(const std::filesystem::path& dataStore,
                                             std::chrono::milliseconds limit = std::chrono::seconds(3));

// SearchFlag, which tells that a search was answered. Nothing where it is not set. Needs the entered session.
std::optional<int> readSearchFlag();

}  // namespace Appliance
