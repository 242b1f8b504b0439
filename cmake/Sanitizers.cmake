# CARVOY_SANITIZE: a -fsanitize= list ("address,undefined" or "thread"), empty for none. The fuzzers' build has clang's
# "fuzzer-no-link" in it as well, which is the coverage that steers them.
set(CARVOY_SANITIZE "" CACHE STRING "Sanitizers to build with")

if(CARVOY_SANITIZE)
  add_compile_options(-fsanitize=${CARVOY_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${CARVOY_SANITIZE})
endif()
