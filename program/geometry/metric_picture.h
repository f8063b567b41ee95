// Pictures whose columns and rows run along the axes of the bed.
#pragma once

#include <functional>
#include <opencv2/core.hpp>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct MetricPicture {
  cv::Size size;
  double pixel;  // world units per pixel
  // Between a place of the picture, rows counted from the top, and a point of the bed.
  std::function<cv::Point2d(cv::Point2d place)> bedAt;
  std::function<cv::Point2d(cv::Point2d bed)> placeOf;
};

// A corrected view.
MetricPicture metricPicture(const FishEyeCalibrationParam& param, const cv::Size& size);

// A stitched canvas, or what was cropped from it.
MetricPicture metricPicture(const DualFishEyeCalibrationParam& dual);

}  // namespace fisheye_calibration::program
