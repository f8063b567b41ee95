#include "geometry/raw_ray.h"

#include <cmath>
#include <numbers>

#include "geometry/lens_curve.h"

namespace fisheye_calibration::program {
namespace {

using Param = FishEyeCalibrationParam;

// Sine of the angle between ray and bed below which the ray counts as parallel: a float's rounding
// of a raw pixel then moves the point by more than its distance from the camera.
constexpr double kParallelSine = 1e-6;

// The angle theta, radians, with theta + k0 theta^2 + k1 theta^3 = thetaD, by halving the interval
// in which the curve rises. Nothing if the curve does not reach thetaD there.
std::optional<double> angleOf(const Param& param, double thetaD) {
  const auto curve = [&](double theta) {
    return theta * (1 + theta * (param.k0 + theta * param.k1));
  };
  double low = 0;
  double high = turningAngle(param.k0, param.k1).value_or(std::numbers::pi / 2);
  if (!(thetaD >= 0 && thetaD < curve(high))) {
    return std::nullopt;
  }
  constexpr int kHalvings = 60;  // more than a double resolves
  for (int i = 0; i < kHalvings; ++i) {
    const double middle = (low + high) / 2;
    (curve(middle) <= thetaD ? low : high) = middle;
  }
  return low;
}

}  // namespace

std::optional<cv::Point2d> rayThrough(const Param& param, cv::Point2d raw) {
  // x = fx (a' + skewness b') + u0, y = fy b' + v0 with (a', b') = (theta_d/r) (a, b), r = tan
  // theta
  const double b = (raw.y - static_cast<double>(param.v0)) / static_cast<double>(param.fy);
  const double a = (raw.x - static_cast<double>(param.u0)) / static_cast<double>(param.fx) -
                   static_cast<double>(param.skewness) * b;
  const double thetaD = std::hypot(a, b);
  const std::optional<double> theta = angleOf(param, thetaD);
  if (!theta) {
    return std::nullopt;
  }
  const double scale = thetaD > 0 ? std::tan(*theta) / thetaD : 1;
  return cv::Point2d(a, b) * scale;
}

SeenPoint BedSight::along(cv::Point2d ray) const {
  // With world = R^T (s (a, b, 1) - T), Zw = 0 where s = (n T)/(n (a, b, 1)), n the last column of
  // R.
  const Vector3 d = {ray.x, ray.y, 1};
  const auto column = [&](std::size_t k, const Vector3& v) {
    return R_[k] * v[0] + R_[3 + k] * v[1] + R_[6 + k] * v[2];
  };
  const double descent = column(2, d);
  if (!(std::abs(descent) > kParallelSine * std::hypot(d[0], d[1], d[2]))) {
    return {.sight = Sight::kParallel};
  }
  const double s = column(2, T_) / descent;
  if (!(s > 0)) {
    return {.sight = Sight::kAwayFromBed};
  }
  const Vector3 fromOrigin = {s * d[0] - T_[0], s * d[1] - T_[1], s * d[2] - T_[2]};
  return {.sight = Sight::kBed, .bed = {column(0, fromOrigin), column(1, fromOrigin)}};
}

SeenPoint bedPointAt(const Param& param, cv::Point2d raw) {
  const std::optional<cv::Point2d> ray = rayThrough(param, raw);
  return ray ? BedSight(param).along(*ray) : SeenPoint{.sight = Sight::kBeyondLens};
}

std::optional<cv::Point2d> correctedPositionOf(const Param& param, cv::Point2d raw,
                                               cv::Point2d centre) {
  const std::optional<cv::Point2d> ray = rayThrough(param, raw);
  if (!ray) {
    return std::nullopt;
  }
  return cv::Point2d(
      static_cast<double>(param.fx) * (ray->x + static_cast<double>(param.skewness) * ray->y) +
          centre.x,
      static_cast<double>(param.fy) * ray->y + centre.y);
}

}  // namespace fisheye_calibration::program
