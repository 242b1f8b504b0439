# What differs from site to site: fixed at build time, kept in the CMake cache,
# compiled into the service through the generated header SiteValues.h.
set(CARVOY_PARTNER_APP_ID "org.example.partnerpay" CACHE STRING "Package id of the partner payment app")
set(CARVOY_MERCHANT_BRIDGE_HOST "merchant-bridge.example" CACHE STRING "Host of the merchant-bridge product search")
set(CARVOY_RETAILER_API_HOST "retailer-api.example" CACHE STRING "Host of the retailer's product search")
set(CARVOY_RETAILER_ICON_HOST "retailer-icons.example" CACHE STRING "Host of the retailer's badge icons")
set(CARVOY_RETAILER_LOGIN_FILE "/home/owner/media/Documents/emartLoginStatus.txt" CACHE STRING
  "File whose first line says whether the user is logged in at the retailer")

configure_file(${CMAKE_CURRENT_LIST_DIR}/SiteValues.h.in ${CMAKE_BINARY_DIR}/generated/SiteValues.h @ONLY)

add_library(site-values INTERFACE)
target_include_directories(site-values INTERFACE ${CMAKE_BINARY_DIR}/generated)
