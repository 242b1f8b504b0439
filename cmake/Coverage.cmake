# CARVOY_COVERAGE: counts which lines and branches of the service and its utilities run. Only they are measured; what
# surrounds them is built as always.
option(CARVOY_COVERAGE "Count what runs of service/ and common/" OFF)

# Threads count, too. Without optimisation, so that every line is one.
function(count_runs)
  if(CARVOY_COVERAGE)
    foreach(target ${ARGN})
      target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic -O0)
      target_link_options(${target} PUBLIC --coverage)
    endforeach()
  endif()
endfunction()
