#include "robust/viewing_ray.h"

#include <algorithm>
#include <cmath>

#include "lens/camera_model-inl.h"
#include "lens/rotation.h"

namespace fisheye_calibration::robust {
namespace {

namespace model = lens::HWY_NAMESPACE;

// Newton's method converges in a few steps; bisection alone would need about 50.
constexpr int kMostSteps = 100;
constexpr double kRounding = 4e-16;

// Below this the ray counts as parallel to the plane.
constexpr double kParallel = 1e-12;

// (x, y) after the lens: u = fx (x + alpha y) + cx, v = fy y + cy
cv::Vec2d distortedPoint(const lens::Camera& camera, const cv::Point2d& pixel) {
  const double y = (pixel.y - camera.cy) / camera.fy;
  return {(pixel.x - camera.cx) / camera.fx - camera.alpha * y, y};
}

}  // namespace

// The slope of theta_d is 1 + 2 k0 theta + 3 k1 theta^2.
double turningAngle(const lens::Camera& camera) {
  const double a = 3 * camera.k1;
  const double halfB = camera.k0;
  const double discriminant = halfB * halfB - a;
  if (discriminant < 0) {
    return kLargestAngle;
  }
  // The smaller positive root of a x^2 + 2 halfB x + 1 = 0, as 1/(-halfB + root) without
  // cancellation.
  const double denominator = -halfB + std::sqrt(discriminant);
  return denominator > 1 / kLargestAngle ? 1 / denominator : kLargestAngle;
}

bool isOneToOneUpTo(const lens::Camera& camera, double theta) {
  const double end = turningAngle(camera);
  return theta < end || end == kLargestAngle;
}

double incidenceAngle(const lens::Camera& camera, double thetaD) {
  double low = 0;
  double high = turningAngle(camera);
  if (!(thetaD > 0)) {
    return low;
  }
  if (thetaD >= model::distortedAngle(camera, high)) {
    return high;
  }
  double theta = std::min(thetaD, high);
  for (int step = 0; step < kMostSteps; ++step) {
    const double error = model::distortedAngle(camera, theta) - thetaD;
    const double change = error / model::distortedAngleSlope(camera, theta);
    if (std::abs(change) <= kRounding * theta) {
      break;
    }
    (error > 0 ? high : low) = theta;
    const double next = theta - change;
    theta = next > low && next < high ? next : 0.5 * (low + high);
  }
  return theta;
}

cv::Vec3d viewingRay(const lens::Camera& camera, const cv::Point2d& pixel) {
  const cv::Vec2d d = distortedPoint(camera, pixel);
  const double thetaD = std::hypot(d[0], d[1]);
  const double theta = incidenceAngle(camera, thetaD);
  const double side = thetaD > 0 ? std::sin(theta) / thetaD : 1;
  return {d[0] * side, d[1] * side, std::cos(theta)};
}

bool isWithinRange(const lens::Camera& camera, const cv::Point2d& pixel) {
  const cv::Vec2d d = distortedPoint(camera, pixel);
  const double limit = model::distortedAngle(camera, turningAngle(camera));
  return std::hypot(d[0], d[1]) < limit;
}

std::optional<cv::Point2d> bedPointOf(const lens::Camera& camera, const lens::Pose& pose,
                                      const cv::Point2d& pixel) {
  if (!isWithinRange(camera, pixel)) {
    return std::nullopt;
  }
  // The ray in the world: origin C = -R^T T, direction w = R^T d. Z = 0 at C + s w, s = -C_z/w_z.
  const cv::Matx33d toWorld = lens::rotationFromVector(pose.om).t();
  const cv::Vec3d C = -(toWorld * pose.T);
  const cv::Vec3d w = toWorld * viewingRay(camera, pixel);
  const double s = -C[2] / w[2];
  if (!(std::abs(w[2]) > kParallel) || !(s > 0)) {
    return std::nullopt;
  }
  return cv::Point2d(C[0] + s * w[0], C[1] + s * w[1]);
}

}  // namespace fisheye_calibration::robust
