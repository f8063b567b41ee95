# What every target of this project is compiled with.
function(fisheye_calibration_compile_settings target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
  if(WIN32)
    target_compile_definitions(${target} PRIVATE NOMINMAX)
  endif()
  # OpenCV's headers are system headers: their warnings are not ours.
  if(MSVC)
    # Results must not depend on the compiler's fusing or reordering of floating-point operations.
    set(options /W4 /utf-8 /fp:precise /permissive- /Zc:__cplusplus)
    # getenv and fopen are standard, whatever the compiler would rather have.
    target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
  else()
    set(options -Wall -Wextra -Wpedantic -Wconversion -Wshadow -ffp-contract=off)
    # GCC 12's superword vectoriser drops the rounding of double -> float -> double where two such
    # stores lie side by side, and with it the 32-bit precision that results are promised in.
    list(APPEND options $<$<CXX_COMPILER_ID:GNU>:-fno-tree-slp-vectorize>)
    # GCC warns of the fields that designated initialisers leave out, which is what they are for.
    list(APPEND options $<$<CXX_COMPILER_ID:GNU>:-Wno-missing-field-initializers>)
  endif()
  if(MINGW)
    # GCC aligns the stack of 64-bit Windows to 16 bytes only, yet stores 32- and 64-byte vectors there
    # with instructions that fault unless they are aligned to their size. Debian's version avoids these by
    # itself, others need the assembler's help.
    list(APPEND options -Wa,-muse-unaligned-vector-move)
  endif()
  target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:${options}>") # not resources
  if(FISHEYE_CALIBRATION_WARNINGS_AS_ERRORS)
    set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
  endif()
endfunction()

# Links all that is not the system's own into a program or dynamic library for Windows, so that it needs
# no files of the compiler's beside it. No time goes into it, and symbols are left out here, because to
# strip them later would put one in.
function(fisheye_calibration_link_settings target)
  if(MINGW)
    target_link_options(${target} PRIVATE -static -s LINKER:--no-insert-timestamp)
  endif()
endfunction()
