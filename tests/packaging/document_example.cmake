# Extracts the C++ example from a document and compiles it as an old host would.
#   cmake -DDOCUMENT=... -DFILE=<where to put it> -DCOMPILE=<list> [-DMOST_LINES=...] -P document_example.cmake
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

extract_example("${DOCUMENT}" "${FILE}")
require_success(${COMPILE} "${FILE}")
if(MOST_LINES)
  file(READ "${FILE}" text)
  string(REGEX REPLACE "[^\n]" "" line_ends "${text}")
  string(LENGTH "${line_ends}" lines)
  if(lines GREATER MOST_LINES)
    message(FATAL_ERROR "${DOCUMENT}: the example has ${lines} lines, more than ${MOST_LINES}")
  endif()
endif()
