// Parameters of the camera model.
#pragma once

#include <opencv2/core.hpp>

namespace fisheye_calibration::lens {

// Intrinsics: focal lengths and principal point in pixels, distortion, skew.
struct Camera {
  double fx = 0;
  double fy = 0;
  double cx = 0;
  double cy = 0;
  double k0 = 0;
  double k1 = 0;
  double alpha = 0;
};

// [fx, alpha fx, cx; 0, fy, cy; 0, 0, 1]
inline cv::Matx33d cameraMatrix(const Camera& c) {
  return {c.fx, c.alpha * c.fx, c.cx, 0, c.fy, c.cy, 0, 0, 1};
}

// Maps a target point X to the camera frame: Y = R(om) X + T.
struct Pose {
  cv::Vec3d om;
  cv::Vec3d T;
};

// Projects a target point to a raw-image pixel; R is the matrix of the pose's rotation vector.
cv::Point2d projectPoint(const Camera& camera, const cv::Matx33d& R, const cv::Vec3d& T,
                         const cv::Vec3d& X);

// The same without distortion: an ideal pinhole camera.
cv::Point2d projectPinhole(const Camera& camera, const cv::Matx33d& R, const cv::Vec3d& T,
                           const cv::Vec3d& X);

}  // namespace fisheye_calibration::lens
