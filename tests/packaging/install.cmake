# Installs a build tree into an empty folder and compares what lies there with what should.
#   cmake -DBUILD=... -DCONFIG=... -DPREFIX=... -DLIBRARY_DIR=... -DVERSION=... -P install.cmake
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

file(REMOVE_RECURSE "${PREFIX}")
require_success("${CMAKE_COMMAND}" --install "${BUILD}" --config "${CONFIG}" --prefix "${PREFIX}")

file(GLOB_RECURSE installed RELATIVE "${PREFIX}" "${PREFIX}/*")
string(REGEX MATCH "^[0-9]+" major "${VERSION}")
set(package "${LIBRARY_DIR}/cmake/fisheye_calibration")
string(TOLOWER "${CONFIG}" config)
set(expected
    include/fisheye_calibration.h
    include/fisheye_calibration.hpp
    include/fisheye_calibration_c.h
    "${LIBRARY_DIR}/libfisheye_calibration.so"
    "${LIBRARY_DIR}/libfisheye_calibration.so.${major}"
    "${LIBRARY_DIR}/libfisheye_calibration.so.${VERSION}"
    "${package}/fisheye_calibrationConfig.cmake"
    "${package}/fisheye_calibrationConfigVersion.cmake"
    "${package}/fisheye_calibrationTargets.cmake"
    "${package}/fisheye_calibrationTargets-${config}.cmake")
if(PROGRAM)
  list(APPEND expected bin/${PROGRAM})
endif()
require_same_set(installed "the installed tree" expected "the list of installed files")

# The package must work wherever it is moved to.
file(GLOB package_files "${PREFIX}/${package}/*.cmake")
foreach(package_file IN LISTS package_files)
  file(READ "${package_file}" text)
  foreach(path IN ITEMS "${BUILD}" "${PREFIX}")
    string(FIND "${text}" "${path}" position)
    if(NOT position EQUAL -1)
      message(FATAL_ERROR "${package_file} names ${path}")
    endif()
  endforeach()
endforeach()
if(PROGRAM)
  require_success("${PREFIX}/bin/${PROGRAM}" --version)
endif()
