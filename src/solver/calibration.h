// Intrinsics of one camera and the pose of a flat target in each view.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "lens/camera.h"
#include "solver/view_points.h"

namespace fisheye_calibration::solver {

struct Calibration {
  lens::Camera camera;
  std::vector<lens::Pose> poses;  // one per view
  double rms = 0;                 // reprojection error, pixels
};

// Damped Gauss-Newton on the reprojection error over focal lengths, principal point and distortion;
// skew is held at 0 (compatibility 18). Starts from an equidistant lens of focal length max(width,
// height)/pi, centred in the image. Step i is scaled by 1 - 0.6^(i + 1), and all poses are
// estimated again after it. `criteria` bound the number of steps and the relative change of (fx,
// fy, cx, cy); criteria of unknown type never end it. Divergence is not reported: check the rms.
Calibration calibrate(const std::vector<ViewPoints>& views, const cv::Size& imageSize,
                      const cv::TermCriteria& criteria);

}  // namespace fisheye_calibration::solver
