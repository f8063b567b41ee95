# An overlay port that builds the source tree it lies in:
#   vcpkg install --classic --no-binarycaching fisheye-calibration --overlay-ports=packaging/vcpkg
# It has not been run. Without --classic, vcpkg reads the manifest in the root of this tree and refuses names of ports;
# with it, it takes the newest OpenCV of its list, not the 4.9.0 that the manifest names. Its binary cache would not
# notice changes of the sources.
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY) # the static library is for systems whose OpenCV is dynamic
set(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../../..")

vcpkg_check_features(
  OUT_FEATURE_OPTIONS feature_options
  FEATURES
    program FISHEYE_CALIBRATION_BUILD_PROGRAM
    interactive FISHEYE_CALIBRATION_INTERACTIVE)
vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    ${feature_options}
    -DFISHEYE_CALIBRATION_BUILD_TESTS=OFF
    -DFISHEYE_CALIBRATION_INSTALL_STATIC=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME fisheye_calibration CONFIG_PATH lib/cmake/fisheye_calibration)
vcpkg_fixup_pkgconfig()
vcpkg_copy_pdbs()
if("program" IN_LIST FEATURES)
  vcpkg_copy_tools(TOOL_NAMES fisheye-calibration AUTO_CLEAN)
endif()

file(REMOVE_RECURSE
     "${CURRENT_PACKAGES_DIR}/debug/include"
     "${CURRENT_PACKAGES_DIR}/debug/share"
     "${CURRENT_PACKAGES_DIR}/share/doc")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
