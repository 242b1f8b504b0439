// The texts that the retailer's search shares with the apps around it. Each source file that includes this
// has its own copies, made before main.
#pragma once

#include <string>

#include "SharedConstants.h"
#include "SiteValues.h"

namespace Carvoy {

const std::string RETAILER_LOGIN_FILE = CARVOY_RETAILER_LOGIN_FILE;
const std::string RETAILER_APP_ID = "qLH6zwTE25.Emart";
const std::string OPERATION_EMART_SHOW_DETAILED_VIEW = PLATFORM_OPERATION("emart_show_detailed_view");
const std::string OPERATION_EMART_SHOW_SEARCH_VIEW = PLATFORM_OPERATION("emart_show_search_view");

const std::string OPERATION_DEFAULT = PLATFORM_OPERATION("default");
const std::string OPERATION_EMART_PRODUCT_IMAGE = SERVICE_OPERATION("emart_product_image");

const std::string KEY_PRODUCT_IMAGE_TYPE = "key_product_image_type";
const std::string KEY_PRODUCT_IDS = "key_product_ids";
const std::string KEY_PRODUCT_DISCOUNT_TYPE = "key_product_discount_type";
const std::string KEY_PRODUCT_DISCOUNT_TXT = "key_product_discount_txt";

}  // namespace Carvoy
