#include <gtest/gtest.h>

#include "fisheye_calibration.h"

namespace {

TEST(PointMapping, DatumMapsToTheCentreOfTheSecondCorrectedImage) {
  FishEyeCalibrationParam param{};
  param.Pixel = 0.25f;
  param.DatumPtXw = 120.0f;
  param.DatumPtYw = 80.0f;
  float x = 0;
  float y = 0;
  EXPECT_TRUE(WorldToSecondCorrectedImagePoint(120.0f, 80.0f, 9.0f, param, 640.0f, 480.0f, x, y));
  EXPECT_EQ(x, 640.0f);
  EXPECT_EQ(y, 480.0f);
}

}  // namespace
