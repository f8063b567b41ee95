# Copies the source tree and takes the right to write to it away; records what lies in it.
#   cmake -DSOURCE=... -DCOPY=... -DRECORD=... -P source_copy.cmake          makes the copy
#   cmake -DCOPY=... -DRECORD=... -DCOMPARE=ON -P source_copy.cmake          compares it with the record
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

# Every file with the checksum of its content, and every folder.
function(describe folder result)
  file(GLOB_RECURSE paths LIST_DIRECTORIES true RELATIVE "${folder}" "${folder}/*" "${folder}/.*")
  set(entries "")
  foreach(path IN LISTS paths)
    if(IS_DIRECTORY "${folder}/${path}")
      list(APPEND entries "${path}/")
    else()
      file(SHA256 "${folder}/${path}" checksum)
      list(APPEND entries "${path} ${checksum}")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES entries)
  set(${result} "${entries}" PARENT_SCOPE)
endfunction()

if(COMPARE)
  # Permissions do not bind an administrator, so the content is compared as well.
  describe("${COPY}" after)
  file(STRINGS "${RECORD}" before)
  require_same_set(after "the tree after building" before "the tree before building")
  return()
endif()

if(EXISTS "${COPY}")
  require_success(chmod -R u+w "${COPY}")
  file(REMOVE_RECURSE "${COPY}")
endif()
file(GLOB entries RELATIVE "${SOURCE}" "${SOURCE}/*" "${SOURCE}/.*")
list(FILTER entries EXCLUDE REGEX "^(build|build-.*|demo-output|\\.git|\\.cache)$")
foreach(entry IN LISTS entries)
  file(COPY "${SOURCE}/${entry}" DESTINATION "${COPY}" PATTERN node_modules EXCLUDE)
endforeach()
require_success(chmod -R a-w "${COPY}")
describe("${COPY}" entries)
list(JOIN entries "\n" text)
file(WRITE "${RECORD}" "${text}\n")
