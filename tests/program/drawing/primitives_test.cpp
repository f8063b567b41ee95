#include "drawing/primitives.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(DrawingPrimitives, ColoursRunFromBlueToRed) {
  const cv::Scalar low = scaleColour(0);
  const cv::Scalar high = scaleColour(1);
  EXPECT_GT(low[0], 3 * low[2]);
  EXPECT_GT(high[2], 3 * high[0]);
  EXPECT_EQ(scaleColour(7), high);
}

}  // namespace
}  // namespace fisheye_calibration::program
