# Runs one of the checks of the Python package.
#   cmake -DDO=tests|types|stubs|pip -DPYTHON=... -DMISSING=<Debian packages that are not there>
#         -DNEEDS=<modules, separated by spaces> -DPACKAGE=<sources> -DBUILT=<folder with the built package>
#         [-DLIBRARY=... -DPROGRAM=...] [-DBUILD=<build tree> -DVERSION=...] [-DWORK=...] -P run.cmake
cmake_minimum_required(VERSION 3.25)

# run(<command>...): prints what the command prints and fails if it fails; sets `text`.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE text ERROR_VARIABLE text)
  message("${text}")
  if(NOT code EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command} ended with ${code}")
  endif()
  set(text "${text}" PARENT_SCOPE)
endfunction()

set(skipped "Skipped: this test of the Python package needs")
if(MISSING)
  message(STATUS "${skipped} ${MISSING}")
  return()
endif()
separate_arguments(modules UNIX_COMMAND "${NEEDS}")
foreach(module IN LISTS modules)
  execute_process(COMMAND "${PYTHON}" -c "import ${module}" RESULT_VARIABLE code OUTPUT_QUIET ERROR_QUIET)
  if(NOT code EQUAL 0)
    message(STATUS "${skipped} the module ${module} of ${PYTHON}")
    return()
  endif()
endforeach()

set(ENV{PYTHONDONTWRITEBYTECODE} 1)
set(ENV{PYTHONPATH} "${BUILT}")
if(DO STREQUAL "tests")
  set(ENV{FISHEYE_CALIBRATION_LIBRARY} "${LIBRARY}")
  set(ENV{FISHEYE_CALIBRATION_PROGRAM} "${PROGRAM}")
  set(ENV{MPLCONFIGDIR} "${WORK}")
  run("${PYTHON}" -m pytest -q -rs -c "${PACKAGE}/pyproject.toml" --rootdir "${PACKAGE}" "${PACKAGE}/tests")
elseif(DO STREQUAL "types")
  file(REMOVE_RECURSE "${WORK}") # mypy trips over what it remembers of classes that have moved
  set(ENV{MYPYPATH} "${BUILT}")
  set(mypy "${PYTHON}" -m mypy --config-file "${PACKAGE}/pyproject.toml" --cache-dir "${WORK}")
  run(${mypy} "${BUILT}/fisheye_calibration")
  run(${mypy} "${PACKAGE}/tests" "${PACKAGE}/setup.py" "${PACKAGE}/../examples/python/calibrate.py")
elseif(DO STREQUAL "stubs")
  file(MAKE_DIRECTORY "${WORK}")
  run("${CMAKE_COMMAND}" -E chdir "${WORK}" "${PYTHON}" -m mypy.stubtest fisheye_calibration)
elseif(DO STREQUAL "pip")
  # In a copy, because setuptools writes next to the sources, and with the build tree at hand.
  unset(ENV{PYTHONPATH})
  unset(ENV{PYTHONDONTWRITEBYTECODE})
  file(REMOVE_RECURSE "${WORK}")
  file(COPY "${PACKAGE}/../CMakeLists.txt" "${PACKAGE}/../LICENSE" "${PACKAGE}" DESTINATION "${WORK}/sources")
  run("${PYTHON}" -m venv --system-site-packages "${WORK}/venv")
  set(ENV{FISHEYE_CALIBRATION_BUILD} "${BUILD}")
  run("${WORK}/venv/bin/python" -m pip install --no-index --no-build-isolation --disable-pip-version-check
      "${WORK}/sources/python")
  set(check "import fisheye_calibration as fc, importlib.metadata as metadata, numpy"
            "assert fc.__file__.startswith('${WORK}/venv/'), fc.__file__"
            "camera = fc.Camera(focal_length=(100, 100), principal_point=(50, 40), distortion=(0, 0),"
            "                   rotation_vector=(0, 0, 0), translation=(0, 0, 100))"
            "view, mask = camera.correct(numpy.full((80, 100), 7, numpy.uint8))"
            "assert (view[mask == 0] == 7).all() and (mask == 0).any()"
            "licences = [file for file in metadata.files('fisheye_calibration') if file.name == 'LICENSE']"
            "assert 'Apache License' in licences[0].read_text(), licences"
            "files = metadata.files('fisheye_calibration')"
            "notices = [file.read_text() for file in files if file.name == 'LICENSE.pybind11']"
            "assert len(notices) == 1 and 'Wenzel Jakob' in notices[0], notices"
            "assert metadata.metadata('fisheye_calibration')['License'] == 'Apache-2.0'"
            "print(fc.__version__, metadata.version('fisheye_calibration'))")
  list(JOIN check "\n" check)
  run("${CMAKE_COMMAND}" -E chdir "${WORK}" "${WORK}/venv/bin/python" -c "${check}")
  string(STRIP "${text}" text)
  if(NOT text STREQUAL "${VERSION} ${VERSION}")
    message(FATAL_ERROR "the versions are ${text}, not ${VERSION}")
  endif()
else()
  message(FATAL_ERROR "unknown check ${DO}")
endif()
