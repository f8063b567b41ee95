# The functions that the C# file declares are those of the C interface.
#   cmake -DDECLARATIONS=... -DEXPORTS=... -P declared_functions.cmake
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/../packaging/support.cmake")

file(READ "${DECLARATIONS}" text)
string(REGEX MATCHALL "static extern [A-Za-z]+ fcal_[a-z_]+\\(" declared "${text}")
list(TRANSFORM declared REPLACE "^.* ([a-z_]+)\\($" "\\1")
read_list("${EXPORTS}" exports)
list(FILTER exports INCLUDE REGEX "^fcal_")
require_same_set(declared "the C# file" exports "the export list")
