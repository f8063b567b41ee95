# Fails unless objects have unwind data for each of their functions that uses the stack: without it exceptions cannot
# pass.
#   cmake -DOBJDUMP=<llvm-objdump> -DOBJECTS=<list> -DLEAST=<functions> -P unwind_data.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../packaging/support.cmake")

set(all 0)
foreach(object IN LISTS OBJECTS)
  # Functions that call, push or reserve. (GNU objdump confuses the names of functions in sections of their own.)
  execute_process(
    COMMAND "${OBJDUMP}" -d --no-show-raw-insn "${object}"
    COMMAND
      awk "/^[0-9a-f]+ <.*>:$/ {open = 1} open && /\\t(callq|pushq|subq\\t[$].*, %rsp)/ {open = 0; count++} END {print count + 0}"
    OUTPUT_VARIABLE functions OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  require_success("${OBJDUMP}" -h "${object}")
  string(REGEX MATCHALL "[.]pdata +[0-9a-f]+" sections "${output}")
  set(entries 0)
  foreach(section IN LISTS sections)
    string(REGEX REPLACE "^[.]pdata +" "0x" size "${section}")
    math(EXPR entries "${entries} + ${size} / 12")
  endforeach()
  if(NOT entries EQUAL functions)
    message(FATAL_ERROR "${object} has unwind data for ${entries} of ${functions} functions")
  endif()
  math(EXPR all "${all} + ${functions}")
endforeach()
if(all LESS LEAST)
  message(FATAL_ERROR "only ${all} functions")
endif()
message(STATUS "${all} functions have unwind data")
