#include "c_api/solutions.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <opencv2/core.hpp>
#include <optional>
#include <span>
#include <vector>

#include "c_api/arguments.h"
#include "c_api/records.h"
#include "robust/viewing_ray.h"
#include "single/record.h"

namespace fisheye_calibration::c_api {

robust::BedView bedViewOf(const fcal_solution& solution) {
  const fcal_solution& s = solution;
  return {.camera = {s.fx, s.fy, s.cx, s.cy, s.k0, s.k1, s.alpha},
          .pose = {cv::Vec3d(s.rotation), cv::Vec3d(s.translation)},
          .covariance = robust::ViewMatrix(s.covariance)};
}

fcal_solution solutionOf(const robust::BedView& view) {
  const lens::Camera& c = view.camera;
  fcal_solution solution{c.fx, c.fy, c.cx, c.cy, c.k0, c.k1, c.alpha, {}, {}, {}};
  std::copy_n(view.pose.om.val, 3, solution.rotation);
  std::copy_n(view.pose.T.val, 3, solution.translation);
  std::copy(std::begin(view.covariance.val), std::end(view.covariance.val), solution.covariance);
  return solution;
}

namespace {

constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

std::vector<cv::Point2d> gridOf(std::span<const double> xy) {
  std::vector<cv::Point2d> grid;
  grid.reserve(xy.size() / kPlane);
  for (std::size_t i = 0; i < xy.size(); i += kPlane) {
    grid.emplace_back(xy[i], xy[i + 1]);
  }
  return grid;
}

}  // namespace
}  // namespace fisheye_calibration::c_api

using namespace fisheye_calibration;
using namespace fisheye_calibration::c_api;

// NOLINTBEGIN(readability-identifier-naming): parameters have their names in C

fcal_status fcal_solution_of_camera(const fcal_camera* camera, fcal_solution* solution) {
  return guarded([&]() -> fcal_status {
    const FishEyeCalibrationParam param = recordOf(required(camera, "camera"));
    required(solution, "solution") =
        solutionOf({.camera = single::rawCamera(param),
                    .pose = {single::rotationVector(param), single::translation(param)},
                    .covariance = robust::ViewMatrix::zeros()});
    return FCAL_OK;
  });
}

fcal_status fcal_raw_to_bed(const fcal_solution* solution, const double* raw_xy, int32_t count,
                            double* bed_xy) {
  return guarded([&]() -> fcal_status {
    const robust::BedView view = bedViewOf(required(solution, "solution"));
    const auto in = checkedArray(raw_xy, count, "raw_xy", kPlane);
    const auto out = checkedArray(bed_xy, count, "bed_xy", kPlane);
    for (std::size_t i = 0; i < in.size(); i += kPlane) {
      const auto point = robust::bedPointOf(view.camera, view.pose, {in[i], in[i + 1]});
      out[i] = point ? point->x : kUnknown;
      out[i + 1] = point ? point->y : kUnknown;
    }
    return FCAL_OK;
  });
}

fcal_status fcal_bed_bounds(const fcal_solution* solution, const double* bed_xy, int32_t count,
                            double* bounds) {
  return guarded([&]() -> fcal_status {
    const robust::BedView view = bedViewOf(required(solution, "solution"));
    const auto grid = gridOf(checkedArray(bed_xy, count, "bed_xy", kPlane));
    const auto out = checkedArray(bounds, count, "bounds");
    const std::vector<double> values = robust::bedBounds(view, grid);
    std::copy(values.begin(), values.end(), out.begin());
    return FCAL_OK;
  });
}

fcal_status fcal_bed_errors(const fcal_solution* solution, const fcal_solution* judged,
                            const double* bed_xy, int32_t count, double* errors) {
  return guarded([&]() -> fcal_status {
    const robust::BedView view = bedViewOf(required(solution, "solution"));
    const robust::BedView other = bedViewOf(required(judged, "judged"));
    const auto grid = gridOf(checkedArray(bed_xy, count, "bed_xy", kPlane));
    const auto out = checkedArray(errors, count, "errors");
    const std::vector<double> values =
        robust::judgedBedErrors(view, other.camera, other.pose, grid);
    std::copy(values.begin(), values.end(), out.begin());
    return FCAL_OK;
  });
}

// NOLINTEND(readability-identifier-naming)
