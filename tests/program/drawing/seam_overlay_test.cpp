#include "drawing/seam_overlay.h"

#include <gtest/gtest.h>

namespace fisheye_calibration::program {
namespace {

TEST(SeamRows, OverlapReachesFromTheRightViewToTheLeftOnesBorder) {
  cv::Mat left(2, 10, CV_8UC1, cv::Scalar(0));
  left.at<unsigned char>(0, 9) = 255;
  left.row(1).setTo(255);
  const cv::Mat right(2, 10, CV_8UC1, cv::Scalar(0));
  const auto rows = seamRows(left, right, {1, 0, -4, 0, 1, 0, 0, 0, 1});  // starts at x = 4
  ASSERT_TRUE(rows.at(0));
  EXPECT_EQ(rows[0]->begin, 4);
  EXPECT_EQ(rows[0]->end, 8);
  EXPECT_FALSE(rows.at(1));
}

}  // namespace
}  // namespace fisheye_calibration::program
