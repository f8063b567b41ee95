# Compiles a file with Visual C++'s rules for 64-bit Windows and compares the names under which it
# refers to the library's functions with a list. Needs clang, which knows those rules everywhere.
#   cmake -DCLANG=... -DSOURCE=... -DINCLUDE=... -DNAMES=... -P decorated_names.cmake
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

if(NOT CLANG)
  message("Skipped: clang is not installed")
  return()
endif()
execute_process(
  COMMAND "${CLANG}" --target=x86_64-pc-windows-msvc -std=c++14 -nostdinc -isystem
          "${CMAKE_CURRENT_LIST_DIR}/msvc_headers" "-I${INCLUDE}" -S -o - "${SOURCE}"
  OUTPUT_VARIABLE assembly ERROR_VARIABLE errors RESULT_VARIABLE code)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "clang: ${errors}")
endif()
read_list("${NAMES}" expected)
# Functions of a dynamic library are referred to through a table, under __imp_<name>.
string(REGEX MATCHALL "__imp_\\?[A-Za-z0-9_@?$]+" found "${assembly}")
list(TRANSFORM found REPLACE "^__imp_" "")
list(REMOVE_DUPLICATES found)
require_same_set(found "the compiled file" expected "the list of decorated names")
