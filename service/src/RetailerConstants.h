// The texts that the search at the retailer shares with the apps around it. Each source file that includes
// this has its own copies, made before main; none includes Constants.h, too.
#pragma once

#include <string>

#include "Operations.h"
#include "SiteValues.h"

namespace Carvoy {

const std::string UI_APP_ID = "org.tizen.carvoy";
const std::string SERVICE_APP_ID = "org.tizen.carvoy-service";

const std::string RETAILER_LOGIN_FILE = CARVOY_RETAILER_LOGIN_FILE;
const std::string RETAILER_APP_ID = "qLH6zwTE25.Emart";
const std::string OPERATION_EMART_SHOW_DETAILED_VIEW = PLATFORM_OPERATION("emart_show_detailed_view");
const std::string OPERATION_EMART_SHOW_SEARCH_VIEW = PLATFORM_OPERATION("emart_show_search_view");

const std::string KEY_PRODUCT_IMAGE_NUM = "key_product_image_num";
const std::string KEY_PRODUCT_IMAGE_PATH = "key_product_image_path";
const std::string KEY_PRODUCT_IMAGE_TYPE = "key_product_image_type";
const std::string KEY_SEARCH_TERM = "key_search_term";
const std::string KEY_SEARCH_BY = "key_search_by";
const std::string KEY_TOTAL_NUM_OF_PRODUCTS = "key_total_num_of_products";
const std::string KEY_PRODUCT_NAMES = "key_product_names";
const std::string KEY_PRODUCT_PRICES = "key_product_prices";
const std::string KEY_PRODUCT_PRICES_BEFORE_DISCOUNT = "key_product_prices_before_discount";
const std::string KEY_PRODUCT_IDS = "key_product_ids";
const std::string KEY_PRODUCT_DISCOUNT_TYPE = "key_product_discount_type";
const std::string KEY_PRODUCT_DISCOUNT_TXT = "key_product_discount_txt";

const std::string OPERATION_DEFAULT = PLATFORM_OPERATION("default");
const std::string OPERATION_SEARCH = SERVICE_OPERATION("search");
const std::string OPERATION_RESULT = SERVICE_OPERATION("result");
const std::string OPERATION_SHOW = SERVICE_OPERATION("show");
const std::string OPERATION_HIDE = SERVICE_OPERATION("hide");
const std::string OPERATION_EMART_PRODUCT_IMAGE = SERVICE_OPERATION("emart_product_image");

const std::string ASSISTANT_APP_ID = "org.tizen.nuvex-da";
const std::string OPERATION_REFRESH_VIEW_TIMEOUT = ASSISTANT_OPERATION("refresh_view_timeout");
const std::string OPERATION_CLOSE_APP = ASSISTANT_OPERATION("close_app");
const std::string KEY_STOP_TTS = "key_stop_tts";

}  // namespace Carvoy
