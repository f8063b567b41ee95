# What every target of this project is compiled with.
function(fisheye_calibration_compile_settings target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
  # OpenCV's headers are system headers: their warnings are not ours.
  if(MSVC)
    # Results must not depend on the compiler's fusing or reordering of floating-point operations.
    target_compile_options(${target} PRIVATE /W4 /utf-8 /fp:precise /permissive-)
  else()
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                             -ffp-contract=off)
  endif()
  if(FISHEYE_CALIBRATION_WARNINGS_AS_ERRORS)
    set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
  endif()
endfunction()
