# Fails unless two hosts wrote the same, and that much of it.
#   cmake -DFIRST=<file> -DSECOND=<file> -P equal_results.cmake
set(least 10000000) # bytes: the pictures alone are more

file(SIZE "${FIRST}" size)
if(size LESS least)
  message(FATAL_ERROR "${FIRST} has only ${size} bytes")
endif()
execute_process(COMMAND cmp "${FIRST}" "${SECOND}" RESULT_VARIABLE code OUTPUT_VARIABLE text ERROR_VARIABLE text)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "the results differ: ${text}")
endif()
message(STATUS "${size} equal bytes")
