// Views of the synthetic target from other poses, and with noise.
#pragma once

#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {

// World -> camera for a camera tilted by these angles about its x and y axes, row by row.
inline std::array<double, 9> tilted(double aboutX, double aboutY) {
  const double cx = std::cos(aboutX);
  const double sx = std::sin(aboutX);
  const double cy = std::cos(aboutY);
  const double sy = std::sin(aboutY);
  return {cy, sy * sx, sy * cx, 0, cx, -sx, -sy, cy * sx, cy * cx};
}

inline std::vector<CalibrationPoint> noisyPoints(const SyntheticCamera& camera, double sigma,
                                                 unsigned seed) {
  std::mt19937 engine(seed);
  std::normal_distribution<float> noise(0, static_cast<float>(sigma));
  std::vector<CalibrationPoint> points = exactPoints(camera, {});
  for (CalibrationPoint& point : points) {
    point.ImagePtX += noise(engine);
    point.ImagePtY += noise(engine);
  }
  return points;
}

}  // namespace fisheye_calibration::program
