# What the service and its utilities call besides the platform, wherever they run.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)

pkg_check_modules(SQLITE REQUIRED IMPORTED_TARGET sqlite3)
pkg_check_modules(CURL REQUIRED IMPORTED_TARGET libcurl)
pkg_check_modules(JSON_GLIB REQUIRED IMPORTED_TARGET json-glib-1.0 gobject-2.0 glib-2.0)
