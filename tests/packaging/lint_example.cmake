# Runs scripts/lint on an example and prints its exit code and all that it says.
#   cmake -DRUN_CLANG_TIDY=... -DROOT=<source tree> -DEXAMPLE=<file in it> -DWORK=... -P lint_example.cmake
if(NOT RUN_CLANG_TIDY)
  message("Skipped: clang-tidy is not installed")
  return()
endif()
set(commands "[]")
if(EXISTS "${ROOT}/${EXAMPLE}")
  set(command "c++ -std=c++20 -c ${ROOT}/${EXAMPLE}")
  set(commands "[\n{\n  \"directory\": \"${ROOT}\",\n  \"command\": \"${command}\",\n  \"file\": \"${ROOT}/${EXAMPLE}\"\n}\n]")
endif()
file(WRITE "${WORK}/compile_commands.json" "${commands}\n")
execute_process(COMMAND "${ROOT}/scripts/lint" "${WORK}" "${EXAMPLE}" RESULT_VARIABLE code OUTPUT_VARIABLE text
                ERROR_VARIABLE text)
execute_process(COMMAND "${CMAKE_COMMAND}" -E echo "code ${code}: ${text}")
