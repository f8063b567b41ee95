# Configures and builds a small project that uses the library, from nothing.
#   cmake -DSOURCE=... -DBUILD=... -DOPTIONS=<list> -P consumer.cmake
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

file(REMOVE_RECURSE "${BUILD}")
require_success("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${BUILD}" ${OPTIONS})
require_success("${CMAKE_COMMAND}" --build "${BUILD}" --parallel 2)
