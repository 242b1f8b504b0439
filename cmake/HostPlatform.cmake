# CARVOY_PLATFORM=host: a PC, with the platform of this repository and what surrounds the service there. Every package is
# Debian's; the names of the packages to install stand in ./dev.
pkg_check_modules(ECORE REQUIRED IMPORTED_TARGET ecore)
pkg_check_modules(SDBUS REQUIRED IMPORTED_TARGET sdbus-c++)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
pkg_check_modules(SMARTCOLS REQUIRED IMPORTED_TARGET smartcols)
find_package(OpenSSL REQUIRED)
pkg_check_modules(HTTPLIB REQUIRED IMPORTED_TARGET cpp-httplib)
pkg_check_modules(NGHTTP2 REQUIRED IMPORTED_TARGET libnghttp2)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)

add_subdirectory(platform)
add_library(platform ALIAS host-platform)
