// Plane-to-image homography.
#pragma once

#include <opencv2/core.hpp>

#include "solver/view_points.h"

namespace fisheye_calibration::solver {

// The homography that maps the plane points to the image points (at least one pair): the normalised
// direct linear transform and, for five or more points, ten Gauss-Newton steps.
cv::Matx33d planarHomography(const PlanarPoints& image, const PlanarPoints& plane);

}  // namespace fisheye_calibration::solver
