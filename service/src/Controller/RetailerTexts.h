// How the retailer writes its requests and answers, and what the UI app is shown of them. Any thread.
#pragma once

#include <ctime>
#include <optional>
#include <string>

namespace Carvoy::RetailerTexts {

/**
 * Year, month, day, hour, minute and second in fourteen digits: "20260131235959". The year takes four places,
 * whatever it is.
 */
std::string timestamp(const std::tm& time);

/**
 * A price in won, of the digits that the retailer sends: "12900" is "12,900원". Whatever the text holds, its
 * bytes are put in groups of three from the right; only a character of UTF-8 is never cut in two.
 */
std::string price(const std::string& digits);

/** Whether the UI app knows this kind of discount: 10, 11, 30 and 60, however written, and A0, B0 and C0. */
bool isAcceptedDiscount(const std::string& type);

/**
 * The address of a badge's icon. Nothing for a badge that the UI app does not show: it does 90, 91, 100, 110,
 * 120, 130 and 270, however written.
 */
std::optional<std::string> iconUrl(const std::string& type);

}  // namespace Carvoy::RetailerTexts
