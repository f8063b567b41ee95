// Points from frame to frame, parameter files and plane registration.
#include <string>

#include "arrays.h"

namespace fisheye_calibration::python {
namespace {

using CameraMap = fcal_status (*)(const fcal_camera*, const float*, std::int32_t, float*);
using CentredMap = fcal_status (*)(const fcal_camera*, float, float, const float*, std::int32_t,
                                   float*);
using DualMap = fcal_status (*)(const fcal_dual*, const float*, std::int32_t, float*);

// call(in, count, out) for rows of `width` numbers; every result has two.
template <class Number, class Call>
Array<Number> mapped(const Array<Number>& points, py::ssize_t width, const Call& call) {
  const std::int32_t count = rowsOf(points, width, "points");
  Array<Number> result({py::ssize_t{count}, py::ssize_t{2}});
  const Number* const in = points.data();
  Number* const out = result.mutable_data();
  run([&] { return call(in, count, out); });
  return result;
}

template <CameraMap kMap, py::ssize_t kWidth>
Array<float> byCamera(const Array<fcal_camera>& camera, const Array<float>& points) {
  const fcal_camera* const record = recordOf(camera, "camera");
  return mapped(points, kWidth, [&](const float* in, std::int32_t count, float* out) {
    return kMap(record, in, count, out);
  });
}

template <CentredMap kMap, py::ssize_t kWidth>
Array<float> byCentredCamera(const Array<fcal_camera>& camera, float cx, float cy,
                             const Array<float>& points) {
  const fcal_camera* const record = recordOf(camera, "camera");
  return mapped(points, kWidth, [&](const float* in, std::int32_t count, float* out) {
    return kMap(record, cx, cy, in, count, out);
  });
}

template <DualMap kMap>
Array<float> byDual(const Array<fcal_dual>& dual, const Array<float>& points) {
  const fcal_dual* const record = recordOf(dual, "record");
  return mapped(points, 2, [&](const float* in, std::int32_t count, float* out) {
    return kMap(record, in, count, out);
  });
}

template <auto kLoad, class Record>
Array<Record> loaded(const std::string& path) {
  Array<Record> record = newRecord<Record>();
  Record* const fields = record.mutable_data();
  run([&] { return kLoad(path.c_str(), fields); });
  return record;
}

template <auto kSave, class Record>
void save(const std::string& path, const Array<Record>& record) {
  const Record* const fields = recordOf(record, "record");
  run([&] { return kSave(path.c_str(), fields); });
}

py::tuple fitAffine(const Points& points) {
  const std::int32_t count = countOf(points.size(), "points");
  const fcal_point* const in = points.data();
  Array<double> coefficients(6);
  double* const out = coefficients.mutable_data();
  double errorX = 0;
  double errorY = 0;
  run([&] { return fcal_fit_affine(in, count, out, &errorX, &errorY); });
  return py::make_tuple(coefficients, errorX, errorY);
}

py::tuple commonPoints(const Points& points1, const Points& points2, std::int32_t idCount) {
  const std::int32_t count1 = countOf(points1.size(), "points1");
  const std::int32_t count2 = countOf(points2.size(), "points2");
  Points common1(count1);
  Points common2(count2);
  fcal_point* const out1 = common1.mutable_data();
  fcal_point* const out2 = common2.mutable_data();
  const fcal_point* const in1 = points1.data();
  const fcal_point* const in2 = points2.data();
  std::int32_t needed1 = 0;
  std::int32_t needed2 = 0;
  run([&] {
    return fcal_common_points(in1, count1, in2, count2, idCount, out1, count1, &needed1, out2,
                              count2, &needed2);
  });
  common1.resize({needed1});
  common2.resize({needed2});
  return py::make_tuple(common1, common2);
}

template <class Function>
void define(py::module_& module, const char* name, Function* function, const char* record) {
  module.def(name, function, py::arg(record).noconvert(), py::arg("points").noconvert());
}

template <class Function>
void defineCentred(py::module_& module, const char* name, Function* function) {
  module.def(name, function, py::arg("camera").noconvert(), py::arg("cx"), py::arg("cy"),
             py::arg("points").noconvert());
}

}  // namespace

void definePointMaps(py::module_& module) {
  define(module, "world_to_raw", &byCamera<&fcal_world_to_raw, 3>, "camera");
  define(module, "raw_to_world", &byCamera<&fcal_raw_to_world, 2>, "camera");
  defineCentred(module, "world_to_corrected", &byCentredCamera<&fcal_world_to_corrected, 3>);
  defineCentred(module, "raw_to_corrected", &byCentredCamera<&fcal_raw_to_corrected, 2>);
  defineCentred(module, "world_to_view", &byCentredCamera<&fcal_world_to_view, 2>);
  defineCentred(module, "view_to_world", &byCentredCamera<&fcal_view_to_world, 2>);
  define(module, "world_to_stitched", &byDual<&fcal_world_to_stitched>, "record");
  define(module, "stitched_to_world", &byDual<&fcal_stitched_to_world>, "record");
  module.def("load_camera", &loaded<&fcal_load_camera, fcal_camera>, py::arg("path"));
  module.def("save_camera", &save<&fcal_save_camera, fcal_camera>, py::arg("path"),
             py::arg("record").noconvert());
  module.def("load_dual", &loaded<&fcal_load_dual, fcal_dual>, py::arg("path"));
  module.def("save_dual", &save<&fcal_save_dual, fcal_dual>, py::arg("path"),
             py::arg("record").noconvert());
  module.def("fit_affine", &fitAffine, py::arg("points").noconvert());
  module.def("common_points", &commonPoints, py::arg("points1").noconvert(),
             py::arg("points2").noconvert(), py::arg("id_count"));
}

}  // namespace fisheye_calibration::python
