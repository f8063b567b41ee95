// The inverse of the lens.
#pragma once

#include <numbers>

#include "lens/camera.h"

namespace fisheye_calibration::lens {

// Both coordinates of a pixel that has no undistorted position.
constexpr double kNoSolution = -1000000.0;

// Upper limit of theta_d.
constexpr double kHalfPi = std::numbers::pi / 2;

// Newton criteria for the pixels of a pose estimate.
constexpr int kNormalizationSteps = 10;
constexpr double kNormalizationEpsilon = 1e-8;

// Newton's method for the incidence angle stops after `maxCount` steps or, with `useEpsilon`, once
// a step is below `epsilon`.
struct NewtonCriteria {
  int maxCount = 0;
  bool useEpsilon = false;
  double epsilon = 0;
};

// Sets `scale` to tan(theta)/theta_d, theta_d = theta + k0 theta^2 + k1 theta^3: the factor that
// maps a distorted normalised point to its undistorted position, 0 at the centre if epsilon is
// used. Returns false if a required epsilon is not reached or theta ends with the opposite sign of
// theta_d.
bool undistortionScale(const Camera& camera, double thetaD, const NewtonCriteria& criteria,
                       double& scale);

}  // namespace fisheye_calibration::lens
