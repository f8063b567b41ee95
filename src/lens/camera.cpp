#include "lens/camera.h"

#include "lens/camera_model-inl.h"

namespace fisheye_calibration::lens {

namespace model = HWY_NAMESPACE;

cv::Point2d projectPoint(const Camera& camera, const cv::Matx33d& R, const cv::Vec3d& T,
                         const cv::Vec3d& X) {
  const auto p = model::projectPoint(camera, R, T, X[0], X[1], X[2]);
  return {p.u, p.v};
}

cv::Point2d projectPinhole(const Camera& camera, const cv::Matx33d& R, const cv::Vec3d& T,
                           const cv::Vec3d& X) {
  const auto Y = model::toCameraFrame(R, T, X[0], X[1], X[2]);
  const double z = model::guardedDepth(Y.z);
  const double a = Y.x / z;
  const double b = Y.y / z;
  return {(a + camera.alpha * b) * camera.fx + camera.cx, b * camera.fy + camera.cy};
}

}  // namespace fisheye_calibration::lens
