# Compile settings of all targets of this project.
function(fisheye_calibration_compile_settings target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON
                                             # scripts/lint reads unity builds, too
                                             UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
  if(WIN32)
    target_compile_definitions(${target} PRIVATE NOMINMAX)
  endif()
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64|ARM64)$")
    # Every 64-bit ARM processor has NEON. The vectors of SVE cannot be members, as those of NEON are.
    # Without run-time dispatch, which needs the header named here, Highway compiles for the compiler's
    # own target; otherwise code outside of Highway's namespaces could not call inline code inside.
    target_compile_definitions(
      ${target} PRIVATE "HWY_DISABLED_TARGETS=(HWY_SVE|HWY_SVE2|HWY_SVE_256|HWY_SVE2_128)"
                        TOOLCHAIN_MISS_SYS_AUXV_H)
  endif()
  # OpenCV's headers are system headers: their warnings are not ours.
  if(MSVC)
    # Results must not depend on the compiler's fusing or reordering of floating-point operations.
    set(options /W4 /utf-8 /fp:precise /permissive- /Zc:__cplusplus)
    # getenv and fopen are standard; do not warn about them.
    target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
  else()
    set(options -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off)
    # GCC 12's superword vectoriser drops the rounding of double -> float -> double for adjacent
    # stores, and thereby the 32-bit precision that results must have.
    list(APPEND options $<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize>)
    # GCC warns of the fields that designated initialisers leave out, which is what they are for.
    list(APPEND options $<$<CXX_COMPILER_ID:GNU>:-Wno-missing-field-initializers>)
  endif()
  if(MINGW)
    # On 64-bit Windows GCC aligns the stack to 16 bytes only, yet stores 32- and 64-byte vectors there
    # with instructions that fault unless these are aligned to their size. Debian's version avoids these
    # instructions; other versions need the assembler's help.
    list(APPEND options -Wa,-muse-unaligned-vector-move)
  endif()
  target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:${options}>") # not resources
  if(FISHEYE_CALIBRATION_WARNINGS_AS_ERRORS)
    set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
  endif()
endfunction()

# fisheye_calibration_compile_alone(<source>...): also with CMAKE_UNITY_BUILD, because these sources are compiled once
# per instruction set, or have names of their own for what their neighbours name alike.
function(fisheye_calibration_compile_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# Links everything but the system's own libraries statically into a program or dynamic library for Windows,
# so that it needs no files of the compiler. For reproducible builds it contains no time stamp; the linker
# strips the symbols, because stripping later would add one.
function(fisheye_calibration_link_settings target)
  if(MINGW)
    target_link_options(${target} PRIVATE -static -s LINKER:--no-insert-timestamp)
  endif()
endfunction()
