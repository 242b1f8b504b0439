# CARVOY_PLATFORM=tizen: the appliance. The platform is its own, by the names that its modules have in pkg-config; of this
# repository only the service and its utilities are built.
pkg_check_modules(TIZEN REQUIRED IMPORTED_TARGET
  capi-appfw-app-control
  capi-appfw-service-application
  capi-web-url-download
  dlog
  ecore
  libtzplatform-config
  nuvex-da-db
  nuvex-da-parser
  vconf
  voice-control
)
add_library(platform INTERFACE)
target_link_libraries(platform INTERFACE PkgConfig::TIZEN Threads::Threads)

# Where a package that comes with the appliance's image lies, and where the image keeps the manifests.
if(CMAKE_INSTALL_PREFIX_INITIALIZED_TO_DEFAULT)
  set_property(CACHE CMAKE_INSTALL_PREFIX PROPERTY VALUE /usr/apps/org.tizen.carvoy-service)
endif()
set(CARVOY_MANIFEST_FOLDER /usr/share/packages CACHE PATH "Where the package's manifest is installed")

# appliance_app(<target> <app-id>): makes a program an app of the appliance, which knows it by the manifest. The one that
# is installed names the program where the package has it.
function(appliance_app target app_id)
  target_link_libraries(${target} PRIVATE platform)
  install(TARGETS ${target} RUNTIME DESTINATION bin)
  set(source ${PROJECT_SOURCE_DIR}/packaging/tizen-manifest.xml)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
  file(READ ${source} manifest)
  string(REGEX REPLACE " exec=\"[^\"]*\"" " exec=\"${CMAKE_INSTALL_PREFIX}/bin/${target}\"" manifest "${manifest}")
  file(CONFIGURE OUTPUT ${app_id}.xml CONTENT "${manifest}" @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${app_id}.xml DESTINATION ${CARVOY_MANIFEST_FOLDER})
endfunction()
