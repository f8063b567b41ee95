// The hand-eye fit as text: coefficients, the library's two error figures and the plain ones.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "fisheye_calibration.h"

namespace fisheye_calibration::program {

// Xw = a x + b y + e, Yw = c x + d y + f for raw-image pixels (x, y), with what the library says of
// its error.
struct AffineMap {
  std::array<double, 6> coefficients{};  // a, b, c, d, e, f
  double errorX = 0;  // world units: squares of the first nine points, divided by all
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

// "a,b,c,d,e,f" and one line of values that read back exactly.
std::string formatAffine(const AffineMap& map);

// For people: the map, the library's figures and the plain ones, each called what it is.
std::string describeAffine(const AffineMap& map, const std::vector<CalibrationPoint>& points);

}  // namespace fisheye_calibration::program
