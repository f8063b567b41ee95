// Pictures whose columns and rows run along the axes of the bed.
#pragma once

#include <functional>
#include <opencv2/core/types.hpp>

#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct MetricPicture {
  Size size;
  double pixel;  // world units per pixel
  // Between a position in the picture, rows counted from the top, and a point of the bed.
  std::function<cv::Point2d(cv::Point2d position)> bedAt;
  std::function<cv::Point2d(cv::Point2d bed)> positionOf;
};

// A corrected view.
MetricPicture metricPicture(const FishEyeCalibrationParam& param, const Size& size);

// A stitched canvas, or a crop of it.
MetricPicture metricPicture(const DualFishEyeCalibrationParam& dual);

}  // namespace fisheye_calibration::program
