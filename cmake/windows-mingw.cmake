# Cross-building for 64-bit Windows with Debian's MinGW-w64. scripts/prepare-windows provides the libraries.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# The environment variable passes the result to the small projects with which CMake checks the compiler.
if(NOT DEFINED ENV{FISHEYE_CALIBRATION_WINDOWS_PREFIXES})
  execute_process(
    COMMAND "${CMAKE_CURRENT_LIST_DIR}/../scripts/prepare-windows" --prefixes
    OUTPUT_VARIABLE prefixes OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(ENV{FISHEYE_CALIBRATION_WINDOWS_PREFIXES} "${prefixes}")
endif()
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 $ENV{FISHEYE_CALIBRATION_WINDOWS_PREFIXES})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The cache of a build folder holds where each library was found; forget that if the library has been rebuilt
# elsewhere.
foreach(package IN ITEMS OpenCV hwy GTest CLI11 nlohmann_json)
  set(is_current FALSE)
  foreach(prefix IN LISTS CMAKE_FIND_ROOT_PATH)
    cmake_path(IS_PREFIX prefix "${${package}_DIR}" holds_it)
    if(holds_it)
      set(is_current TRUE)
    endif()
  endforeach()
  if(NOT is_current)
    unset(${package}_DIR CACHE)
  endif()
endforeach()

foreach(prefix IN LISTS CMAKE_FIND_ROOT_PATH)
  cmake_path(IS_PREFIX prefix "${FISHEYE_CALIBRATION_HTTPLIB_HEADERS}" holds_it)
  if(holds_it)
    break()
  endif()
endforeach()
if(NOT holds_it)
  unset(FISHEYE_CALIBRATION_HTTPLIB_HEADERS CACHE)
endif()

# Messages of the libraries' inline functions contain header paths: make them the same on every machine.
list(GET CMAKE_FIND_ROOT_PATH 1 prefix)
get_filename_component(folder "${prefix}" DIRECTORY)
set(CMAKE_CXX_FLAGS_INIT "-ffile-prefix-map=${folder}/=")

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run" "${CMAKE_BINARY_DIR}/wine")
