# CARVOY_PLATFORM: what is below the service. Either way there are afterwards the target `platform`, which has the
# platform's headers and libraries, and the function appliance_app().
set(CARVOY_PLATFORM host CACHE STRING "Platform below the service: host (a PC) or tizen (the appliance)")
set_property(CACHE CARVOY_PLATFORM PROPERTY STRINGS host tizen)

if(CARVOY_PLATFORM STREQUAL host)
  include(${CMAKE_CURRENT_LIST_DIR}/HostPlatform.cmake)
elseif(CARVOY_PLATFORM STREQUAL tizen)
  include(${CMAKE_CURRENT_LIST_DIR}/TizenPlatform.cmake)
else()
  message(FATAL_ERROR "CARVOY_PLATFORM is \"${CARVOY_PLATFORM}\"; there are host and tizen")
endif()
