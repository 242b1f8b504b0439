// Answers of the retailer, as a test puts them together.
#pragma once

#include <string>
#include <vector>

namespace Items {

/** An answer with these items, each a JSON value. */
inline std::string answer(const std::vector<std::string>& items)
{
    std::string list;
    for (const std::string& item : items)
        list += (list.empty() ? "" : ", ") + item;
    return "{\"data\": {\"itemCount\": \"" + std::to_string(items.size()) + "\", \"itemList\": [" + list +
           "]}}";
}

/** An item with a name, a picture, and the icon of a badge: no icon if the badge is 0. */
inline std::string pictured(const std::string& name, const std::string& imageUrl, int badge = 0)
{
    return "{\"itemNm\": \"" + name + "\", \"itemImgUrl\": \"" + imageUrl +
           "\", \"benefitGrp2\": [{\"type\": \"" + std::to_string(badge) + "\"}]}";
}

}  // namespace Items
