#include "RetailerStock.h"

#include "Catalogue.h"
#include "Installation.h"

namespace Tool {

RetailerStock::RetailerStock()
{
    const std::filesystem::path share = Appliance::shareFolder("retailer");
    const Appliance::Retailer::Catalogue catalogue(share / "catalogue.json");
    for (const auto& product : catalogue.products()) {
        // Of several badges the first one counts, and it has an icon where the service shows it.
        hasIcon_[product.id] = !product.badges.empty() &&
                               std::filesystem::exists(share / "icons" / (product.badges.front() + ".png"));
    }
}

bool RetailerStock::has(const std::string& productId, Ui::PictureKind kind) const
{
    const auto found = hasIcon_.find(productId);
    return found != hasIcon_.end() && (kind == Ui::PictureKind::Product || found->second);
}

}  // namespace Tool
