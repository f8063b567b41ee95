// The inverse of the lens.
#pragma once

#include <numbers>

#include "lens/camera.h"

namespace fisheye_calibration::lens {

// What marks a pixel that has no undistorted position, in both coordinates.
constexpr double kNoSolution = -1000000.0;

// theta_d is never searched beyond this.
constexpr double kHalfPi = std::numbers::pi / 2;

// How far pixels are inverted when a pose is sought.
constexpr int kNormalizationSteps = 10;
constexpr double kNormalizationEpsilon = 1e-8;

// Newton's method for the incidence angle stops after `maxCount` steps or, with `useEpsilon`, once
// a step is below `epsilon`.
struct NewtonCriteria {
  int maxCount = 0;
  bool useEpsilon = false;
  double epsilon = 0;
};

// tan(theta)/theta_d for theta_d = theta + k0 theta^2 + k1 theta^3, the factor that carries a
// distorted normalised point to its undistorted position; 0 at the centre when epsilon decides.
// False when Newton's method did not converge or ended at a negative angle.
bool undistortionScale(const Camera& camera, double thetaD, const NewtonCriteria& criteria,
                       double& scale);

}  // namespace fisheye_calibration::lens
