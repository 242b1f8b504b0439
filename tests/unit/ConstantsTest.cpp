// The texts that other apps know the service by.
#include "Constants.h"

#include <gtest/gtest.h>

#include <string>

#include "ConstantPairs.h"
#include "ScratchRoot.h"

namespace Carvoy {

TEST(ConstantsTest, AppsAreNamedByTheirIds)
{
    expectEqual({{UI_APP_ID, "org.tizen.carvoy"},
                 {SERVICE_APP_ID, "org.tizen.carvoy-service"},
                 {ASSISTANT_APP_ID, "org.tizen.nuvex-da"},
                 {PARTNER_APP_ID, CARVOY_PARTNER_APP_ID}});
}

TEST(ConstantsTest, PlatformOperationsStandInThePlatformsNamespace)
{
    const std::string prefix = "http://tizen.org/appcontrol/operation/";
    expectEqual({{OPERATION_SHOW_DETAILED_VIEW, prefix + "show_detailed_view"},
                 {OPERATION_SHOW_SEARCH_VIEW, prefix + "show_search_view"},
                 {OPERATION_CLICK_ADD_CART, prefix + "click_add_cart"},
                 {OPERATION_CLICK_CHECK_OUT, prefix + "click_check_out"},
                 {OPERATION_CLICK_CART_SUMMARY, prefix + "click_cart_summary"}});
}

TEST(ConstantsTest, ServiceOperationsStandInTheServicesNamespace)
{
    const std::string prefix = "http://carvoy-service/appcontrol/operation/";
    expectEqual({{OPERATION_SEARCH, prefix + "search"},
                 {OPERATION_SHOW, prefix + "show"},
                 {OPERATION_HIDE, prefix + "hide"},
                 {OPERATION_RESULT, prefix + "result"},
                 {OPERATION_PRODUCT_IMAGE, prefix + "product_image"}});
}

TEST(ConstantsTest, AssistantOperationsStandInTheAssistantsNamespace)
{
    const std::string prefix = "http://nuvex-da/appcontrol/operation/";
    expectEqual({{OPERATION_REFRESH_VIEW_TIMEOUT, prefix + "refresh_view_timeout"},
                 {OPERATION_CLOSE_APP, prefix + "close_app"}});
}

TEST(ConstantsTest, KeysOfExtraDataAreFixed)
{
    expectEqual({{KEY_MERCHANT, "key_merchant"},
                 {KEY_SEARCH_TERM, "key_search_term"},
                 {KEY_SEARCH_BY, "key_search_by"},
                 {KEY_TOTAL_NUM_OF_PRODUCTS, "key_total_num_of_products"},
                 {KEY_PRODUCT_NAMES, "key_product_names"},
                 {KEY_PRODUCT_SIZE_OR_WEIGHTS, "key_product_size_or_weights"},
                 {KEY_PRODUCT_DISCOUNT_PERCENTS, "key_product_discount_percents"},
                 {KEY_PRODUCT_PRICES_BEFORE_DISCOUNT, "key_product_prices_before_discount"},
                 {KEY_PRODUCT_PRICES, "key_product_prices"},
                 {KEY_PRODUCT_VARIANT_REFS, "key_product_variant_refs"},
                 {KEY_PRODUCT_IMAGE_NUM, "key_product_image_num"},
                 {KEY_PRODUCT_IMAGE_PATH, "key_product_image_path"},
                 {KEY_STOP_TTS, "key_stop_tts"}});
}

TEST(ConstantsTest, PlacesDependOnTheSite)
{
    expectEqual({{PARTNER_TOKEN_FILE, TestSupport::ScratchRoot::file("apps_rw/" CARVOY_PARTNER_APP_ID
                                                                     "/shared/trusted/tokens.txt")},
                 {MERCHANT_BRIDGE_SEARCH_URL,
                  "https://" CARVOY_MERCHANT_BRIDGE_HOST "/merchantbridge-production/api/product/search"}});
}

}  // namespace Carvoy
