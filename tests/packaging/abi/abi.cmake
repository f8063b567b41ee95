# Compares the binary interface of fisheye_calibration_c.h with the promised one, as abidiff of libabigail sees it:
# the functions' types, the records' layouts and the constants' values. New functions and constants pass. A new field
# at the end of a record that may grow does not: renew the dump then, after a look at what abidiff prints.
#   cmake -DABIDIFF=... -DCC=... -DHEADER=... -DDUMP=<promised interface> -DWORK=... -P abi.cmake
#   cmake ... -DCHANGE=<name in changes.cmake> -P abi.cmake      of a changed header
#   cmake ... -DABIDW=... -DRENEW=ON -P abi.cmake           writes the dump, with what has been added
include("${CMAKE_CURRENT_LIST_DIR}/../support.cmake")

if(NOT ABIDIFF OR NOT CC)
  message("Skipped: abidiff or the compiler is not installed")
  return()
endif()

file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
file(READ "${HEADER}" text)
if(CHANGE)
  include("${CMAKE_CURRENT_LIST_DIR}/changes.cmake")
  string(FIND "${text}" "${TEXT}" position)
  if(position EQUAL -1)
    message(FATAL_ERROR "${HEADER} does not contain: ${TEXT}")
  endif()
  string(REPLACE "${TEXT}" "${OTHER}" text "${text}")
endif()
file(WRITE "${WORK}/interface.h" "${text}")

# A library without code, whatever compiler built the real one: one pointer per function, and one array per
# constant, whose length is the constant's value.
string(REGEX MATCHALL "\nFCAL_API[^(]+\\(" functions "${text}")
list(TRANSFORM functions REPLACE "^.*[ \n*]([A-Za-z_]+)\\($" "\\1")
string(REGEX MATCHALL "\n  FCAL_[A-Z_]+ = " constants "${text}")
list(TRANSFORM constants REPLACE "^\n  (FCAL_[A-Z_]+) = $" "\\1")
foreach(kind IN ITEMS functions constants)
  list(LENGTH ${kind} count)
  if(count LESS 10)
    message(FATAL_ERROR "only ${count} ${kind} in ${HEADER}")
  endif()
endforeach()
set(code "#include \"interface.h\"\n")
foreach(name IN LISTS functions)
  string(APPEND code "__typeof__(${name})* pointer_to_${name} = 0;\n")
endforeach()
foreach(name IN LISTS constants)
  string(APPEND code "char as_long_as_${name}[${name} + 1] = {0};\n")
endforeach()
file(WRITE "${WORK}/interface.c" "${code}")
require_success("${CC}" -std=gnu99 -gdwarf-4 -O0 -fPIC -shared -nostdlib -o "${WORK}/interface.so"
                "${WORK}/interface.c")

if(RENEW)
  require_success("${ABIDW}" --no-architecture --no-corpus-path --no-comp-dir-path --no-show-locs --out-file "${DUMP}"
                  "${WORK}/interface.so")
  return()
endif()
execute_process(
  COMMAND "${ABIDIFF}" --no-added-syms --no-architecture "${DUMP}" "${WORK}/interface.so"
  RESULT_VARIABLE code OUTPUT_VARIABLE report ERROR_VARIABLE report)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "The C interface has changed: abidiff ended with ${code}:\n${report}")
endif()
message(STATUS "The C interface is the promised one")
