# Every file that must repeat the project's version has it.
#   cmake -DSOURCE=... -DVERSION=... -P versions.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../support.cmake")

# require_version(<file> <expression whose group 1 is the version>)
function(require_version file expression)
  file(READ "${SOURCE}/${file}" text)
  if(NOT text MATCHES "${expression}")
    message(FATAL_ERROR "${file} has no version")
  elseif(NOT CMAKE_MATCH_1 STREQUAL VERSION)
    message(FATAL_ERROR "${file} has version ${CMAKE_MATCH_1}, not ${VERSION}")
  endif()
endfunction()

require_version(debian/changelog "^fisheye-calibration \\(([^)]*)\\) ")
require_version(vcpkg.json "\"version\": \"([^\"]*)\",\n  \"description\"")
require_version(packaging/vcpkg/fisheye-calibration/vcpkg.json "\"version\": \"([^\"]*)\"")
# The library's names are of this major version.
string(REGEX MATCH "^[0-9]+" major "${VERSION}")
require_version(CMakeLists.txt "\n  VERSION ([0-9.]+)\n")
if(NOT EXISTS "${SOURCE}/debian/libfisheye-calibration${major}.symbols")
  message(FATAL_ERROR "debian/ has no package libfisheye-calibration${major}")
endif()
