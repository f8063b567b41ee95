// Views with their poses, for the steps after pose estimation.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "lens/camera.h"
#include "solver/view_points.h"

namespace fisheye_calibration::fisheye {

struct PosedViews {
  std::vector<solver::ViewPoints> views;
  std::vector<lens::Pose> poses;
};

// Checks and reads the arguments that the steps share: 3-channel target points, 2-channel image
// points, rotation vectors omc and translations Tc of type CV_64FC3, one element per view.
PosedViews readPosedViews(cv::InputArrayOfArrays objectPoints, cv::InputArrayOfArrays imagePoints,
                          cv::InputArray omc, cv::InputArray Tc, const char* function);

}  // namespace fisheye_calibration::fisheye
