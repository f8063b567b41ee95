# Makes the archive of a build tree, unpacks it into an empty folder and looks at what lies there.
#   cmake -DBUILD=... -DCPACK=... -DWORK=... -DPACKAGE=... -DSOURCE=... -DOBJDUMP=...
#         -DIMAGE_LIBRARY_VERSION=... -DVISUAL_CXX=<ON, OFF> -P archive.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../support.cmake")

file(REMOVE_RECURSE "${WORK}/archive" "${WORK}/unpacked")
file(MAKE_DIRECTORY "${WORK}/unpacked")
require_success("${CPACK}" --config "${BUILD}/CPackConfig.cmake" -B "${WORK}/archive")
file(ARCHIVE_EXTRACT INPUT "${WORK}/archive/${PACKAGE}.zip" DESTINATION "${WORK}/unpacked")

set(root "${WORK}/unpacked/${PACKAGE}")
file(GLOB_RECURSE found RELATIVE "${root}" "${root}/*")
set(cmake_folder lib/cmake/fisheye_calibration)
set(expected
    CHANGELOG.md
    CONTRIBUTING.md
    LICENSE
    README.md
    bin/fisheye-calibration.exe
    bin/fisheye_calibration.dll
    examples/csharp/FisheyeCalibration.cs
    examples/csharp/Host.cs
    examples/csharp/Stitching.cs
    examples/host_in_c.c
    examples/host_with_wrapper.cpp
    examples/stitching_in_c.c
    include/fisheye_calibration.h
    include/fisheye_calibration.hpp
    include/fisheye_calibration_c.h
    lib/libfisheye_calibration.dll.a
    lib/pkgconfig/fisheye_calibration.pc
    ${cmake_folder}/fisheye_calibrationConfig.cmake
    ${cmake_folder}/fisheye_calibrationConfigVersion.cmake
    ${cmake_folder}/fisheye_calibrationTargets-release.cmake
    ${cmake_folder}/fisheye_calibrationTargets.cmake
    licences/cli11/copyright
    licences/gcc-runtime/copyright
    licences/highway/LICENSE
    licences/httplib/LICENSE
    licences/json/copyright
    licences/libjpeg/LICENSE.md
    licences/libjpeg/README.ijg
    licences/libpng/LICENSE
    licences/mingw-w64-runtime/copyright
    licences/opencv/COPYRIGHT
    licences/opencv/LICENSE
    licences/opencv/SoftFloat-COPYING.txt
    licences/opencv/videoInput
    licences/zlib/copyright)
file(GLOB_RECURSE pages RELATIVE "${SOURCE}" "${SOURCE}/docs/*")
list(APPEND expected ${pages})
if(VISUAL_CXX)
  list(APPEND expected lib/fisheye_calibration.lib)
endif()
if(IMAGE_LIBRARY_VERSION VERSION_GREATER_EQUAL 4.10) # 4.6 installs no such file
  list(APPEND expected licences/opencv/mscr-chi_table_LICENSE.txt)
endif()
require_same_set(found "the archive" expected "the list of what it should hold")

# The same sources give the same bytes: no time of linking.
set(ENV{TZ} UTC)
set(ENV{LC_ALL} C)
foreach(program IN ITEMS fisheye-calibration.exe fisheye_calibration.dll)
  execute_process(COMMAND "${OBJDUMP}" -p "${root}/bin/${program}" OUTPUT_VARIABLE headers
                  COMMAND_ERROR_IS_FATAL ANY)
  if(NOT headers MATCHES "Time/Date[ \t]+Thu Jan  1 00:00:00 1970")
    message(FATAL_ERROR "${program} carries the time at which it was linked")
  endif()
endforeach()

foreach(file IN LISTS found)
  file(SIZE "${root}/${file}" size)
  if(size EQUAL 0)
    message(FATAL_ERROR "${file} is empty")
  endif()
endforeach()
