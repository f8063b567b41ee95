# Runs the same computations on two systems and compares what comes out; lets each read the other's
# parameter files.
#   cmake -DOURS=<command> -DOTHERS=<command> -DWORK=<folder> -P agreement.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../packaging/support.cmake")

list(FILTER OURS EXCLUDE REGEX "^$") # no emulator, no word
if(NOT EXISTS "${OTHERS}")
  message("Skipped: ${OTHERS} is not built")
  return()
endif()
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/ours" "${WORK}/others")
require_success(${OURS} write "${WORK}/ours")
require_success(${OTHERS} write "${WORK}/others")
require_success(${OTHERS} compare "${WORK}/others/results.txt" "${WORK}/ours/results.txt")
foreach(files IN ITEMS ours others)
  require_success(${OURS} read "${WORK}/${files}" "${WORK}/${files}_read_by_ours.txt")
  require_success(${OTHERS} read "${WORK}/${files}" "${WORK}/${files}_read_by_others.txt")
  foreach(reader IN ITEMS ours others)
    require_success(${OTHERS} compare "${WORK}/ours_read_by_ours.txt"
                    "${WORK}/${files}_read_by_${reader}.txt")
  endforeach()
endforeach()
