// The corrected view under the bed's grid.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "geometry/calibration_result.h"
#include "geometry/metric_picture.h"

namespace fisheye_calibration::program {

// Renders the frame, or says what is missing.
std::string correctedFigure(const CalibrationResult& result, const cv::Mat& frame);

// A picture of the bed with grid lines in mm, as a drawing in the pixels of the picture.
std::string griddedPicture(const cv::Mat& picture, const MetricPicture& metric,
                           const std::string& label, const std::string& content);

}  // namespace fisheye_calibration::program
