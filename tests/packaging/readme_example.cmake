# Takes the C++ example out of the readme and compiles it as an old host would.
#   cmake -DREADME=... -DFILE=<where to put it> -DCOMPILE=<list> -P readme_example.cmake
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

file(READ "${README}" text)
if(NOT text MATCHES "\n```cpp\n([^`]+)```\n")
  message(FATAL_ERROR "${README} holds no C++ example")
endif()
file(WRITE "${FILE}" "${CMAKE_MATCH_1}")
require_success(${COMPILE} "${FILE}")
