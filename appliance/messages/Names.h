// The app ids, operations and extra data keys that the programs around the service use.
#pragma once

#include "SiteValues.h"

namespace Appliance {

inline constexpr char ServiceAppId[] = "org.tizen.carvoy-service";
inline constexpr char RetailerServiceAppId[] = "org.tizen.carvoy-retailer";
inline constexpr char UiAppId[] = "org.tizen.carvoy";
inline constexpr char PartnerAppId[] = CARVOY_PARTNER_APP_ID;
inline constexpr char AssistantAppId[] = "org.tizen.nuvex-da";

inline constexpr char PlatformOperations[] = "http://tizen.org/appcontrol/operation/";
inline constexpr char ServiceOperations[] = "http://carvoy-service/appcontrol/operation/";
inline constexpr char AssistantOperations[] = "http://nuvex-da/appcontrol/operation/";

inline constexpr char OperationSearch[] = "http://carvoy-service/appcontrol/operation/search";
inline constexpr char OperationShow[] = "http://carvoy-service/appcontrol/operation/show";
inline constexpr char OperationResult[] = "http://carvoy-service/appcontrol/operation/result";
inline constexpr char OperationProductImage[] = "http://carvoy-service/appcontrol/operation/product_image";
inline constexpr char OperationRetailerImage[] =
    "http://carvoy-service/appcontrol/operation/emart_product_image";

inline constexpr char OperationShowProduct[] = "http://tizen.org/appcontrol/operation/show_detailed_view";
inline constexpr char OperationAddToCart[] = "http://tizen.org/appcontrol/operation/click_add_cart";
inline constexpr char OperationShowCart[] = "http://tizen.org/appcontrol/operation/click_cart_summary";
inline constexpr char OperationCheckOut[] = "http://tizen.org/appcontrol/operation/click_check_out";

inline constexpr char OperationSay[] = "http://nuvex-da/appcontrol/operation/say";
inline constexpr char OperationCloseApp[] = "http://nuvex-da/appcontrol/operation/close_app";
inline constexpr char OperationRefreshView[] = "http://nuvex-da/appcontrol/operation/refresh_view_timeout";

inline constexpr char KeyMerchant[] = "key_merchant";
inline constexpr char KeySearchTerm[] = "key_search_term";
inline constexpr char KeyTotal[] = "key_total_num_of_products";
inline constexpr char KeyNames[] = "key_product_names";
inline constexpr char KeySizes[] = "key_product_size_or_weights";
inline constexpr char KeyDiscounts[] = "key_product_discount_percents";
inline constexpr char KeyFormerPrices[] = "key_product_prices_before_discount";
inline constexpr char KeyPrices[] = "key_product_prices";
inline constexpr char KeyVariantRefs[] = "key_product_variant_refs";
inline constexpr char KeyImageNumber[] = "key_product_image_num";
inline constexpr char KeyImagePath[] = "key_product_image_path";

// What only the retailer's products have.
inline constexpr char KeyDiscountTypes[] = "key_product_discount_type";
inline constexpr char KeyDiscountTexts[] = "key_product_discount_txt";
inline constexpr char KeyIds[] = "key_product_ids";
inline constexpr char KeyImageType[] = "key_product_image_type";

// Whom search and show ask of the UI app: "merchant", as where it is missing, or "retailer".
inline constexpr char KeySource[] = "key_source";

// What the UI app puts into its replies to search and show: the place in the card that they speak of.
inline constexpr char KeyCardSequence[] = "key_card_sequence";
inline constexpr char KeyCardResults[] = "key_card_results";

// What say takes: a sentence, and for engineers a list of answers in place of the grammar's.
inline constexpr char KeyUtterance[] = "key_utterance";
inline constexpr char KeyNlu[] = "key_nlu";
// What the assistant puts into its reply, besides what it delivered under KeyNlu.
inline constexpr char KeyTurn[] = "key_turn";
inline constexpr char KeyUnderstood[] = "key_understood";
inline constexpr char Understood[] = "yes";
inline constexpr char NotUnderstood[] = "no";
inline constexpr char KeyReason[] = "key_reason";

}  // namespace Appliance
