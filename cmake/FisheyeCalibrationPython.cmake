# Python for the package in python/: an interpreter with NumPy, its headers and pybind11.

# fisheye_calibration_find_python(<missing>): sets Python_EXECUTABLE in the cache, unless it is given, to the first
# interpreter of those on the path and the system's own that has NumPy and its headers. `missing` receives the
# Debian packages that are not there, separated by spaces, or nothing.
function(fisheye_calibration_find_python missing)
  set(candidates ${Python_EXECUTABLE})
  if(NOT candidates)
    find_program(on_path python3 NO_CACHE)
    set(candidates "${on_path}" /usr/bin/python3)
  endif()
  set(check "import numpy, os, sysconfig"
            "assert os.path.exists(os.path.join(sysconfig.get_paths()['include'], 'Python.h'))")
  list(JOIN check "\n" check)
  # Its CMake package must be loaded after Python's, so that both mean the same interpreter.
  find_path(headers pybind11/pybind11.h NO_CACHE)
  set(${missing} "" PARENT_SCOPE)
  foreach(candidate IN LISTS candidates)
    execute_process(COMMAND "${candidate}" -c "${check}" RESULT_VARIABLE code OUTPUT_QUIET ERROR_QUIET)
    if(code EQUAL 0)
      set(Python_EXECUTABLE "${candidate}" CACHE FILEPATH "The interpreter that the Python package is built for")
      if(NOT headers)
        set(${missing} "pybind11-dev" PARENT_SCOPE)
      endif()
      return()
    endif()
  endforeach()
  set(${missing} "python3-dev python3-numpy" PARENT_SCOPE)
  if(NOT headers)
    set(${missing} "python3-dev python3-numpy pybind11-dev" PARENT_SCOPE)
  endif()
endfunction()
