# Configures, builds and runs a host that finds the installed library with CMake; or, with SIGN, expects find_package to
# refuse with a message that matches it.
#   cmake -DSOURCE=... -DBUILD=... -DOPTIONS=<list> -DSIGN=... -P host_project.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../support.cmake")

set(configure "${CMAKE_COMMAND}" --fresh -S "${SOURCE}" -B "${BUILD}" ${OPTIONS})
if(SIGN)
  execute_process(COMMAND ${configure} RESULT_VARIABLE code OUTPUT_VARIABLE text ERROR_VARIABLE text)
  if(code EQUAL 0 OR NOT text MATCHES "${SIGN}")
    message(FATAL_ERROR "find_package did not refuse with \"${SIGN}\" but ended with ${code}:\n${text}")
  endif()
  return()
endif()
require_success(${configure})
require_success("${CMAKE_COMMAND}" --build "${BUILD}")
require_success("${BUILD}/host")
