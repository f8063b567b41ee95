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
  EXPECT_EQ(sizeComplaint(param, std::nullopt, {960, 720}), "");
  EXPECT_THAT(sizeComplaint(param, std::nullopt, {1160, 720}), HasSubstr("1160x720"));
}

TEST(SecondView, AKnownSizeIsTheOnlyOneThatFits) {
  // The sample's second correction, the identity, would fit any size.
  EXPECT_EQ(sizeComplaint(sampleRecord(), std::nullopt, {962, 720}), "");
  EXPECT_EQ(sizeComplaint(sampleRecord(), Size{960, 720}, {960, 720}), "");
  EXPECT_EQ(sizeComplaint(sampleRecord(), Size{960, 720}, {962, 720}),
            "the second correction was made for a view of 960x720, not of 962x720");
}

// Half a pixel right of the centre that the mappings use.
TEST(SecondView, RenderedViewsOfOddSizesAreHalfAPixelOff) {
  EXPECT_EQ(renderedCentreOf({961, 720}), cv::Point2f(481, 360));
  EXPECT_NEAR(renderedPosition(sampleRecord(), {120, 90}, {961, 721}).x, 481, 1e-4);
  EXPECT_NEAR(centreShift(sampleRecord(), {961, 720}), 0.5, 1e-4);
}

}  // namespace
}  // namespace fisheye_calibration::program
