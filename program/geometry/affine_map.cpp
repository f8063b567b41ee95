#include "geometry/affine_map.h"

#include <cmath>

namespace fisheye_calibration::program {

std::vector<WorldResidual> residualsOf(const AffineMap& map,
                                       const std::vector<CalibrationPoint>& points) {
  const auto [a, b, c, d, e, f] = map.coefficients;
  std::vector<WorldResidual> residuals;
  residuals.reserve(points.size());
  for (const CalibrationPoint& point : points) {
    const double x = point.ImagePtX;
    const double y = point.ImagePtY;
    residuals.push_back({point.Xw - (a * x + b * y + e), point.Yw - (c * x + d * y + f)});
  }
  return residuals;
}

WorldResidual rootMeanSquare(const std::vector<WorldResidual>& residuals) {
  WorldResidual sum;
  for (const WorldResidual& residual : residuals) {
    sum.x += residual.x * residual.x;
    sum.y += residual.y * residual.y;
  }
  const auto n = static_cast<double>(residuals.size());
  return {std::sqrt(sum.x / n), std::sqrt(sum.y / n)};
}

}  // namespace fisheye_calibration::program
