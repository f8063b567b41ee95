#include "geometry/lens_curve.h"

#include <cmath>
#include <numbers>

namespace fisheye_calibration::program {
namespace {

constexpr double kRightAngle = std::numbers::pi / 2;

std::optional<double> withinView(double angle) {
  return angle > 0 && angle < kRightAngle ? std::optional(angle) : std::nullopt;
}

}  // namespace

std::optional<double> turningAngle(double k0, double k1) {
  // d theta_d / d theta = 1 + 2 k0 theta + 3 k1 theta^2 = 0; the root is written so that k1 = 0
  // is not a special case: theta = 1 / (-k0 -+ sqrt(k0^2 - 3 k1)).
  const double discriminant = k0 * k0 - 3 * k1;
  if (!(discriminant >= 0)) {
    return std::nullopt;
  }
  // The larger denominator belongs to the smaller positive root.
  return withinView(1 / (-k0 + std::sqrt(discriminant)));
}

double lensShape(double k0, double k1) {
  const double theta = kRightAngle * 2 / 3;
  return 1 + k0 * theta + k1 * theta * theta;
}

}  // namespace fisheye_calibration::program
