#include "base/nice_number.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(NiceNumber, IsOneTwoOrFiveTimesAPowerOfTen) {
  EXPECT_DOUBLE_EQ(niceBelow(7.3), 5);
  EXPECT_DOUBLE_EQ(niceBelow(199), 100);
  EXPECT_DOUBLE_EQ(niceBelow(0.3), 0.2);
  EXPECT_DOUBLE_EQ(niceAbove(7.3), 10);
  EXPECT_DOUBLE_EQ(niceAbove(1.2), 2);
  EXPECT_DOUBLE_EQ(niceAbove(0.04), 0.05);
  EXPECT_DOUBLE_EQ(niceAbove(2), 2);
}

}  // namespace
}  // namespace fisheye_calibration::program
