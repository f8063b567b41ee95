# Installs the library in components: runtime, development, program and documentation.
include(CMakePackageConfigHelpers)
include(FisheyeCalibrationPkgConfig)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/fisheye_calibration")

install(
  TARGETS fisheye_calibration
  EXPORT fisheye_calibration_targets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
          COMPONENT runtime
          NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(FILES "${PROJECT_SOURCE_DIR}/include/fisheye_calibration.h"
              "${PROJECT_SOURCE_DIR}/include/fisheye_calibration.hpp"
              "${PROJECT_SOURCE_DIR}/include/fisheye_calibration_c.h"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
if(FISHEYE_CALIBRATION_VISUAL_CXX)
  install(FILES "${PROJECT_BINARY_DIR}/visual_cxx/fisheye_calibration.lib" DESTINATION "${CMAKE_INSTALL_LIBDIR}"
          COMPONENT development)
endif()
install(
  EXPORT fisheye_calibration_targets
  NAMESPACE fisheye_calibration::
  FILE fisheye_calibrationTargets.cmake
  DESTINATION "${package_dir}"
  COMPONENT development)
if(FISHEYE_CALIBRATION_INSTALL_STATIC)
  install(TARGETS fisheye_calibration_core EXPORT fisheye_calibration_static_targets
          ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
          INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
  install(
    EXPORT fisheye_calibration_static_targets
    NAMESPACE fisheye_calibration::
    FILE fisheye_calibrationStaticTargets.cmake
    DESTINATION "${package_dir}"
    COMPONENT development)
endif()

set(visual_cxx_config "")
if(FISHEYE_CALIBRATION_VISUAL_CXX)
  # The targets name the import library for MinGW-w64, with which this project is built.
  set(visual_cxx_config [[
if(MSVC)
  get_filename_component(fisheye_calibration_library "${CMAKE_CURRENT_LIST_DIR}/../../fisheye_calibration.lib" ABSOLUTE)
  get_target_property(fisheye_calibration_builds fisheye_calibration::fisheye_calibration IMPORTED_CONFIGURATIONS)
  foreach(fisheye_calibration_build IN LISTS fisheye_calibration_builds)
    set_target_properties(fisheye_calibration::fisheye_calibration PROPERTIES
                          IMPORTED_IMPLIB_${fisheye_calibration_build} "${fisheye_calibration_library}")
  endforeach()
endif()
]])
endif()
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/fisheye_calibrationConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/fisheye_calibrationConfig.cmake"
                              INSTALL_DESTINATION "${package_dir}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/fisheye_calibrationConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/fisheye_calibrationConfig.cmake"
              "${PROJECT_BINARY_DIR}/fisheye_calibrationConfigVersion.cmake"
        DESTINATION "${package_dir}" COMPONENT development)

fisheye_calibration_configure_pkg_config("${PROJECT_BINARY_DIR}/fisheye_calibration.pc")
install(FILES "${PROJECT_BINARY_DIR}/fisheye_calibration.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

include(FisheyeCalibrationLicences)

if(PROJECT_IS_TOP_LEVEL)
  set(CPACK_PACKAGE_NAME "fisheye-calibration")
  set(CPACK_PACKAGE_VENDOR "fisheye_calibration maintainers")
  set(CPACK_PACKAGE_CONTACT "fisheye_calibration maintainers")
  set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
  set(CPACK_GENERATOR "TGZ")
  if(WIN32)
    set(CPACK_GENERATOR "ZIP")
    set(CPACK_PACKAGE_FILE_NAME "fisheye_calibration-${PROJECT_VERSION}-win64")
  endif()
  include(CPack)
endif()
