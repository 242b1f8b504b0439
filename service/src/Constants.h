// The texts that the service and its merchant-bridge search share with the apps around them. Each source file
// that includes this has its own copies, made before main.
#pragma once

#include <string>

#include <tzplatform_config.h>

#include "SharedConstants.h"
#include "SiteValues.h"

namespace Carvoy {

const std::string PARTNER_TOKEN_FILE =
    tzplatform_mkpath(TZ_USER_APP, CARVOY_PARTNER_APP_ID "/shared/trusted/tokens.txt");
const std::string PARTNER_APP_ID = CARVOY_PARTNER_APP_ID;
const std::string OPERATION_SHOW_DETAILED_VIEW = PLATFORM_OPERATION("show_detailed_view");
const std::string OPERATION_SHOW_SEARCH_VIEW = PLATFORM_OPERATION("show_search_view");
const std::string OPERATION_CLICK_ADD_CART = PLATFORM_OPERATION("click_add_cart");
const std::string OPERATION_CLICK_CHECK_OUT = PLATFORM_OPERATION("click_check_out");
const std::string OPERATION_CLICK_CART_SUMMARY = PLATFORM_OPERATION("click_cart_summary");

const std::string MERCHANT_BRIDGE_SEARCH_URL =
    "https://" CARVOY_MERCHANT_BRIDGE_HOST "/merchantbridge-production/api/product/search";

const std::string OPERATION_PRODUCT_IMAGE = SERVICE_OPERATION("product_image");

const std::string KEY_MERCHANT = "key_merchant";
const std::string KEY_PRODUCT_SIZE_OR_WEIGHTS = "key_product_size_or_weights";
const std::string KEY_PRODUCT_DISCOUNT_PERCENTS = "key_product_discount_percents";
const std::string KEY_PRODUCT_VARIANT_REFS = "key_product_variant_refs";

}  // namespace Carvoy
