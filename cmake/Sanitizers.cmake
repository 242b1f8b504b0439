# CARVOY_SANITIZE: a -fsanitize= list ("address,undefined" or "thread"), empty for none. The fuzzers' build has clang's
# "fuzzer-no-link" in it as well, which is the coverage that steers them.
set(CARVOY_SANITIZE "" CACHE STRING "Sanitizers to build with")

if(CARVOY_SANITIZE)
  add_compile_options(-fsanitize=${CARVOY_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${CARVOY_SANITIZE})
endif()

# What every test of a sanitizer build has in its environment, for itself and the programs that it runs: the findings
# that are known, each with its reason.
if(CARVOY_SANITIZE MATCHES thread)
  set(CARVOY_TEST_ENVIRONMENT TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/tsan.supp)
else()
  set(CARVOY_TEST_ENVIRONMENT
    LSAN_OPTIONS=print_suppressions=0:suppressions=${PROJECT_SOURCE_DIR}/tests/support/lsan.supp)
endif()
