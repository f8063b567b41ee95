// Random views for both interfaces, and the call of the C interface on them.
#pragma once

#include <cstddef>
#include <vector>

#include "c_api/records.h"
#include "robust/bed_error.h"
#include "robust/robust_calibration.h"
#include "single/solver_view.h"
#include "support/synthetic_rig.h"

namespace c_api_tests {

namespace robust = fisheye_calibration::robust;
namespace single = fisheye_calibration::single;
namespace solver = fisheye_calibration::solver;

struct Views {
  explicit Views(const support::Rig& rig) : imageSize(rig.camera.imageSize) {
    for (const support::RigView& view : rig.views) {
      records.push_back(support::calibrationPoints(view));
      points.push_back(pointsOf(records.back()));
    }
  }

  std::vector<solver::ViewPoints> solverViews() const {
    std::vector<solver::ViewPoints> views;
    for (const auto& list : records) {
      views.push_back(single::solverView(list));
    }
    return views;
  }

  std::vector<fcal_target_view> targets() const {
    std::vector<fcal_target_view> views;
    for (const auto& list : points) {
      views.push_back({list.data(), countOf(list)});
    }
    return views;
  }

  // Moves a measured point.
  void displace(std::size_t view, std::size_t point, float dx) {
    records[view][point].ImagePtX += dx;
    points[view][point].x += dx;
  }

  cv::Size imageSize;
  std::vector<std::vector<CalibrationPoint>> records;
  std::vector<std::vector<fcal_point>> points;
};

struct Solved {
  explicit Solved(const Views& views)
      : solutions(views.points.size()), wrongViews(solutions.size(), 9) {
    std::size_t total = 0;
    for (const auto& list : views.points) {
      total += list.size();
    }
    wrongPoints.assign(total, 9);
    result.size = sizeof result;
  }

  fcal_status status = FCAL_OTHER;
  fcal_views_result result{};
  std::vector<fcal_solution> solutions;
  std::vector<uint8_t> wrongPoints;
  std::vector<uint8_t> wrongViews;
};

inline Solved solve(const Views& views, const fcal_views_options* options = nullptr) {
  Solved solved(views);
  const auto targets = views.targets();
  solved.status = fcal_calibrate_views(views.imageSize.width, views.imageSize.height,
                                       targets.data(), static_cast<int32_t>(targets.size()),
                                       options, &solved.result, solved.solutions.data(),
                                       solved.wrongPoints.data(), solved.wrongViews.data());
  return solved;
}

inline fcal_views_options defaultOptions() {
  fcal_views_options options{};
  options.size = sizeof options;
  return options;
}

inline robust::BedView bedViewOf(const robust::RobustCalibration& solved, std::size_t j) {
  return {solved.camera, solved.poses[j], solved.covariance[j]};
}

}  // namespace c_api_tests
