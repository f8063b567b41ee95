// The extension module fisheye_calibration._core: the C interface with NumPy arrays. Records are
// structured arrays whose layout is that of the C header.
#include <exception>

#include "arrays.h"

namespace fisheye_calibration::python {
namespace {

void registerRecords(py::module_& module) {
  PYBIND11_NUMPY_DTYPE(fcal_point, id, reserved1, reserved2, xw, yw, reserved3, x, y, reproj_x,
                       reproj_y, error_x, error_y);
  PYBIND11_NUMPY_DTYPE(fcal_camera, u0, v0, fx, fy, skewness, k, r, rx, ry, rz, tx, ty, tz, p,
                       pixel, datum_xw, datum_yw, image_dx, image_dy);
  PYBIND11_NUMPY_DTYPE(fcal_dual, pixel, width, height, datum_x, datum_y, datum_xw, datum_yw);
  PYBIND11_NUMPY_DTYPE(fcal_solution, fx, fy, cx, cy, k0, k1, alpha, rotation, translation,
                       covariance);
  module.attr("point_dtype") = py::dtype::of<fcal_point>();
  module.attr("camera_dtype") = py::dtype::of<fcal_camera>();
  module.attr("dual_dtype") = py::dtype::of<fcal_dual>();
  module.attr("solution_dtype") = py::dtype::of<fcal_solution>();
}

// Sets the Python exception of the class of fisheye_calibration._errors.
void raise(const char* name, const py::tuple& arguments) {
  const py::object type = py::module_::import("fisheye_calibration._errors").attr(name);
  PyErr_SetObject(type.ptr(), arguments.ptr());
}

void raiseByStatus(const fcal::Error& error) {
  switch (error.status()) {
    case FCAL_BAD_ARGUMENT:
      PyErr_SetString(PyExc_ValueError, error.what());
      break;
    case FCAL_NO_MEMORY:
      PyErr_SetString(PyExc_MemoryError, error.what());
      break;
    default:
      raise("Error", py::make_tuple(error.what()));
  }
}

void translate(std::exception_ptr raised) {
  try {
    std::rethrow_exception(raised);
  } catch (const fcal::NoSolution& error) {
    raise("NoSolutionError", py::make_tuple(error.what(), error.outcome, error.view));
  } catch (const fcal::NoResult& error) {
    raise("NoResultError", py::make_tuple(error.what()));
  } catch (const fcal::Error& error) {
    raiseByStatus(error);
  }
}

}  // namespace
}  // namespace fisheye_calibration::python

PYBIND11_MODULE(_core, module) {
  using namespace fisheye_calibration::python;
  module.doc() = "The library's C interface with NumPy arrays; private.";
  py::options options;
  options.disable_function_signatures();
  registerRecords(module);
  py::register_local_exception_translator(&translate);
  module.def("version", &fcal_version);
  definePointMaps(module);
  defineCalibrations(module);
  definePictures(module);
}
