# Parses all sources of the Windows builds by Visual C++'s rules, as far as clang knows them: widths of types,
# names, extensions of other compilers. Neither Visual C++ nor its headers are available here, so the standard
# library and the system's headers are those of MinGW-w64.
#   cmake -DCLANG=... -DFOLDER=<src or program> -DDEFINITIONS=<list> -DINCLUDES=<list>
#         -DLIBRARIES=<list of folder=where it is> -DWORK=... -P visual_cxx_rules.cmake
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

file(GLOB standard_library "/usr/lib/gcc/x86_64-w64-mingw32/*-posix/include/c++")
set(system_headers /usr/share/mingw-w64/include)
if(NOT CLANG OR NOT standard_library OR NOT EXISTS "${system_headers}/windows.h")
  message("Skipped: clang or MinGW-w64 is not installed")
  return()
endif()
list(GET standard_library -1 standard_library)
execute_process(COMMAND "${CLANG}" -print-resource-dir OUTPUT_VARIABLE compiler_headers
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)

# Only the libraries' own folders: the folder that contains them also holds the headers of this system.
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
foreach(library IN LISTS LIBRARIES)
  string(REGEX MATCH "^([^=]+)=(.+)$" match "${library}")
  file(CREATE_LINK "${CMAKE_MATCH_2}" "${WORK}/${CMAKE_MATCH_1}" SYMBOLIC)
endforeach()

set(command
    "${CLANG}" --target=x86_64-pc-windows-msvc -std=c++20 -Werror -Wall -Wextra -Wpedantic
    -Wconversion -Wshadow -Wgnu -Wvla
    # Fields that a designated initialiser leaves out have their default; clang 14 has no such warning.
    -Wno-unknown-warning-option -Wno-missing-designated-field-initializers
    # What the headers of MinGW-w64 expect to be told by the compiler.
    -fmsc-version=0 -fgnuc-version=12.2.0 -D__MINGW32__ -D__MINGW64__ -D__MSVCRT__ -D__STRICT_ANSI__
    -D__declspec=__declspec -nostdinc)
foreach(headers IN ITEMS "${standard_library}" "${standard_library}/x86_64-w64-mingw32"
                         "${compiler_headers}/include" "${system_headers}" "${WORK}")
  list(APPEND command -isystem "${headers}")
endforeach()
list(TRANSFORM INCLUDES PREPEND "-I")
list(APPEND command ${INCLUDES} -DNOMINMAX)

file(GLOB_RECURSE sources "${FOLDER}/*.cpp")
list(FILTER sources EXCLUDE REGEX "_portable\\.cpp$|/(profile_text|whole_file)\\.cpp$")
list(FILTER sources EXCLUDE REGEX "/visual_cxx/(front|raise)\\.cpp$") # have a standard library of their own
if(NOT sources)
  message(FATAL_ERROR "${FOLDER} holds no sources")
endif()
list(TRANSFORM DEFINITIONS PREPEND "-D")

# What most sources include is parsed once, which saves most of the time.
file(WRITE "${WORK}/common.h" "")
foreach(header IN ITEMS algorithm cmath filesystem functional memory optional ostream string vector
                        ${COMMON} opencv2/core.hpp)
  file(APPEND "${WORK}/common.h" "#include <${header}>\n")
endforeach()
require_success(${command} ${DEFINITIONS} -Wno-pragma-once-outside-header -x c++-header "${WORK}/common.h"
                -o "${WORK}/common.pch")
require_success(${command} ${DEFINITIONS} -fsyntax-only -include-pch "${WORK}/common.pch" ${sources})

# The message box once more, as it is with the framework.
set(message_box "${FOLDER}/platform/message_box_windows.cpp")
if(EXISTS "${message_box}")
  require_success(${command} -fsyntax-only -DFISHEYE_CALIBRATION_MFC=1 -DUNICODE -D_UNICODE -isystem
                  "${CMAKE_CURRENT_LIST_DIR}/framework_headers" "${message_box}")
endif()

# Features of clang and MinGW-w64 that Visual C++ lacks.
file(GLOB_RECURSE headers "${FOLDER}/*.h")
foreach(file IN LISTS sources headers)
  if(file MATCHES "/platform/display\\.cpp$") # has a part for Linux
    continue()
  endif()
  file(STRINGS "${file}" lines
       REGEX "__attribute__|__int128|__restrict__|ssize_t|<(unistd|dirent|strings|dlfcn|getopt)\\.h>|<sys/")
  if(lines)
    message(FATAL_ERROR "${file}: ${lines}")
  endif()
endforeach()
