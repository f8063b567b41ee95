#include "geometry/record_matrices.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace fisheye_calibration::program {
namespace {

TEST(RecordMatrices, ARotationVectorOfAQuarterTurnAboutZ) {
  const Matrix3 R = rotationOfVector({.Rz = 1.57079633f});
  const Matrix3 expected = {0, -1, 0, 1, 0, 0, 0, 0, 1};
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(R[i], expected[i], 1e-7) << i;
  }
}

}  // namespace
}  // namespace fisheye_calibration::program
