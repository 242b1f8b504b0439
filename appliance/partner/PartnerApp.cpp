#include "PartnerApp.h"

#include "Message.h"
#include "Names.h"
#include "ShopJson.h"

namespace Partner {

using namespace Appliance;

std::string PartnerApp::take(app_control_h message, const std::string& operation, const std::string& caller)
{
    const std::string outcome =
        caller == ServiceAppId ? outcomeOfClick(message, operation) : outcomeOf("it is not from the service");
    reply(message, outcome == Taken ? APP_CONTROL_RESULT_SUCCEEDED : APP_CONTROL_RESULT_FAILED);
    return outcome;
}

std::string PartnerApp::outcomeOfClick(app_control_h message, const std::string& operation)
{
    if (operation == OperationShowProduct) {
        const Extras extras = extrasOf(message);
        return outcomeOf(shop_.showProduct({extras.text(KeyMerchant), extras.text(KeyVariantRefs)}));
    }
    if (operation == OperationAddToCart) {
        return outcomeOf(shop_.addToCart());
    }
    if (operation == OperationShowCart) {
        shop_.showCart();
        return Taken;
    }
    if (operation == OperationCheckOut) {
        shop_.checkOut();
        return Taken;
    }
    return outcomeOf("unknown operation");
}

nlohmann::json PartnerApp::content() const
{
    return toJson(shop_.content());
}

}  // namespace Partner
