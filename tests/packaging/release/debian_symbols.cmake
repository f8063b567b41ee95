# Compares the library's dynamic symbols with the list of the Debian package.
#   cmake -DGENSYMBOLS=... -DLIBRARY=... -DSYMBOLS=... -DVERSION=... -DWORK=... [-DCHANGE=<name to remove, or + line to add>]
#         -P debian_symbols.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../support.cmake")
if(NOT GENSYMBOLS)
  message(STATUS "Skipped: dpkg-gensymbols is not installed")
  return()
endif()

file(READ "${SYMBOLS}" symbols)
if(CHANGE MATCHES "^\\+(.*)$")
  string(APPEND symbols "${CMAKE_MATCH_1}\n")
elseif(CHANGE)
  string(REGEX REPLACE "\n ${CHANGE}@[^\n]*" "" symbols "${symbols}")
endif()
file(WRITE "${WORK}/symbols" "${symbols}")
execute_process(
  COMMAND "${GENSYMBOLS}" -plibfisheye-calibration0 "-I${WORK}/symbols" "-e${LIBRARY}" "-v${VERSION}" -c4 -O/dev/null
  WORKING_DIRECTORY "${CMAKE_CURRENT_LIST_DIR}/../../.." # of debian/control
  RESULT_VARIABLE code OUTPUT_VARIABLE text ERROR_VARIABLE text)
message("${text}")
if(code EQUAL 0)
  message("the list is up to date")
endif()
