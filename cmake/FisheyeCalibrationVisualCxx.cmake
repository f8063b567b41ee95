# Lets the DLL that MinGW-w64 builds serve hosts that are built with Visual C++: adds a front which clang compiles
# by Visual C++'s rules, and the import library for Visual C++'s linker. docs/visual-cxx.md explains the parts.

# The part that the library's own compiler compiles.
set(FISHEYE_CALIBRATION_BRIDGE "${PROJECT_SOURCE_DIR}/src/visual_cxx/bridge.cpp"
                               "${PROJECT_SOURCE_DIR}/src/visual_cxx/outcome.cpp")
if(NOT MINGW)
  return()
endif()

find_program(FISHEYE_CALIBRATION_CLANG NAMES clang++ DOC "clang, for the interface for Visual C++")
find_program(FISHEYE_CALIBRATION_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-19 llvm-dlltool-14
             DOC "Makes the import library for Visual C++'s linker")
set(FISHEYE_CALIBRATION_VISUAL_CXX OFF)
if(NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  message(STATUS "The DLL is built without the interface for Visual C++, which is for x64 only")
elseif(NOT FISHEYE_CALIBRATION_CLANG OR NOT FISHEYE_CALIBRATION_LLVM_DLLTOOL)
  message(STATUS "The DLL is built without the interface for Visual C++: clang or llvm-dlltool is not installed")
else()
  set(FISHEYE_CALIBRATION_VISUAL_CXX ON)
  execute_process(COMMAND "${FISHEYE_CALIBRATION_CLANG}" -print-resource-dir OUTPUT_VARIABLE clang_resources
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  # Never -ffreestanding: it leaves out the tables by which exceptions pass. FISHEYE_CALIBRATION_STATIC: a .def file
  # lists the exported functions.
  set(FISHEYE_CALIBRATION_VISUAL_CXX_COMMAND
      "${FISHEYE_CALIBRATION_CLANG}" --target=x86_64-pc-windows-msvc -std=c++17 -O2 -nostdinc -isystem
      "${PROJECT_SOURCE_DIR}/src/visual_cxx/include" -isystem "${clang_resources}/include"
      "-I${PROJECT_SOURCE_DIR}/src" "-I${PROJECT_SOURCE_DIR}/include" -DFISHEYE_CALIBRATION_STATIC
      -Wall -Wextra -Wpedantic -Wconversion -Wshadow "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
  if(FISHEYE_CALIBRATION_WARNINGS_AS_ERRORS)
    list(APPEND FISHEYE_CALIBRATION_VISUAL_CXX_COMMAND -Werror)
  endif()
endif()

set(FISHEYE_CALIBRATION_DECORATED_NAMES "${PROJECT_SOURCE_DIR}/cmake/decorated_names.txt")

# fisheye_calibration_write_if_different(<file> <text>)
function(fisheye_calibration_write_if_different file text)
  file(WRITE "${file}.new" "${text}")
  file(COPY_FILE "${file}.new" "${file}" ONLY_IF_DIFFERENT)
endfunction()

# fisheye_calibration_compile_front(<object> <source> <options>): compiles a file of the front.
function(fisheye_calibration_compile_front object source options)
  add_custom_command(
    OUTPUT "${object}"
    COMMAND ${FISHEYE_CALIBRATION_VISUAL_CXX_COMMAND} ${options} -MD -MF "${object}.d" -MT "${object}" -c
            "${source}" -o "${object}"
    DEPENDS "${source}"
    DEPFILE "${object}.d"
    COMMENT "Compiling ${source} by Visual C++'s rules"
    VERBATIM)
endfunction()

# fisheye_calibration_link_front(<target> <objects>): links a front into a dynamic library, with the import
# libraries of the host's C runtime, and exports the decorated names.
function(fisheye_calibration_link_front target objects)
  set(folder "${PROJECT_BINARY_DIR}/visual_cxx")
  target_sources(${target} PRIVATE ${objects} "${folder}/decorated_names.def")
  set_source_files_properties(${objects} PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
  target_link_libraries(${target} PRIVATE "${folder}/libhost_runtime_heap.a"
                                          "${folder}/libhost_runtime_utility.a")
  add_dependencies(${target} fisheye_calibration_host_runtime)
endfunction()

# Adds the front to the dynamic library, and makes the import library.
function(fisheye_calibration_add_visual_cxx target)
  set(sources "${PROJECT_SOURCE_DIR}/src/visual_cxx")
  set(folder "${PROJECT_BINARY_DIR}/visual_cxx")
  file(MAKE_DIRECTORY "${folder}")

  set(private_libraries "")
  foreach(library IN ITEMS heap utility)
    set(definition "${sources}/host_runtime_${library}.def")
    set(file "${folder}/libhost_runtime_${library}.a")
    add_custom_command(OUTPUT "${file}" COMMAND "${CMAKE_DLLTOOL}" -d "${definition}" -l "${file}"
                       DEPENDS "${definition}" VERBATIM)
    list(APPEND private_libraries "${file}")
  endforeach()
  add_custom_target(fisheye_calibration_host_runtime DEPENDS ${private_libraries})

  set(exports "${PROJECT_SOURCE_DIR}/cmake/exports.txt")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
                                         "${FISHEYE_CALIBRATION_DECORATED_NAMES}" "${exports}")
  file(STRINGS "${FISHEYE_CALIBRATION_DECORATED_NAMES}" names REGEX "^[?]")
  file(STRINGS "${exports}" c_names REGEX "^fcal_")
  list(TRANSFORM names REPLACE "(.+)" "  \"\\1\"\n")
  list(TRANSFORM c_names REPLACE "(.+)" "  \\1\n")
  list(JOIN names "" names)
  list(JOIN c_names "" c_names)
  fisheye_calibration_write_if_different("${folder}/decorated_names.def" "EXPORTS\n${names}")
  fisheye_calibration_write_if_different("${folder}/fisheye_calibration.def"
                                         "LIBRARY fisheye_calibration.dll\nEXPORTS\n${names}${c_names}")

  fisheye_calibration_compile_front("${folder}/front.obj" "${sources}/front.cpp" -fno-exceptions)
  fisheye_calibration_compile_front("${folder}/raise.obj" "${sources}/raise.cpp"
                                    "-fexceptions;-fcxx-exceptions")
  target_sources(${target} PRIVATE ${FISHEYE_CALIBRATION_BRIDGE})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/src")
  target_include_directories(${target} SYSTEM PRIVATE ${OpenCV_INCLUDE_DIRS})
  target_compile_definitions(${target} PRIVATE FISHEYE_CALIBRATION_BUILDING)
  fisheye_calibration_link_front(${target} "${folder}/front.obj;${folder}/raise.obj")

  set(import_library "${folder}/fisheye_calibration.lib")
  add_custom_command(
    OUTPUT "${import_library}"
    COMMAND "${FISHEYE_CALIBRATION_LLVM_DLLTOOL}" -m i386:x86-64 -d "${folder}/fisheye_calibration.def" -l
            "${import_library}"
    DEPENDS "${folder}/fisheye_calibration.def"
    VERBATIM)
  add_custom_target(fisheye_calibration_visual_cxx_import_library ALL DEPENDS "${import_library}")
endfunction()
