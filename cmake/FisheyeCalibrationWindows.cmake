# Additions for Windows builds: the message box, version information and the code page of the program.
if(NOT WIN32)
  return()
endif()
enable_language(RC)

if(MSVC)
  find_package(MFC QUIET)
  if(MFC_FOUND)
    set(mfc_default ON)
  else()
    set(mfc_default OFF)
  endif()
  option(FISHEYE_CALIBRATION_MFC "Show messages with AfxMessageBox" ${mfc_default})
endif()

# Adds the message box to a target. With USES_FRAMEWORK it is AfxMessageBox if MFC is selected; only a
# dynamic library can use that, because it includes MFC's DllMain.
function(fisheye_calibration_add_message_box target)
  cmake_parse_arguments(PARSE_ARGV 1 box "USES_FRAMEWORK" "" "")
  target_sources(${target} PRIVATE "${PROJECT_SOURCE_DIR}/src/platform/message_box_windows.cpp")
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/src")
  fisheye_calibration_compile_settings(${target})
  if(box_USES_FRAMEWORK AND FISHEYE_CALIBRATION_MFC)
    target_compile_definitions(${target} PRIVATE FISHEYE_CALIBRATION_MFC=1 _AFXDLL _USRDLL UNICODE
                                                 _UNICODE)
  endif()
endfunction()

# Adds version information, as shown by Explorer, to a library or program.
function(fisheye_calibration_add_version target description file_name)
  get_target_property(type ${target} TYPE)
  set(version_file_type VFT_APP)
  if(type STREQUAL "SHARED_LIBRARY")
    set(version_file_type VFT_DLL)
  endif()
  set(version_description "${description}")
  set(version_file_name "${file_name}")
  set(version_numbers "${PROJECT_VERSION_MAJOR},${PROJECT_VERSION_MINOR},${PROJECT_VERSION_PATCH},0")
  set(resource "${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${resource}" @ONLY)
  target_sources(${target} PRIVATE "${resource}")
endfunction()

# Makes UTF-8 the code page of a program's command line and file names, as on other systems (Windows 10
# version 1903 or later).
function(fisheye_calibration_use_utf8 target)
  set(manifest "${PROJECT_SOURCE_DIR}/cmake/utf8.manifest")
  if(MSVC)
    target_sources(${target} PRIVATE "${manifest}") # merged into the linker's own
  else()
    set(resource "${CMAKE_CURRENT_BINARY_DIR}/${target}_manifest.rc")
    file(CONFIGURE OUTPUT "${resource}" CONTENT "1 24 \"@manifest@\"\n" @ONLY)
    set_source_files_properties("${resource}" PROPERTIES OBJECT_DEPENDS "${manifest}")
    target_sources(${target} PRIVATE "${resource}")
  endif()
endfunction()
