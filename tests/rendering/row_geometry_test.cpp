#include "rendering/row_geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "rendering/view_geometry.h"

using namespace fisheye_calibration;

namespace {

using rendering::RowGeometry;
using rendering::ViewGeometry;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The geometry of a view of 400 x 300 pixels with this inverse homography.
ViewGeometry viewOf(const cv::Matx33d& Hinv) {
  lens::Camera camera{};
  camera.fx = camera.fy = 200;
  camera.cx = 200;
  camera.cy = 150;
  const cv::Matx33d K(200, 0, 200, 0, 200, 150, 0, 0, 1);
  const cv::Size size(400, 300);
  return {rendering::rectifyingRays(camera, cv::Matx33d::eye(), K, size), {Hinv, 0, 0, size}};
}

// sx = 4 x - 600 along every row, so a block reaches 4 x 16.5 pixels where w = 1.
cv::Matx33d wide() { return {4, 0, -600, 0, 1, 0, 0, 0, 1}; }

TEST(RowGeometry, LimitsOfAnAffineWarpAreThoseOfItsStep) {
  const ViewGeometry view = viewOf(wide());
  const RowGeometry row(view, 100);
  EXPECT_EQ(row.stepX, 4);
  EXPECT_EQ(row.stepY, 0);
  EXPECT_EQ(row.gentle, kInfinity);  // w does not change
  EXPECT_DOUBLE_EQ(row.small, (view.reachX() - 1) / 16.5 / 4);
  EXPECT_DOUBLE_EQ(row.fine, (view.fineReachX() - 1) / 16.5 / 4);
  EXPECT_GT(row.small, 1);  // every block
  EXPECT_LT(row.fine, 1);   // none
}

// w = 1 + x/1000, y = 50: stepX = 1 (1 + 0) - 0, gentle below 1/w = 1.
TEST(RowGeometry, LimitsOfATiltAreThoseOfItsDenominator) {
  const RowGeometry row(viewOf({1, 0, 0, 0, 1, 0, 1e-3, 0, 1}), 50);
  EXPECT_DOUBLE_EQ(row.stepX, 1);
  EXPECT_DOUBLE_EQ(row.stepY, -0.05);
  EXPECT_DOUBLE_EQ(row.gentle, 1);
  EXPECT_DOUBLE_EQ(row.certain, 400);  // (0.02/0.001)^2
}

// The same warp in any scale: blocks have the same kinds, or none is computed in float.
TEST(RowGeometry, ScalesOfAWarpMakeNoBlockLookSmaller) {
  for (int exponent = -540; exponent <= 540; ++exponent) {
    const double scale = std::ldexp(1.0, exponent);
    const ViewGeometry view = viewOf(scale * wide());
    const RowGeometry row(view, 100);
    const double squarePerW = 1 / scale * (1 / scale);
    EXPECT_FALSE(squarePerW < row.fine) << exponent;
    if (std::abs(exponent) < 500) {
      EXPECT_TRUE(squarePerW < row.small) << exponent;
    }
  }
}

TEST(RowGeometry, NothingIsSmallIfNumbersAreNotFinite) {
  for (const double value : {std::nan(""), kInfinity, 1e300}) {
    for (int k = 0; k < 9; ++k) {
      cv::Matx33d H = wide();
      H.val[k] = value;
      if (value == 1e300 && k != 0 && k != 3) {
        continue;  // a scale, or a shift without effect on the steps
      }
      H(2, 2) = k == 8 ? value : 1e300;
      EXPECT_FALSE(RowGeometry(viewOf(H), 100).small > 0) << value << ' ' << k;
    }
  }
}

}  // namespace
