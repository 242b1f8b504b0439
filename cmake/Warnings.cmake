option(CARVOY_WERROR "Treat warnings as errors" ON)

add_compile_options(-Wall -Wextra -Wshadow -Wformat=2)
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
if(CARVOY_WERROR)
  add_compile_options(-Werror)
endif()
