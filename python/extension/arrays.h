// NumPy arrays as the C interface takes them. Every array argument of the extension module must
// have the exact element type and layout; the Python modules convert and explain, this one only
// keeps calls from leaving the caller's memory.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "fisheye_calibration.hpp"

namespace fisheye_calibration::python {

namespace py = pybind11;

template <class Element>
using Array = py::array_t<Element, py::array::c_style>;
using Points = Array<fcal_point>;
using Picture = py::array_t<std::uint8_t, 0>;  // of any strides

// Calls without the interpreter's lock; throws unless the status is FCAL_OK. The text of the error
// belongs to the thread, so it is the one of this call.
template <class Call>
void run(const Call& call) {
  const py::gil_scoped_release unlocked;
  fcal::check(call());
}

inline std::int32_t countOf(py::ssize_t size, const char* name) {
  if (size > std::numeric_limits<std::int32_t>::max()) {
    throw py::value_error(std::string(name) + ": more than 2^31 - 1 elements");
  }
  return static_cast<std::int32_t>(size);
}

template <class Record>
const Record* recordOf(const Array<Record>& record, const char* name) {
  if (record.size() != 1) {
    throw py::value_error(std::string(name) + ": not one record");
  }
  return record.data();
}

template <class Record>
Record* recordOf(Array<Record>& record, const char* name) {
  if (record.size() != 1) {
    throw py::value_error(std::string(name) + ": not one record");
  }
  return record.mutable_data();
}

template <class Record>
Array<Record> newRecord() {
  Array<Record> record(py::array::ShapeContainer{});
  *record.mutable_data() = Record{};
  return record;
}

// Rows of `width` numbers.
template <class Number>
std::int32_t rowsOf(const Array<Number>& points, py::ssize_t width, const char* name) {
  if (points.ndim() != 2 || points.shape(1) != width) {
    throw py::value_error(std::string(name) + ": not of shape (n, " + std::to_string(width) + ")");
  }
  return countOf(points.shape(0), name);
}

// Whether the pixels of every row follow each other, so that a stride from row to row of 32 bits
// describes the picture.
bool hasPlainRows(const Picture& picture);

// A picture that is only read, or that is written.
fcal_image imageOf(const Picture& picture, const char* name);
fcal_image writableImageOf(Picture& picture, const char* name);

void definePointMaps(py::module_& module);
void defineCalibrations(py::module_& module);
void definePictures(py::module_& module);

}  // namespace fisheye_calibration::python
