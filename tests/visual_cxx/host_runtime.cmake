# Fails unless a DLL takes memory and random numbers from the C runtime of Visual C++'s hosts.
#   cmake -DOBJDUMP=... -DDLL=... -P host_runtime.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../packaging/support.cmake")

require_success("${OBJDUMP}" -p "${DLL}")
foreach(need IN ITEMS "heap malloc" "heap free" "utility rand")
  string(REGEX MATCH "^([a-z]+) ([a-z]+)$" match "${need}")
  set(library "${CMAKE_MATCH_1}")
  set(function "${CMAKE_MATCH_2}")
  if(NOT output MATCHES "DLL Name: api-ms-win-crt-${library}-l1-1-0[.]dll\n([^\n]+\n)+")
    message(FATAL_ERROR "${DLL} takes nothing of ${library} from the hosts' runtime")
  endif()
  if(NOT CMAKE_MATCH_0 MATCHES "[ \t]${function}\n")
    message(FATAL_ERROR "${DLL} does not take ${function} from the hosts' runtime")
  endif()
endforeach()
