// The texts that other apps know the retailer's search by.
#include "RetailerConstants.h"

#include <gtest/gtest.h>

#include <string>

#include "ConstantPairs.h"

namespace Carvoy {

TEST(RetailerConstantsTest, AppsAreNamedByTheirIds)
{
    expectEqual({{UI_APP_ID, "org.tizen.carvoy"},
                 {SERVICE_APP_ID, "org.tizen.carvoy-service"},
                 {ASSISTANT_APP_ID, "org.tizen.nuvex-da"},
                 {RETAILER_APP_ID, "qLH6zwTE25.Emart"}});
}

TEST(RetailerConstantsTest, OperationsStandInTheirNamespaces)
{
    const std::string platform = "http://tizen.org/appcontrol/operation/";
    const std::string service = "http://carvoy-service/appcontrol/operation/";
    const std::string assistant = "http://nuvex-da/appcontrol/operation/";
    expectEqual({{OPERATION_EMART_SHOW_DETAILED_VIEW, platform + "emart_show_detailed_view"},
                 {OPERATION_EMART_SHOW_SEARCH_VIEW, platform + "emart_show_search_view"},
                 {OPERATION_DEFAULT, platform + "default"},
                 {OPERATION_SEARCH, service + "search"},
                 {OPERATION_RESULT, service + "result"},
                 {OPERATION_SHOW, service + "show"},
                 {OPERATION_HIDE, service + "hide"},
                 {OPERATION_EMART_PRODUCT_IMAGE, service + "emart_product_image"},
                 {OPERATION_REFRESH_VIEW_TIMEOUT, assistant + "refresh_view_timeout"},
                 {OPERATION_CLOSE_APP, assistant + "close_app"}});
}

TEST(RetailerConstantsTest, KeysOfExtraDataAreFixed)
{
    expectEqual({{KEY_PRODUCT_IMAGE_NUM, "key_product_image_num"},
                 {KEY_PRODUCT_IMAGE_PATH, "key_product_image_path"},
                 {KEY_PRODUCT_IMAGE_TYPE, "key_product_image_type"},
                 {KEY_SEARCH_TERM, "key_search_term"},
                 {KEY_SEARCH_BY, "key_search_by"},
                 {KEY_TOTAL_NUM_OF_PRODUCTS, "key_total_num_of_products"},
                 {KEY_PRODUCT_NAMES, "key_product_names"},
                 {KEY_PRODUCT_PRICES, "key_product_prices"},
                 {KEY_PRODUCT_PRICES_BEFORE_DISCOUNT, "key_product_prices_before_discount"},
                 {KEY_PRODUCT_IDS, "key_product_ids"},
                 {KEY_PRODUCT_DISCOUNT_TYPE, "key_product_discount_type"},
                 {KEY_PRODUCT_DISCOUNT_TXT, "key_product_discount_txt"},
                 {KEY_STOP_TTS, "key_stop_tts"}});
}

TEST(RetailerConstantsTest, TheLoginFileDependsOnTheSite)
{
    EXPECT_EQ(RETAILER_LOGIN_FILE, CARVOY_RETAILER_LOGIN_FILE);
}

}  // namespace Carvoy
