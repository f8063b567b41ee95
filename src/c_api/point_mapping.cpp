#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <span>

#include "c_api/arguments.h"
#include "c_api/records.h"
#include "robust/viewing_ray.h"
#include "single/record.h"

namespace fisheye_calibration::c_api {
namespace {

constexpr float kNowhere = std::numeric_limits<float>::quiet_NaN();

// Calls map(in, out) with the first number of every point.
template <class Map>
fcal_status mapPoints(std::span<const float> in, std::size_t inWidth, std::span<float> out,
                      const Map& map) {
  for (std::size_t i = 0; i * inWidth < in.size(); ++i) {
    map(in.data() + i * inWidth, out.data() + i * kPlane);
  }
  return FCAL_OK;
}

void narrow(const cv::Point2d& point, float* out) {
  out[0] = static_cast<float>(point.x);
  out[1] = static_cast<float>(point.y);
}

void narrow(const std::optional<cv::Point2d>& point, float* out) {
  if (point) {
    narrow(*point, out);
  } else {
    out[0] = out[1] = kNowhere;
  }
}

// Maps between a plane of the world and an image that is a grid on it.
template <class Record, class Map>
fcal_status mapPlane(const Record* record, const char* name, std::span<const float> in,
                     std::span<float> out, const Map& map) {
  const auto known = recordOf(required(record, name));
  return mapPoints(in, kPlane, out,
                   [&](const float* p, float* q) { map(p[0], p[1], known, q[0], q[1]); });
}

}  // namespace
}  // namespace fisheye_calibration::c_api

using namespace fisheye_calibration;
using namespace fisheye_calibration::c_api;

// NOLINTBEGIN(readability-identifier-naming): parameters have their names in C

fcal_status fcal_world_to_raw(const fcal_camera* camera, const float* world_xyz, int32_t count,
                              float* raw_xy) {
  return guarded([&] {
    const FishEyeCalibrationParam param = recordOf(required(camera, "camera"));
    const auto in = checkedArray(world_xyz, count, "world_xyz", kSpace);
    const auto out = checkedArray(raw_xy, count, "raw_xy", kPlane);
    const lens::Camera model = single::rawCamera(param);
    const cv::Matx33d R = lens::rotationFromVector(single::rotationVector(param));
    const cv::Vec3d T = single::translation(param);
    return mapPoints(in, kSpace, out, [&](const float* p, float* q) {
      narrow(lens::projectPoint(model, R, T, {p[0], p[1], p[2]}), q);
    });
  });
}

fcal_status fcal_world_to_corrected(const fcal_camera* camera, float cx, float cy,
                                    const float* world_xyz, int32_t count, float* corrected_xy) {
  return guarded([&] {
    const FishEyeCalibrationParam param = recordOf(required(camera, "camera"));
    const auto in = checkedArray(world_xyz, count, "world_xyz", kSpace);
    const auto out = checkedArray(corrected_xy, count, "corrected_xy", kPlane);
    const lens::Camera model = single::correctedCamera(param, cx, cy);
    const cv::Matx33d R = lens::rotationFromVector(single::rotationVector(param));
    const cv::Vec3d T = single::translation(param);
    return mapPoints(in, kSpace, out, [&](const float* p, float* q) {
      narrow(lens::projectPinhole(model, R, T, {p[0], p[1], p[2]}), q);
    });
  });
}

fcal_status fcal_world_to_view(const fcal_camera* camera, float cx, float cy, const float* world_xy,
                               int32_t count, float* view_xy) {
  return guarded([&] {
    const auto in = checkedArray(world_xy, count, "world_xy", kPlane);
    const auto out = checkedArray(view_xy, count, "view_xy", kPlane);
    return mapPlane(camera, "camera", in, out,
                    [&](float Xw, float Yw, const auto& param, float& x, float& y) {
                      WorldToSecondCorrectedImagePoint(Xw, Yw, 0, param, cx, cy, x, y);
                    });
  });
}

fcal_status fcal_view_to_world(const fcal_camera* camera, float cx, float cy, const float* view_xy,
                               int32_t count, float* world_xy) {
  return guarded([&] {
    const auto in = checkedArray(view_xy, count, "view_xy", kPlane);
    const auto out = checkedArray(world_xy, count, "world_xy", kPlane);
    return mapPlane(camera, "camera", in, out,
                    [&](float x, float y, const auto& param, float& Xw, float& Yw) {
                      float Zw = 0;
                      CorrectedImageToWorldPoint(x, y, cx, cy, param, Xw, Yw, Zw);
                    });
  });
}

fcal_status fcal_raw_to_world(const fcal_camera* camera, const float* raw_xy, int32_t count,
                              float* world_xy) {
  return guarded([&] {
    const FishEyeCalibrationParam param = recordOf(required(camera, "camera"));
    const auto in = checkedArray(raw_xy, count, "raw_xy", kPlane);
    const auto out = checkedArray(world_xy, count, "world_xy", kPlane);
    const lens::Camera model = single::rawCamera(param);
    const lens::Pose pose{single::rotationVector(param), single::translation(param)};
    return mapPoints(in, kPlane, out, [&](const float* p, float* q) {
      narrow(robust::bedPointOf(model, pose, {p[0], p[1]}), q);
    });
  });
}

fcal_status fcal_raw_to_corrected(const fcal_camera* camera, float cx, float cy,
                                  const float* raw_xy, int32_t count, float* corrected_xy) {
  return guarded([&] {
    const FishEyeCalibrationParam param = recordOf(required(camera, "camera"));
    const auto in = checkedArray(raw_xy, count, "raw_xy", kPlane);
    const auto out = checkedArray(corrected_xy, count, "corrected_xy", kPlane);
    const lens::Camera raw = single::rawCamera(param);
    const lens::Camera corrected = single::correctedCamera(param, cx, cy);
    return mapPoints(in, kPlane, out, [&](const float* p, float* q) {
      const cv::Point2d pixel(p[0], p[1]);
      std::optional<cv::Point2d> shown;
      if (robust::isWithinRange(raw, pixel)) {
        shown = lens::projectPinhole(corrected, cv::Matx33d::eye(), cv::Vec3d(),
                                     robust::viewingRay(raw, pixel));
      }
      narrow(shown, q);
    });
  });
}

fcal_status fcal_world_to_stitched(const fcal_dual* dual, const float* world_xy, int32_t count,
                                   float* stitched_uv) {
  return guarded([&] {
    const auto in = checkedArray(world_xy, count, "world_xy", kPlane);
    const auto out = checkedArray(stitched_uv, count, "stitched_uv", kPlane);
    return mapPlane(dual, "dual", in, out,
                    [](float Xw, float Yw, const auto& record, float& u, float& v) {
                      DualCam_WorldToSecondCorrectedImagePoint(Xw, Yw, 0, record, u, v);
                    });
  });
}

fcal_status fcal_stitched_to_world(const fcal_dual* dual, const float* stitched_uv, int32_t count,
                                   float* world_xy) {
  return guarded([&] {
    const auto in = checkedArray(stitched_uv, count, "stitched_uv", kPlane);
    const auto out = checkedArray(world_xy, count, "world_xy", kPlane);
    return mapPlane(dual, "dual", in, out,
                    [](float u, float v, const auto& record, float& Xw, float& Yw) {
                      float Zw = 0;
                      DualCam_CorrectedImageToWorldPoint(u, v, record, Xw, Yw, Zw);
                    });
  });
}

// NOLINTEND(readability-identifier-naming)
