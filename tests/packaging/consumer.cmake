# Configures a small project that uses the library from scratch, and builds it.
#   cmake -DSOURCE=... -DBUILD=... -DOPTIONS=<list> -P consumer.cmake
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

require_success("${CMAKE_COMMAND}" --fresh -S "${SOURCE}" -B "${BUILD}" ${OPTIONS})
require_success("${CMAKE_COMMAND}" --build "${BUILD}" --parallel 2)
