// The texts that the service and its search at the merchant bridge share with the apps around them. Each
// source file that includes this has its own copies, made before main.
#pragma once

#include <string>

#include "Operations.h"
#include "PlatformPath.h"
#include "SiteValues.h"

namespace Carvoy {

const std::string UI_APP_ID = "org.tizen.carvoy";
const std::string SERVICE_APP_ID = "org.tizen.carvoy-service";

const std::string PARTNER_TOKEN_FILE =
    Util::platformPath(TZ_USER_APP, CARVOY_PARTNER_APP_ID "/shared/trusted/tokens.txt");
const std::string PARTNER_APP_ID = CARVOY_PARTNER_APP_ID;
const std::string OPERATION_SHOW_DETAILED_VIEW = PLATFORM_OPERATION("show_detailed_view");
const std::string OPERATION_SHOW_SEARCH_VIEW = PLATFORM_OPERATION("show_search_view");
const std::string OPERATION_CLICK_ADD_CART = PLATFORM_OPERATION("click_add_cart");
const std::string OPERATION_CLICK_CHECK_OUT = PLATFORM_OPERATION("click_check_out");
const std::string OPERATION_CLICK_CART_SUMMARY = PLATFORM_OPERATION("click_cart_summary");

const std::string MERCHANT_BRIDGE_SEARCH_URL =
    "https://" CARVOY_MERCHANT_BRIDGE_HOST "/merchantbridge-production/api/product/search";

const std::string OPERATION_SEARCH = SERVICE_OPERATION("search");
const std::string OPERATION_SHOW = SERVICE_OPERATION("show");
const std::string OPERATION_HIDE = SERVICE_OPERATION("hide");
const std::string OPERATION_RESULT = SERVICE_OPERATION("result");
const std::string OPERATION_PRODUCT_IMAGE = SERVICE_OPERATION("product_image");

const std::string KEY_MERCHANT = "key_merchant";
const std::string KEY_SEARCH_TERM = "key_search_term";
const std::string KEY_SEARCH_BY = "key_search_by";
const std::string KEY_TOTAL_NUM_OF_PRODUCTS = "key_total_num_of_products";
const std::string KEY_PRODUCT_NAMES = "key_product_names";
const std::string KEY_PRODUCT_SIZE_OR_WEIGHTS = "key_product_size_or_weights";
const std::string KEY_PRODUCT_DISCOUNT_PERCENTS = "key_product_discount_percents";
const std::string KEY_PRODUCT_PRICES_BEFORE_DISCOUNT = "key_product_prices_before_discount";
const std::string KEY_PRODUCT_PRICES = "key_product_prices";
const std::string KEY_PRODUCT_VARIANT_REFS = "key_product_variant_refs";
const std::string KEY_PRODUCT_IMAGE_NUM = "key_product_image_num";
const std::string KEY_PRODUCT_IMAGE_PATH = "key_product_image_path";

const std::string ASSISTANT_APP_ID = "org.tizen.nuvex-da";
const std::string OPERATION_REFRESH_VIEW_TIMEOUT = ASSISTANT_OPERATION("refresh_view_timeout");
const std::string OPERATION_CLOSE_APP = ASSISTANT_OPERATION("close_app");
const std::string KEY_STOP_TTS = "key_stop_tts";

}  // namespace Carvoy
