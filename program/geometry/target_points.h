// The two positions of a target point.
#pragma once

#include <opencv2/core/types.hpp>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// On the bed, world units.
inline cv::Point2f bedPosition(const CalibrationPoint& point) { return {point.Xw, point.Yw}; }

// In the raw picture, where it was measured, pixels.
inline cv::Point2f imagePosition(const CalibrationPoint& point) {
  return {point.ImagePtX, point.ImagePtY};
}

}  // namespace fisheye_calibration::program
