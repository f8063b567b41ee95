# Compares the functions that a public header declares with the list of signatures and, where given,
# with the export list.
#   cmake -DHEADER=... -DSIGNATURES=... [-DEXPORTS=...] -P header_declarations.cmake
#   cmake -DC_HEADER=... -DEXPORTS=... -P header_declarations.cmake           the C interface
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

if(C_HEADER)
  file(READ "${C_HEADER}" text)
  string(REGEX MATCHALL "\nFCAL_API[^(]+\\(" declarations "${text}")
  list(TRANSFORM declarations REPLACE "^.*[ \n]([A-Za-z_]+)\\($" "\\1" OUTPUT_VARIABLE declared)
  read_list("${EXPORTS}" exports)
  list(FILTER exports INCLUDE REGEX "^fcal_")
  require_same_set(declared "the header" exports "the export list")
  return()
endif()

read_list("${SIGNATURES}" signatures)
list(TRANSFORM signatures REPLACE "\\(.*" "")
file(READ "${HEADER}" text)
string(REGEX MATCHALL "\nFISHEYE_CALIBRATION_API[^(]+\\(" declarations "${text}")
list(TRANSFORM declarations REPLACE "^.*[ \n]([A-Za-z_]+)\\($" "\\1" OUTPUT_VARIABLE declared)
require_same_set(declared "the header" signatures "the list of signatures")
if(EXPORTS)
  read_list("${EXPORTS}" exports)
  list(FILTER exports EXCLUDE REGEX "^fcal_")
  require_same_set(declared "the header" exports "the export list")
endif()
