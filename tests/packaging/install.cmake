# Installs a build tree into an empty folder and compares what lies there with what should.
#   cmake -DBUILD=... -DCONFIG=... -DPREFIX=... -DLIBRARY_DIR=... -DVERSION=... -DPROGRAM=... -DSOURCE=...
#         -DDOCUMENT_DIR=... -DSTATIC=<ON, OFF> -P install.cmake
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
    "${package}/fisheye_calibrationTargets-${config}.cmake"
    "${LIBRARY_DIR}/pkgconfig/fisheye_calibration.pc")
if(STATIC)
  list(APPEND expected "${LIBRARY_DIR}/libfisheye_calibration.a" "${package}/fisheye_calibrationStaticTargets.cmake"
       "${package}/fisheye_calibrationStaticTargets-${config}.cmake")
endif()
file(GLOB_RECURSE pages RELATIVE "${SOURCE}" "${SOURCE}/docs/*")
list(APPEND pages CHANGELOG.md CONTRIBUTING.md LICENSE README.md examples/host_in_c.c examples/host_with_wrapper.cpp
     examples/stitching_in_c.c examples/csharp/FisheyeCalibration.cs examples/csharp/Host.cs
     examples/csharp/Stitching.cs)
list(TRANSFORM pages PREPEND "${DOCUMENT_DIR}/")
list(APPEND expected ${pages})
if(PROGRAM)
  list(APPEND expected bin/${PROGRAM})
endif()
require_same_set(installed "the installed tree" expected "the list of installed files")

# The package must work wherever it is moved to.
file(GLOB package_files "${PREFIX}/${package}/*.cmake" "${PREFIX}/${LIBRARY_DIR}/pkgconfig/*.pc")
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

# Each component holds its files and no others.
function(require_component component)
  file(REMOVE_RECURSE "${PREFIX}-component")
  require_success("${CMAKE_COMMAND}" --install "${BUILD}" --config "${CONFIG}" --prefix "${PREFIX}-component"
                  --component "${component}")
  file(GLOB_RECURSE found RELATIVE "${PREFIX}-component" "${PREFIX}-component/*")
  set(listed ${installed})
  list(FILTER listed ${ARGN})
  require_same_set(found "the component ${component}" listed "the list of its files")
endfunction()
require_component(runtime INCLUDE REGEX "\\.so\\.")
require_component(program INCLUDE REGEX "^bin/")
require_component(documentation INCLUDE REGEX "^${DOCUMENT_DIR}/")
require_component(development EXCLUDE REGEX "\\.so\\.|^bin/|^${DOCUMENT_DIR}/")
