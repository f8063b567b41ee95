# Makes the archive of a build tree, unpacks it into an empty folder and looks at what lies there.
#   cmake -DBUILD=... -DCPACK=... -DWORK=... -DPACKAGE=... -P archive.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../support.cmake")

file(REMOVE_RECURSE "${WORK}/archive" "${WORK}/unpacked")
file(MAKE_DIRECTORY "${WORK}/unpacked")
require_success("${CPACK}" --config "${BUILD}/CPackConfig.cmake" -B "${WORK}/archive")
file(ARCHIVE_EXTRACT INPUT "${WORK}/archive/${PACKAGE}.zip" DESTINATION "${WORK}/unpacked")

set(root "${WORK}/unpacked/${PACKAGE}")
file(GLOB_RECURSE found RELATIVE "${root}" "${root}/*")
set(cmake_folder lib/cmake/fisheye_calibration)
set(expected
    LICENSE
    README.md
    bin/fisheye-calibration.exe
    bin/fisheye_calibration.dll
    include/fisheye_calibration.h
    lib/libfisheye_calibration.dll.a
    ${cmake_folder}/fisheye_calibrationConfig.cmake
    ${cmake_folder}/fisheye_calibrationConfigVersion.cmake
    ${cmake_folder}/fisheye_calibrationTargets-release.cmake
    ${cmake_folder}/fisheye_calibrationTargets.cmake
    licences/cli11/copyright
    licences/gcc-runtime/copyright
    licences/highway/LICENSE
    licences/libjpeg/LICENSE.md
    licences/libjpeg/README.ijg
    licences/libpng/LICENSE
    licences/mingw-w64-runtime/copyright
    licences/opencv/COPYRIGHT
    licences/opencv/LICENSE
    licences/opencv/SoftFloat-COPYING.txt
    licences/zlib/copyright
    windows.md)
require_same_set(found "the archive" expected "the list of what it should hold")

foreach(file IN LISTS found)
  file(SIZE "${root}/${file}" size)
  if(size EQUAL 0)
    message(FATAL_ERROR "${file} is empty")
  endif()
endforeach()
