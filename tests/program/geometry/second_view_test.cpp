#include "geometry/second_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program/support/sample_record.h"
#include "program/support/synthetic_target.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

// The camera of sampleRecord(): 170 above the bed, straight over (120, 90).
SyntheticCamera overheadCamera() {
  return {.R = {1, 0, 0, 0, 1, 0, 0, 0, 1}, .T = {-120, -90, 170}};
}

TEST(SecondView, BedPointComesBackFromItsPixel) {
  const SyntheticCamera truth = overheadCamera();
  const auto bed = bedPointAt(sampleRecord(), truth.project(210, 30), {190, 60});
  ASSERT_TRUE(bed);
  EXPECT_NEAR(bed->x, 210, 2e-3);
  EXPECT_NEAR(bed->y, 30, 2e-3);
}

TEST(SecondView, OnlyTheSizeOfTheCalibrationKeepsItsCentre) {
  FishEyeCalibrationParam param = sampleRecord();
  EXPECT_EQ(centreShift(param, {960, 720}), 0);
  param.p1 = 1.1;  // keeps x = 480 with a shift of -48 and so moves x = 580 by 10
  param.ImageDx = -48;
  EXPECT_NEAR(centreShift(param, {960, 720}), 0, 1e-9);
  EXPECT_NEAR(centreShift(param, {1160, 720}), 10, 1e-9);
  EXPECT_EQ(sizeComplaint(param, {960, 720}), "");
  EXPECT_THAT(sizeComplaint(param, {1160, 720}), HasSubstr("1160x720"));
}

}  // namespace
}  // namespace fisheye_calibration::program
