// Where the points of a target lie on the bed.
#pragma once

#include <opencv2/core/types.hpp>
#include <string>
#include <utility>
#include <vector>

#include "detection/target_detection.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct World {
  float spacing = 0;               // of neighbouring points, world units
  std::pair<float, float> origin;  // X and Y of the first point
  int firstId = 1;

  cv::Point2f at(cv::Point2d steps) const;

  bool operator==(const World&) const = default;
};

// "8 x 6 inner corners"
std::string describeTarget(const Target& target);

// The found points with their numbers and places on the bed.
std::vector<CalibrationPoint> numberedPoints(const std::vector<GridPoint>& grid,
                                             const World& world);

}  // namespace fisheye_calibration::program
