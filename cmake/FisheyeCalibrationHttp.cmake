# Defines the target fisheye_calibration_httplib: the library cpp-httplib for HTTP servers and clients.
#   Debian compiles it; pkg-config says with which settings the header has to be read.
#   vcpkg and Conan have a package file for CMake.
#   For the cross-build, scripts/prepare-windows provides the header alone, without encryption and compression.
if(TARGET fisheye_calibration_httplib)
  return()
endif()
add_library(fisheye_calibration_httplib INTERFACE)

find_package(Threads REQUIRED)
find_package(httplib CONFIG QUIET)
if(TARGET httplib::httplib)
  target_link_libraries(fisheye_calibration_httplib INTERFACE httplib::httplib)
elseif(WIN32)
  find_path(FISHEYE_CALIBRATION_HTTPLIB_HEADERS httplib.h REQUIRED)
  mark_as_advanced(FISHEYE_CALIBRATION_HTTPLIB_HEADERS)
  target_include_directories(fisheye_calibration_httplib SYSTEM
                             INTERFACE "${FISHEYE_CALIBRATION_HTTPLIB_HEADERS}")
  target_link_libraries(fisheye_calibration_httplib INTERFACE ws2_32)
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(FISHEYE_CALIBRATION_HTTPLIB REQUIRED IMPORTED_TARGET GLOBAL cpp-httplib>=0.11)
  target_link_libraries(fisheye_calibration_httplib INTERFACE PkgConfig::FISHEYE_CALIBRATION_HTTPLIB)
  if(FISHEYE_CALIBRATION_HTTPLIB_VERSION VERSION_GREATER_EQUAL 0.12)
    find_package(OpenSSL REQUIRED COMPONENTS Crypto) # of which newer headers call a function
    target_link_libraries(fisheye_calibration_httplib INTERFACE OpenSSL::Crypto)
  endif()
endif()
target_link_libraries(fisheye_calibration_httplib INTERFACE Threads::Threads)
