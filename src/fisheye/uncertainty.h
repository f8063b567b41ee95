// Reprojection residuals of a solution.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "fisheye/camera.h"
#include "fisheye/view_points.h"

namespace fisheye {

// Measured minus projected, pixels, views one after another.
std::vector<cv::Vec2d> reprojectionResiduals(const std::vector<ViewPoints>& views,
                                             const Camera& camera, const std::vector<Pose>& poses);

// sqrt(sum(dx^2 + dy^2) / number of points)
double rootMeanSquare(const std::vector<cv::Vec2d>& residuals);

}  // namespace fisheye
