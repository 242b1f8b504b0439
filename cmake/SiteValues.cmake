# What differs from site to site: fixed at build time, kept in the CMake cache,
# compiled into the service through the generated header SiteValues.h.
set(CARVOY_PARTNER_APP_ID "org.example.partnerpay" CACHE STRING "Package id of the partner payment app")
set(CARVOY_MERCHANT_BRIDGE_HOST "merchant-bridge.example" CACHE STRING "Host of the merchant-bridge product search")

configure_file(${CMAKE_CURRENT_LIST_DIR}/SiteValues.h.in ${CMAKE_BINARY_DIR}/generated/SiteValues.h @ONLY)

add_library(site-values INTERFACE)
target_include_directories(site-values INTERFACE ${CMAKE_BINARY_DIR}/generated)
