#include "lens/rotation.h"

#include <cmath>
#include <limits>

namespace fisheye_calibration::lens {
namespace {

cv::Matx33d crossProductMatrix(const cv::Vec3d& a) {
  return {0, -a[2], a[1], a[2], 0, -a[0], -a[1], a[0], 0};
}

cv::Vec3d unitVector(int axis) {
  cv::Vec3d e;
  e[axis] = 1;
  return e;
}

}  // namespace

cv::Matx33d rotationFromVector(const cv::Vec3d& om) {
  const double theta = std::sqrt(om.dot(om));
  if (theta < std::numeric_limits<double>::epsilon()) {
    return cv::Matx33d::eye();
  }
  const double c = std::cos(theta);
  const double s = std::sin(theta);
  const cv::Vec3d a = om * (1 / theta);
  return c * cv::Matx33d::eye() + (1 - c) * a * a.t() + s * crossProductMatrix(a);
}

std::array<cv::Matx33d, 3> rotationDerivative(const cv::Vec3d& om) {
  std::array<cv::Matx33d, 3> dR;
  const double theta = std::sqrt(om.dot(om));
  if (theta < std::numeric_limits<double>::epsilon()) {
    for (int i = 0; i < 3; ++i) {
      dR[static_cast<std::size_t>(i)] = crossProductMatrix(unitVector(i));
    }
    return dR;
  }
  const double c = std::cos(theta);
  const double s = std::sin(theta);
  const cv::Vec3d a = om * (1 / theta);
  // dtheta/dom_i = a_i and da/dom_i = (e_i - a_i a)/theta, applied to Rodrigues' formula.
  for (int i = 0; i < 3; ++i) {
    const cv::Vec3d da = (unitVector(i) - a[i] * a) * (1 / theta);
    dR[static_cast<std::size_t>(i)] = -s * a[i] * cv::Matx33d::eye() + s * a[i] * a * a.t() +
                                      (1 - c) * (da * a.t() + a * da.t()) +
                                      c * a[i] * crossProductMatrix(a) + s * crossProductMatrix(da);
  }
  return dR;
}

}  // namespace fisheye_calibration::lens
