#include "fisheye/camera.h"

#include "fisheye/camera_model-inl.h"

namespace fisheye {

namespace model = HWY_NAMESPACE;

Camera readCamera(const cv::Mat& K, const cv::Mat& D, double alpha) {
  cv::Matx33d k;
  K.convertTo(k, CV_64F);
  cv::Mat d;
  D.convertTo(d, CV_64F);
  const double* distortion = d.empty() ? nullptr : d.ptr<double>();
  return {k(0, 0),
          k(1, 1),
          k(0, 2),
          k(1, 2),
          distortion ? distortion[0] : 0,
          distortion ? distortion[1] : 0,
          alpha};
}

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

}  // namespace fisheye
