# Installs the licences of what a cross-build links into the dynamic library and the program, and the
# pages that a user of the Windows archive reads first.
if(NOT MINGW OR NOT CMAKE_CROSSCOMPILING OR NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

foreach(page IN ITEMS README.md CONTRIBUTING.md CHANGELOG.md LICENSE)
  install(FILES "${PROJECT_SOURCE_DIR}/${page}" DESTINATION .)
endforeach()
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION .)

# Each library of our own cache brings a folder of licences, unless only tests use it.
foreach(prefix IN LISTS CMAKE_FIND_ROOT_PATH)
  if(EXISTS "${prefix}/licences")
    get_filename_component(library "${prefix}" NAME)
    string(REGEX REPLACE "-[0-9a-f]+$" "" library "${library}")
    install(DIRECTORY "${prefix}/licences/" DESTINATION "licences/${library}")
  endif()
endforeach()

# What Debian ships: zlib, the compiler's run-time libraries and the system's.
install(FILES /usr/share/doc/libz-mingw-w64-dev/copyright DESTINATION licences/zlib)
install(FILES /usr/share/doc/gcc-mingw-w64-base/copyright DESTINATION licences/gcc-runtime)
install(FILES /usr/share/doc/mingw-w64-common/copyright DESTINATION licences/mingw-w64-runtime)
