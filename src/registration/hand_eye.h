// The affine map from the raw image to the work plane.
#pragma once

#include <cstddef>
#include <vector>

#include "fisheye_calibration.h"

namespace fisheye_calibration::registration {

// Three points determine the six coefficients of an affine map.
constexpr std::size_t kFewestPoints = 3;

enum class PairsFile { kWrite, kOmit };

// As HandEyeCalibration, which also writes the file of pairs.
bool calibrateHandEye(const std::vector<CalibrationPoint>& points, PairsFile file, double* params,
                      double& errorX, double& errorY);

}  // namespace fisheye_calibration::registration
