# Installs the licences of the libraries that a cross-build links into the dynamic library and the program,
# and the documents for users of the Windows archive.
if(NOT MINGW OR NOT CMAKE_CROSSCOMPILING OR NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

foreach(page IN ITEMS README.md CONTRIBUTING.md CHANGELOG.md LICENSE)
  install(FILES "${PROJECT_SOURCE_DIR}/${page}" DESTINATION .)
endforeach()
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION .)

# Each library in our cache has a folder of licences, unless only tests use it.
foreach(prefix IN LISTS CMAKE_FIND_ROOT_PATH)
  if(EXISTS "${prefix}/licences")
    get_filename_component(library "${prefix}" NAME)
    string(REGEX REPLACE "-[0-9a-f]+$" "" library "${library}")
    install(DIRECTORY "${prefix}/licences/" DESTINATION "licences/${library}")
  endif()
endforeach()

# From Debian's packages: zlib, the compiler's runtime libraries and those of MinGW-w64.
install(FILES /usr/share/doc/libz-mingw-w64-dev/copyright DESTINATION licences/zlib)
install(FILES /usr/share/doc/gcc-mingw-w64-base/copyright DESTINATION licences/gcc-runtime)
install(FILES /usr/share/doc/mingw-w64-common/copyright DESTINATION licences/mingw-w64-runtime)
