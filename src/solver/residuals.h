// Reprojection residuals of a solution.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "lens/camera.h"
#include "solver/view_points.h"

namespace fisheye_calibration::solver {

// Measured minus projected positions in pixels, view by view.
std::vector<cv::Vec2d> reprojectionResiduals(const std::vector<ViewPoints>& views,
                                             const lens::Camera& camera,
                                             const std::vector<lens::Pose>& poses);

// sqrt(sum(dx^2 + dy^2) / number of points)
double rootMeanSquare(const std::vector<cv::Vec2d>& residuals);

}  // namespace fisheye_calibration::solver
