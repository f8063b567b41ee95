# Runs clang where it is installed.
#   cmake -DCLANG=... -DARGUMENTS=<list> -P compile_with_clang.cmake
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

if(NOT CLANG)
  message("Skipped: clang is not installed")
  return()
endif()
require_success("${CLANG}" ${ARGUMENTS})
