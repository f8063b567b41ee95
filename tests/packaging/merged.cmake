# No file holds the marks that a merge leaves where two changes contradict each other.
#   cmake -DSOURCES=<root> -DFILES=<patterns, relative to it> -P merged.cmake
cmake_minimum_required(VERSION 3.25)

list(TRANSFORM FILES PREPEND "${SOURCES}/")
file(GLOB_RECURSE files ${FILES})
list(LENGTH files count)
if(count EQUAL 0)
  message(FATAL_ERROR "there are no files ${FILES}")
endif()
foreach(file IN LISTS files)
  file(STRINGS "${file}" marks REGEX "^(<<<<<<<|>>>>>>>) ")
  if(marks)
    message(FATAL_ERROR "${file} is not merged: ${marks}")
  endif()
endforeach()
message(STATUS "${count} files")
