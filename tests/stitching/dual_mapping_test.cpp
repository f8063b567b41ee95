#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "fisheye_calibration.h"

#if __has_include(<rapidcheck.h>)  // not for Windows
#include <rapidcheck.h>
#endif

namespace {

DualFishEyeCalibrationParam frame() {
  DualFishEyeCalibrationParam dual{};
  dual.Pixel = 0.25f;
  dual.DatumImagePtX = 640;
  dual.DatumImagePtY = 480;
  dual.DatumPtXw = 100;
  dual.DatumPtYw = 60;
  return dual;
}

TEST(DualMapping, WorldPointLandsByItsDistanceFromTheDatum) {
  float u = 0;
  float v = 0;
  EXPECT_TRUE(DualCam_WorldToSecondCorrectedImagePoint(110, 55, 7, frame(), u, v));
  EXPECT_EQ(u, 680);  // 10 / 0.25 + 640
  EXPECT_EQ(v, 460);  // -5 / 0.25 + 480
}

TEST(DualMapping, PixelMapsBackAlthoughTheResultIsFalse) {
  float Xw = 0;
  float Yw = 0;
  float Zw = 17;
  EXPECT_FALSE(DualCam_CorrectedImageToWorldPoint(680, 460, frame(), Xw, Yw, Zw));
  EXPECT_EQ(Xw, 110);
  EXPECT_EQ(Yw, 55);
  EXPECT_EQ(Zw, 17);  // left as it was
}

#if __has_include(<rapidcheck.h>)
TEST(DualMapping, ThereAndBackReturnsTheStartUpToRounding) {
  EXPECT_TRUE(rc::check([] {
    const auto X = static_cast<float>(*rc::gen::inRange(0, 1000000)) * 0.001F;
    const auto Y = static_cast<float>(*rc::gen::inRange(0, 1000000)) * 0.001F;
    float u = 0;
    float v = 0;
    float Xw = 0;
    float Yw = 0;
    float Zw = 0;
    DualCam_WorldToSecondCorrectedImagePoint(X, Y, 0, frame(), u, v);
    DualCam_CorrectedImageToWorldPoint(u, v, frame(), Xw, Yw, Zw);
    RC_ASSERT(std::abs(Xw - X) < 5e-4F);
    RC_ASSERT(std::abs(Yw - Y) < 5e-4F);
  }));
}
#endif

// In 64 bits these would be 16777217 and 16777218: every step is rounded to 24 bits.
TEST(DualMapping, EveryStepIsA32BitFloat) {
  DualFishEyeCalibrationParam dual{};
  dual.Pixel = 1;
  dual.DatumImagePtX = 16777217;
  dual.DatumImagePtY = 16777217;
  float u = 0;
  float v = 0;
  DualCam_WorldToSecondCorrectedImagePoint(0, 1, 0, dual, u, v);
  EXPECT_EQ(u, 16777216.0F);
  EXPECT_EQ(v, 16777216.0F);
}

TEST(DualMapping, APixelSizeOfZeroGivesInfinityOrNan) {
  DualFishEyeCalibrationParam dual = frame();
  dual.Pixel = 0;
  float u = 0;
  float v = 0;
  EXPECT_TRUE(DualCam_WorldToSecondCorrectedImagePoint(110, 60, 0, dual, u, v));
  EXPECT_EQ(u, std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(v));
}

}  // namespace
