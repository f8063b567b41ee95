# C++ files are laid out as clang-format does it.
#   cmake -DCLANG_FORMAT=<program> -DVERSION=<its major version> -DSTYLE=<style file> -DFILES=<list> -P formatting.cmake
#   cmake ... -DFOLDERS=<list> -P formatting.cmake        all files in these folders
include("${CMAKE_CURRENT_LIST_DIR}/support.cmake")

if(NOT CLANG_FORMAT)
  message("Skipped: clang-format is not installed")
  return()
endif()
execute_process(COMMAND "${CLANG_FORMAT}" --version OUTPUT_VARIABLE version COMMAND_ERROR_IS_FATAL ANY)
if(NOT version MATCHES "version ${VERSION}\\.")
  string(STRIP "${version}" version)
  message("Skipped: the sources are laid out by clang-format ${VERSION}, not by ${version}")
  return()
endif()
if(FOLDERS)
  cxx_files("${FOLDERS}" FILES)
endif()
require_success("${CLANG_FORMAT}" --dry-run -Werror "--style=file:${STYLE}" ${FILES})
list(LENGTH FILES count)
message(STATUS "${count} files")
