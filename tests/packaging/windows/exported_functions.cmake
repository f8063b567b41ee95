# Compares the export table of a DLL with the functions of an export list and their signatures.
#   cmake -DOBJDUMP=... -DDEMANGLER=... -DDLL=... -DEXPORTS=... -DSIGNATURES=...
#         [-DDECORATED=<list of names for Visual C++>] -P exported_functions.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../support.cmake")

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
  list(APPEND expected "${found}")
endforeach()

if(DECORATED)
  read_list("${DECORATED}" names)
  list(APPEND expected ${names})
endif()

require_success("${OBJDUMP}" -p "${DLL}")
if(NOT output MATCHES "Ordinal/Name Pointer\\] Table\n(([ \t]*\\[ *[0-9]+\\][^\n]*\n)+)")
  message(FATAL_ERROR "${DLL} has no export table")
endif()
string(REGEX REPLACE "\n$" "" lines "${CMAKE_MATCH_1}")
string(REPLACE "\n" ";" lines "${lines}")
set(shown "")
foreach(line IN LISTS lines)
  string(REGEX REPLACE "^[ \t]*\\[ *[0-9]+\\][ \t]*" "" symbol "${line}")
  require_success("${DEMANGLER}" "${symbol}")
  string(STRIP "${output}" signature)
  # The list has no `long`, which is ImageLong here; Visual C++'s names, compared elsewhere, distinguish both.
  string(REGEX REPLACE "([( ])long([,)&])" "\\1int\\2" signature "${signature}")
  list(APPEND shown "${signature}")
endforeach()
require_same_set(shown "the DLL" expected "the export list")
