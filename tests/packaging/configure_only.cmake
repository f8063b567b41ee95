# Configures a project from scratch, without building it.
#   cmake -DSOURCE=... -DBUILD=... -DOPTIONS=<list> -P configure_only.cmake
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

file(REMOVE_RECURSE "${BUILD}")
require_success("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${BUILD}" ${OPTIONS})
