// The picture of a hand-eye fit's residuals on the work plane.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "geometry/affine_map.h"

namespace fisheye_calibration::program {

// Every point at its measured world position (X to the right, Y downwards), with its residual as an
// arrow that is magnified by the factor in the legend. Filled marks are the points that the
// library's error figures sum.
cv::Mat drawAffinePlot(const AffineMap& map, const std::vector<CalibrationPoint>& points);

}  // namespace fisheye_calibration::program
