#include "geometry/affine_map.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace fisheye_calibration::program {
namespace {

CalibrationPoint pair(float x, float y, float Xw, float Yw) {
  return {.Xw = Xw, .Yw = Yw, .ImagePtX = x, .ImagePtY = y};
}

TEST(AffineMap, ResidualIsMeasuredMinusMapped) {
  const AffineMap map{{2, 0, 0, 3, 1, -4}, 0, 0};  // (5, 7) is mapped to (11, 17)
  const auto residuals = residualsOf(map, {pair(5, 7, 11.5f, 16)});
  EXPECT_EQ(residuals.at(0).x, 0.5);
  EXPECT_EQ(residuals.at(0).y, -1);
}

TEST(AffineMap, PlainErrorCountsEveryPoint) {
  std::vector<WorldResidual> residuals(12);
  residuals[11] = {6, 12};  // sqrt(36/12), sqrt(144/12)
  const WorldResidual rms = rootMeanSquare(residuals);
  EXPECT_DOUBLE_EQ(rms.x, std::sqrt(3.0));
  EXPECT_DOUBLE_EQ(rms.y, std::sqrt(12.0));
}

}  // namespace
}  // namespace fisheye_calibration::program
