#include "geometry/lens_curve.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(LensCurve, TurnsWhereItsSlopeVanishes) {
  // 1 - theta^2 = 0 with k0 = 0, k1 = -1/3; 1 - 2 theta = 0 with k0 = -1, k1 = 0.
  EXPECT_NEAR(turningAngle(0, -1.0 / 3).value(), 1, 1e-12);
  EXPECT_NEAR(turningAngle(-1, 0).value(), 0.5, 1e-12);
}

TEST(LensCurve, RisingCurvesDoNotTurn) {
  EXPECT_FALSE(turningAngle(0, 0).has_value());
  EXPECT_FALSE(turningAngle(0.1, 0.2).has_value());
  EXPECT_FALSE(turningAngle(0.5, 0).has_value());
  EXPECT_FALSE(turningAngle(0, -0.01).has_value());  // turns at 5.8 rad, out of view
}

}  // namespace
}  // namespace fisheye_calibration::program
