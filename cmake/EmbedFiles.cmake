# fisheye_calibration_embed_files(TARGET target HEADER header FUNCTION function FILES file...) compiles files into a
# target. The header, which is written by hand, declares
#   std::string_view fisheye_calibration::program::function(std::string_view name);
# and the function returns the bytes of the file of that name without its folder, or nothing. CMake itself writes the
# source at build time, whenever a file has changed; no other tool is needed, on any system.
#
# As a script (cmake -P), this file writes that source: -D OUTPUT, HEADER, FUNCTION and FILES, a list with '|'.

if(CMAKE_SCRIPT_MODE_FILE)
  string(REPLACE "|" ";" files "${FILES}")
  set(arrays)
  set(rows)
  set(number 0)
  foreach(file IN LISTS files)
    file(READ "${file}" bytes HEX)
    # Sixteen bytes a line, because some compilers limit its length; a last zero, because no array may be empty.
    string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
    get_filename_component(name "${file}" NAME)
    string(APPEND arrays "// ${name}\nconstexpr unsigned char kFile${number}[] = {\n${bytes}0x00};\n\n")
    string(APPEND rows "    {\"${name}\", kFile${number}, sizeof(kFile${number}) - 1},\n")
    math(EXPR number "${number} + 1")
  endforeach()
  file(
    WRITE "${OUTPUT}"
    "// Written by cmake/EmbedFiles.cmake.
#include \"${HEADER}\"

#include <cstddef>

namespace fisheye_calibration::program {
namespace {

${arrays}struct EmbeddedFile {
  std::string_view name;
  const unsigned char* bytes;
  std::size_t size;
};

constexpr EmbeddedFile kFiles[] = {
${rows}};

}  // namespace

std::string_view ${FUNCTION}(std::string_view name) {
  for (const EmbeddedFile& file : kFiles) {
    if (file.name == name) {
      return {reinterpret_cast<const char*>(file.bytes), file.size};
    }
  }
  return {};
}

}  // namespace fisheye_calibration::program
")
  return()
endif()

set(FISHEYE_CALIBRATION_EMBED_SCRIPT "${CMAKE_CURRENT_LIST_FILE}")

function(fisheye_calibration_embed_files)
  cmake_parse_arguments(PARSE_ARGV 0 embed "" "TARGET;HEADER;FUNCTION" "FILES")
  set(files)
  foreach(file IN LISTS embed_FILES)
    get_filename_component(path "${file}" ABSOLUTE)
    list(APPEND files "${path}")
  endforeach()
  string(REPLACE ";" "|" list "${files}")
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${embed_FUNCTION}.cpp")
  add_custom_command(
    OUTPUT "${source}"
    COMMAND "${CMAKE_COMMAND}" "-DOUTPUT=${source}" "-DHEADER=${embed_HEADER}" "-DFUNCTION=${embed_FUNCTION}"
            "-DFILES=${list}" -P "${FISHEYE_CALIBRATION_EMBED_SCRIPT}"
    DEPENDS ${files} "${FISHEYE_CALIBRATION_EMBED_SCRIPT}"
    COMMENT "Embedding the files of ${embed_FUNCTION}"
    VERBATIM)
  target_sources(${embed_TARGET} PRIVATE "${source}")
  fisheye_calibration_compile_alone("${source}") # scripts/lint reads what is united, without a build
endfunction()
