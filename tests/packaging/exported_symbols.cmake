# Compares all symbols that a shared library shows, weak ones and data included, with the functions
# of an export list and their signatures.
#   cmake -DNM=... -DLIBRARY=... -DEXPORTS=... -DSIGNATURES=... -P exported_symbols.cmake
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

read_list("${EXPORTS}" names)
read_list("${SIGNATURES}" signatures)
set(expected "")
foreach(name IN LISTS names)
  if(name MATCHES "^fcal_") # a C function, whose symbol is its name
    list(APPEND expected "${name}")
    continue()
  endif()
  set(found ${signatures})
  list(FILTER found INCLUDE REGEX "^${name}\\(")
  list(LENGTH found count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "${name} of ${EXPORTS} has ${count} signatures in ${SIGNATURES}")
  endif()
  list(APPEND expected "${found}")
endforeach()

require_success("${NM}" -D --defined-only -C "${LIBRARY}")
string(REGEX REPLACE "\n$" "" output "${output}")
string(REPLACE "\n" ";" lines "${output}")
set(shown "")
foreach(line IN LISTS lines)
  # The address, a letter for the kind and the name; functions of our own are T.
  if(NOT line MATCHES "^[0-9a-f]+ ([A-Za-z]) (.+)$")
    message(FATAL_ERROR "cannot read what nm prints: ${line}")
  endif()
  if(CMAKE_MATCH_1 STREQUAL "T")
    list(APPEND shown "${CMAKE_MATCH_2}")
  else()
    list(APPEND shown "${CMAKE_MATCH_2} [${CMAKE_MATCH_1}]")
  endif()
endforeach()
require_same_set(shown "the library" expected "the export list")
