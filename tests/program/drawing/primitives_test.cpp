#include "drawing/primitives.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(DrawingPrimitives, NiceNumbersAreOneTwoOrFiveTimesAPowerOfTen) {
  EXPECT_DOUBLE_EQ(niceBelow(7.3), 5);
  EXPECT_DOUBLE_EQ(niceBelow(199), 100);
  EXPECT_DOUBLE_EQ(niceBelow(0.3), 0.2);
  EXPECT_DOUBLE_EQ(niceAbove(7.3), 10);
  EXPECT_DOUBLE_EQ(niceAbove(1.2), 2);
  EXPECT_DOUBLE_EQ(niceAbove(0.04), 0.05);
  EXPECT_DOUBLE_EQ(niceAbove(2), 2);
}

TEST(DrawingPrimitives, ColoursRunFromBlueToRed) {
  const cv::Scalar low = scaleColour(0);
  const cv::Scalar high = scaleColour(1);
  EXPECT_GT(low[0], 3 * low[2]);
  EXPECT_GT(high[2], 3 * high[0]);
  EXPECT_EQ(scaleColour(7), high);
}

}  // namespace
}  // namespace fisheye_calibration::program
