#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "c_api/arguments.h"
#include "c_api/pictures.h"
#include "c_api/records.h"
#include "stitching/stitching.h"

namespace fisheye_calibration::c_api {
namespace {

// A camera of a pair with copies of its record and points, which the input refers to.
class CheckedCamera {
 public:
  CheckedCamera(const fcal_rig_view& view, const std::string& name, Pixels pixels)
      : frame_(checkedImage(view.frame, name + ".frame", pixels)),
        bits_(view.frame.bits),
        param_(recordOf(required(view.camera, name + ".camera"))),
        points_(recordsOf(checkedArray(view.points, view.count, name + ".points"))) {}

  stitching::CameraInput input() const {
    return {frame_.pixels, frame_.width, frame_.height, bits_, param_, points_, frame_.step, false};
  }

 private:
  images::Target frame_;
  int bits_;
  FishEyeCalibrationParam param_;
  std::vector<CalibrationPoint> points_;
};

fcal_status withoutCommonPoints() {
  return withoutResult("points", "the cameras share none, or they do not pair");
}

// An output of unknown length.
struct Growing {
  std::span<fcal_point> places;
  int32_t& needed;
};

bool fits(const std::vector<CalibrationPoint>& points, const Growing& output) {
  return points.size() <= output.places.size();
}

}  // namespace
}  // namespace fisheye_calibration::c_api

using namespace fisheye_calibration;
using namespace fisheye_calibration::c_api;

// NOLINTBEGIN(readability-identifier-naming): parameters have their names in C

fcal_status fcal_common_points(const fcal_point* points1, int32_t count1, const fcal_point* points2,
                               int32_t count2, int32_t id_count, fcal_point* common1,
                               int32_t capacity1, int32_t* needed1, fcal_point* common2,
                               int32_t capacity2, int32_t* needed2) {
  return guarded([&]() -> fcal_status {
    const auto first = checkedArray(points1, count1, "points1");
    const auto second = checkedArray(points2, count2, "points2");
    const Growing outputs[] = {
        {checkedArray(common1, capacity1, "common1"), required(needed1, "needed1")},
        {checkedArray(common2, capacity2, "common2"), required(needed2, "needed2")}};
    std::vector<CalibrationPoint> found[2];
    GetCommonPoints(recordsOf(first), recordsOf(second), id_count, found[0], found[1]);
    bool doFit = true;
    for (std::size_t i = 0; i < 2; ++i) {
      outputs[i].needed = static_cast<int32_t>(found[i].size());
      doFit = doFit && fits(found[i], outputs[i]);
    }
    if (!doFit) {
      if (capacity1 == 0 && capacity2 == 0) {
        return FCAL_OK;
      }
      refuse("capacity1, capacity2", "smaller than needed");
    }
    for (std::size_t i = 0; i < 2; ++i) {
      store(found[i], outputs[i].places);
    }
    return FCAL_OK;
  });
}

fcal_status fcal_stitched_size(const fcal_rig_view* first, const fcal_rig_view* second,
                               int32_t* width, int32_t* height) {
  return guarded([&]() -> fcal_status {
    const CheckedCamera camera1(required(first, "first"), "first", Pixels::kOptional);
    const CheckedCamera camera2(required(second, "second"), "second", Pixels::kOptional);
    required(width, "width");
    required(height, "height");
    const auto size = stitching::stitchedSize(camera1.input(), camera2.input());
    if (!size) {
      return withoutCommonPoints();
    }
    *width = size->width;
    *height = size->height;
    return FCAL_OK;
  });
}

fcal_status fcal_stitch(const fcal_rig_view* first, const fcal_rig_view* second,
                        const fcal_image* canvas, fcal_dual* dual) {
  return guarded([&]() -> fcal_status {
    const CheckedCamera camera1(required(first, "first"), "first", Pixels::kRequired);
    const CheckedCamera camera2(required(second, "second"), "second", Pixels::kRequired);
    const images::Target target = checkedImage(required(canvas, "canvas"), "canvas");
    required(dual, "dual");
    requireSameBits(first->frame, "first.frame", *canvas, "canvas");
    requireSameBits(second->frame, "second.frame", *canvas, "canvas");
    const auto described =
        stitching::stitch(camera1.input(), camera2.input(), target, canvas->bits);
    if (!described) {
      return withoutCommonPoints();
    }
    store(*described, *dual);
    return FCAL_OK;
  });
}

// NOLINTEND(readability-identifier-naming)
