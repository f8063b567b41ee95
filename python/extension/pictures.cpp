// Frames, corrected views and stitched images.
#include <cstdlib>

#include "arrays.h"

namespace fisheye_calibration::python {
namespace {

constexpr py::ssize_t kColour = 3;  // dimensions of a picture with more than one byte per pixel
constexpr py::ssize_t kLargest = std::numeric_limits<std::int32_t>::max();

py::ssize_t bytesPerPixel(const Picture& picture) {
  return picture.ndim() == kColour ? picture.shape(2) : 1;
}

bool isPicture(const Picture& picture) {
  if (picture.ndim() == 2) {
    return true;
  }
  return picture.ndim() == kColour && (picture.shape(2) == 3 || picture.shape(2) == 4);
}

fcal_image described(const Picture& picture, std::uint8_t* data, const char* name) {
  if (!hasPlainRows(picture)) {
    throw py::value_error(std::string(name) + ": not a picture whose rows have a stride");
  }
  const std::int32_t height = countOf(picture.shape(0), name);
  const std::int32_t width = countOf(picture.shape(1), name);
  // The stride of a single row has no meaning; 0 stands for the one without padding.
  const py::ssize_t stride = height > 1 ? picture.strides(0) : 0;
  return {data, width, height, static_cast<std::int32_t>(stride),
          static_cast<std::int32_t>(8 * bytesPerPixel(picture))};
}

void correct(const Picture& frame, const Array<fcal_camera>& camera, Picture view, Picture mask) {
  const fcal_image source = imageOf(frame, "frame");
  const fcal_camera* const record = recordOf(camera, "camera");
  const fcal_image target = writableImageOf(view, "out");
  const fcal_image marks = writableImageOf(mask, "mask");
  run([&] { return fcal_correct(&source, record, &target, &marks); });
}

void crop(const Picture& source, Picture target) {
  const fcal_image from = imageOf(source, "picture");
  const fcal_image to = writableImageOf(target, "out");
  run([&] { return fcal_crop(&from, &to); });
}

fcal_rig_view rigViewOf(const Picture& frame, const Array<fcal_camera>& camera,
                        const Points& points, const char* name) {
  return {imageOf(frame, name), recordOf(camera, name), points.data(),
          countOf(points.size(), name)};
}

py::tuple stitchedSize(const Picture& frame1, const Array<fcal_camera>& camera1,
                       const Points& points1, const Picture& frame2,
                       const Array<fcal_camera>& camera2, const Points& points2) {
  const fcal_rig_view first = rigViewOf(frame1, camera1, points1, "first");
  const fcal_rig_view second = rigViewOf(frame2, camera2, points2, "second");
  std::int32_t width = 0;
  std::int32_t height = 0;
  run([&] { return fcal_stitched_size(&first, &second, &width, &height); });
  return py::make_tuple(width, height);
}

Array<fcal_dual> stitch(const Picture& frame1, const Array<fcal_camera>& camera1,
                        const Points& points1, const Picture& frame2,
                        const Array<fcal_camera>& camera2, const Points& points2, Picture canvas) {
  const fcal_rig_view first = rigViewOf(frame1, camera1, points1, "first");
  const fcal_rig_view second = rigViewOf(frame2, camera2, points2, "second");
  const fcal_image target = writableImageOf(canvas, "canvas");
  Array<fcal_dual> dual = newRecord<fcal_dual>();
  fcal_dual* const record = dual.mutable_data();
  run([&] { return fcal_stitch(&first, &second, &target, record); });
  return dual;
}

void cropStitched(const Picture& source, std::int32_t left, std::int32_t top, Picture target,
                  Array<fcal_dual> dual) {
  const fcal_image from = imageOf(source, "image");
  const fcal_image to = writableImageOf(target, "out");
  fcal_dual* const record = recordOf(dual, "record");
  run([&] { return fcal_crop_stitched(&from, left, top, &to, record); });
}

}  // namespace

bool hasPlainRows(const Picture& picture) {
  if (!isPicture(picture)) {
    return false;
  }
  const py::ssize_t bytes = bytesPerPixel(picture);
  const bool bytesFollow = picture.ndim() == 2 || picture.strides(2) == 1;
  const bool pixelsFollow = picture.shape(1) <= 1 || picture.strides(1) == bytes;
  const py::ssize_t row = picture.shape(1) * bytes;
  const py::ssize_t stride = picture.shape(0) > 1 ? std::abs(picture.strides(0)) : row;
  const bool rowsAreApart = stride >= row;
  // The C interface counts bytes from the first to the last one in 32 bits. Divided, because the
  // product might overflow.
  const bool isNear = picture.shape(0) <= 1 || stride <= (kLargest - row) / (picture.shape(0) - 1);
  return bytesFollow && pixelsFollow && rowsAreApart && isNear;
}

fcal_image imageOf(const Picture& picture, const char* name) {
  return described(picture, const_cast<std::uint8_t*>(picture.data()), name);
}

fcal_image writableImageOf(Picture& picture, const char* name) {
  if (!picture.writeable()) {
    throw py::value_error(std::string(name) + ": read-only");
  }
  return described(picture, picture.mutable_data(), name);
}

void definePictures(py::module_& module) {
  module.def("has_plain_rows", &hasPlainRows, py::arg("picture").noconvert());
  module.def("correct", &correct, py::arg("frame").noconvert(), py::arg("camera").noconvert(),
             py::arg("out").noconvert(), py::arg("mask").noconvert());
  module.def("crop", &crop, py::arg("picture").noconvert(), py::arg("out").noconvert());
  module.def("stitched_size", &stitchedSize, py::arg("frame1").noconvert(),
             py::arg("camera1").noconvert(), py::arg("points1").noconvert(),
             py::arg("frame2").noconvert(), py::arg("camera2").noconvert(),
             py::arg("points2").noconvert());
  module.def("stitch", &stitch, py::arg("frame1").noconvert(), py::arg("camera1").noconvert(),
             py::arg("points1").noconvert(), py::arg("frame2").noconvert(),
             py::arg("camera2").noconvert(), py::arg("points2").noconvert(),
             py::arg("canvas").noconvert());
  module.def("crop_stitched", &cropStitched, py::arg("image").noconvert(), py::arg("left"),
             py::arg("top"), py::arg("out").noconvert(), py::arg("record").noconvert());
}

}  // namespace fisheye_calibration::python
