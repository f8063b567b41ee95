# Installs the documents, the examples that they name and the licence; in the Windows archive, at its top, with the
# licences of the libraries that a cross-build links into the dynamic library and the program.
set(is_windows_archive OFF)
set(document_dir "${CMAKE_INSTALL_DOCDIR}")
if(MINGW AND CMAKE_CROSSCOMPILING AND PROJECT_IS_TOP_LEVEL)
  set(is_windows_archive ON)
  set(document_dir .)
endif()

install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${document_dir}" COMPONENT documentation)
if(PROJECT_IS_TOP_LEVEL)
  foreach(page IN ITEMS README.md CONTRIBUTING.md CHANGELOG.md)
    install(FILES "${PROJECT_SOURCE_DIR}/${page}" DESTINATION "${document_dir}" COMPONENT documentation)
  endforeach()
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION "${document_dir}" COMPONENT documentation)
  foreach(example IN ITEMS host_in_c.c host_with_wrapper.cpp stitching_in_c.c
                  csharp/FisheyeCalibration.cs csharp/Host.cs csharp/Stitching.cs)
    cmake_path(GET example PARENT_PATH folder)
    install(FILES "${PROJECT_SOURCE_DIR}/examples/${example}" DESTINATION "${document_dir}/examples/${folder}"
            COMPONENT documentation)
  endforeach()
endif()
if(NOT is_windows_archive)
  return()
endif()

# Each library in our cache has a folder of licences, unless only tests use it.
foreach(prefix IN LISTS CMAKE_FIND_ROOT_PATH)
  if(EXISTS "${prefix}/licences")
    get_filename_component(library "${prefix}" NAME)
    string(REGEX REPLACE "-[0-9a-f]+$" "" library "${library}")
    install(DIRECTORY "${prefix}/licences/" DESTINATION "licences/${library}" COMPONENT documentation)
  endif()
endforeach()

# From Debian's packages: zlib, the compiler's runtime libraries and those of MinGW-w64.
install(FILES /usr/share/doc/libz-mingw-w64-dev/copyright DESTINATION licences/zlib COMPONENT documentation)
install(FILES /usr/share/doc/gcc-mingw-w64-base/copyright DESTINATION licences/gcc-runtime COMPONENT documentation)
install(FILES /usr/share/doc/mingw-w64-common/copyright DESTINATION licences/mingw-w64-runtime COMPONENT documentation)
