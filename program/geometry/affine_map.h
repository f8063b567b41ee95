// The affine map from raw-image pixels to the work plane: the result of a hand-eye fit.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// The library's error figures sum this many points at most.
constexpr std::size_t kPointsSummedByLibrary = 9;

// Xw = a x + b y + e, Yw = c x + d y + f for raw-image pixels (x, y), with the library's error
// figures.
struct AffineMap {
  std::array<double, 6> coefficients{};  // a, b, c, d, e, f
  double errorX = 0;  // world units: squares of the first nine points summed, divided by all points
  double errorY = 0;
};

struct WorldResidual {
  double x = 0;  // measured - mapped, world units
  double y = 0;
};

std::vector<WorldResidual> residualsOf(const AffineMap& map,
                                       const std::vector<CalibrationPoint>& points);

// Root mean square over all residuals, along each axis.
WorldResidual rootMeanSquare(const std::vector<WorldResidual>& residuals);

}  // namespace fisheye_calibration::program
