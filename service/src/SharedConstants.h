// The texts that every controller shares with the apps around it. Each source file that includes this has its
// own copies, made before main.
#pragma once

#include <string>

#define PLATFORM_OPERATION(name) "http://tizen.org/appcontrol/operation/" name
#define SERVICE_OPERATION(name) "http://carvoy-service/appcontrol/operation/" name
#define ASSISTANT_OPERATION(name) "http://nuvex-da/appcontrol/operation/" name

namespace Carvoy {

const std::string UI_APP_ID = "org.tizen.carvoy";
const std::string SERVICE_APP_ID = "org.tizen.carvoy-service";

const std::string OPERATION_SEARCH = SERVICE_OPERATION("search");
const std::string OPERATION_SHOW = SERVICE_OPERATION("show");
const std::string OPERATION_HIDE = SERVICE_OPERATION("hide");
const std::string OPERATION_RESULT = SERVICE_OPERATION("result");

const std::string KEY_SEARCH_TERM = "key_search_term";
const std::string KEY_SEARCH_BY = "key_search_by";
const std::string KEY_TOTAL_NUM_OF_PRODUCTS = "key_total_num_of_products";
const std::string KEY_PRODUCT_NAMES = "key_product_names";
const std::string KEY_PRODUCT_PRICES_BEFORE_DISCOUNT = "key_product_prices_before_discount";
const std::string KEY_PRODUCT_PRICES = "key_product_prices";
const std::string KEY_PRODUCT_IMAGE_NUM = "key_product_image_num";
const std::string KEY_PRODUCT_IMAGE_PATH = "key_product_image_path";

const std::string ASSISTANT_APP_ID = "org.tizen.nuvex-da";
const std::string OPERATION_REFRESH_VIEW_TIMEOUT = ASSISTANT_OPERATION("refresh_view_timeout");
const std::string OPERATION_CLOSE_APP = ASSISTANT_OPERATION("close_app");
const std::string KEY_STOP_TTS = "key_stop_tts";

}  // namespace Carvoy
