#include "RetailerTexts.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "SiteValues.h"

namespace Carvoy::RetailerTexts {

namespace {

constexpr const char* ICONS = "http://" CARVOY_RETAILER_ICON_HOST "/ui/app/6001/icon/";
constexpr size_t GROUP = 3;  // bytes between two commas of a price
constexpr size_t YEAR = 4;   // places of a timestamp's year

/** The number that a text begins with; 0 where it begins with none. */
long number(const std::string& text)
{
    return strtol(text.c_str(), nullptr, 10);
}

template <typename List, typename Value>
bool holds(const List& list, const Value& value)
{
    return std::find(std::begin(list), std::end(list), value) != std::end(list);
}

/** Whether a character of UTF-8 begins with this byte. */
bool isFirstByte(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

}  // namespace

std::string timestamp(const std::tm& time)
{
    char rest[11];
    strftime(rest, sizeof rest, "%m%d%H%M%S", &time);
    std::string year = std::to_string(time.tm_year + 1900);
    year.insert(0, YEAR - std::min(YEAR, year.size()), ' ');
    return year.substr(0, YEAR) + rest;
}

std::string price(const std::string& digits)
{
    std::string text;
    for (size_t i = 0; i < digits.size(); ++i) {
        const bool isBetweenGroups = i > 0 && (digits.size() - i) % GROUP == 0;
        if (isBetweenGroups && isFirstByte(digits[i]))
            text += ',';
        text += digits[i];
    }
    return text + "원";
}

bool isAcceptedDiscount(const std::string& type)
{
    static constexpr long NUMBERS[] = {10, 11, 30, 60};
    static constexpr const char* TEXTS[] = {"A0", "B0", "C0"};
    return holds(NUMBERS, number(type)) || holds(TEXTS, type);
}

std::optional<std::string> iconUrl(const std::string& type)
{
    static constexpr long BADGES[] = {90, 91, 100, 110, 120, 130, 270};
    const long badge = number(type);
    if (!holds(BADGES, badge))
        return std::nullopt;
    return ICONS + std::to_string(badge) + ".png";
}

}  // namespace Carvoy::RetailerTexts
