#include "checks/finding.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(Finding, LongListsOfPointsAreCut) {
  EXPECT_EQ(namedPoints({4}), "point 4");
  EXPECT_EQ(namedPoints({4, 5, 9}), "points 4, 5 and 9");
  EXPECT_EQ(namedPoints({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}),
            "points 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11 and 3 more");
}

}  // namespace
}  // namespace fisheye_calibration::program
