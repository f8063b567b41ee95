// The picture of the residuals: where the measured points lie and, magnified, by how much the
// solved camera misses each of them.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "base/size.h"
#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

struct ResidualPlot {
  std::vector<CalibrationPoint> points;
  Size image;
  double rms = 0;
  bool trusted = true;
  cv::Point2d principalPoint;
  cv::Mat background;  // the grey picture, or empty
};

// How many times their length the residual arrows are drawn: 1, 2 or 5 times a power of ten.
double magnificationFor(const std::vector<CalibrationPoint>& points, const Size& image);

cv::Mat drawResidualPlot(const ResidualPlot& plot);

}  // namespace fisheye_calibration::program
