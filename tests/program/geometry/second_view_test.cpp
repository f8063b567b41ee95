#include "geometry/second_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program/support/sample_record.h"

namespace fisheye_calibration::program {
namespace {

using testing::HasSubstr;

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
