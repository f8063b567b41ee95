// Source pixels by hand and against the formula written out.
#include "rendering/inverse_warp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "images/nearest_pixel.h"
#include "rendering/random_warps.h"

using namespace fisheye_calibration;

namespace {

using rendering::InverseWarp;
using rendering::SourcePixel;
using support::Dice;
using warps::kLargest;

std::vector<int> columnsOf(const InverseWarp& warp, int count) {
  std::vector<int> columns;
  for (int x = 0; x < count; ++x) columns.push_back(rendering::sourcePixel(warp, x, 0).column);
  return columns;
}

std::vector<int> rowsOf(const InverseWarp& warp, int count) {
  std::vector<int> rows;
  for (int y = 0; y < count; ++y) rows.push_back(rendering::sourcePixel(warp, 0, y).row);
  return rows;
}

bool showsNothing(const InverseWarp& warp, int x, int y) {
  const SourcePixel pixel = rendering::sourcePixel(warp, x, y);
  return pixel.column == -1 && pixel.row == -1;
}

// --- by hand ---

TEST(InverseWarp, IdentityShowsEveryPixelItself) {
  const InverseWarp warp{cv::Matx33d::eye(), 0, 0, {1000, 500}};
  const SourcePixel pixel = rendering::sourcePixel(warp, 999, 499);
  EXPECT_EQ(pixel.column, 999);
  EXPECT_EQ(pixel.row, 499);
  EXPECT_TRUE(showsNothing(warp, 1000, 499));
  EXPECT_TRUE(showsNothing(warp, 999, 500));
}

// Half the size: sx = x/2, so that x = 0, 1, 2, 3 lie at 0, 0.5, 1, 1.5 and show 0, 1, 1, 2.
TEST(InverseWarp, HalvesShowTheNextPixel) {
  const InverseWarp warp{cv::Matx33d::diag({0.5, 0.5, 1}), 0, 0, {1000, 1000}};
  EXPECT_EQ(columnsOf(warp, 6), (std::vector<int>{0, 1, 1, 2, 2, 3}));
  EXPECT_EQ(rowsOf(warp, 6), (std::vector<int>{0, 1, 1, 2, 2, 3}));
}

// sx = -1.5, -0.5, 0.5: shifted by a half, -1 is outside, 0 and 1 are not.
TEST(InverseWarp, FirstPixelIsSeenFromAnotherPixelBefore) {
  EXPECT_EQ(columnsOf({cv::Matx33d::eye(), 1.5, 0, {1000, 1000}}, 4),
            (std::vector<int>{-1, 0, 1, 2}));
  EXPECT_EQ(columnsOf({cv::Matx33d::eye(), 1.25, 0, {1000, 1000}}, 4),
            (std::vector<int>{0, 0, 1, 2}));
  EXPECT_EQ(rowsOf({cv::Matx33d::eye(), 0, 1.5, {1000, 1000}}, 4), (std::vector<int>{-1, 0, 1, 2}));
}

// The denominator halves everything.
TEST(InverseWarp, DividesByTheDenominator) {
  const InverseWarp warp{{6, 0, 2, 0, 8, 4, 0, 0, 2}, 0, 0, {100, 100}};
  const SourcePixel pixel = rendering::sourcePixel(warp, 5, 7);
  EXPECT_EQ(pixel.column, 16);
  EXPECT_EQ(pixel.row, 30);
}

// 2^24 + 1 is not a number of 32-bit float: the tie goes to 2^24.
TEST(InverseWarp, RoundsPositionsToFloat) {
  const InverseWarp warp{cv::Matx33d::eye(), 0, 0, {kLargest, 1}};
  EXPECT_EQ(rendering::sourcePixel(warp, (1 << 24) + 1, 0).column, 1 << 24);
  EXPECT_EQ(rendering::sourcePixel(warp, (1 << 24) + 3, 0).column, (1 << 24) + 4);
}

TEST(InverseWarp, SingularOnesShowNothing) {
  EXPECT_TRUE(showsNothing({cv::Matx33d::zeros(), 0, 0, {10, 10}}, 3, 3));
  EXPECT_TRUE(showsNothing({{1, 0, 0, 0, 1, 0, 0, 0, 0}, 0, 0, {10, 10}}, 3, 3));
}

TEST(InverseWarp, OfNaNShowNothing) {
  for (int i = 0; i < 9; ++i) {
    InverseWarp warp{cv::Matx33d::eye(), 0, 0, {10, 10}};
    warp.Hinv.val[i] = std::nan("");
    EXPECT_TRUE(showsNothing(warp, 3, 3)) << i;
  }
  EXPECT_TRUE(showsNothing({cv::Matx33d::eye(), std::nan(""), 0, {10, 10}}, 3, 3));
}

TEST(InverseWarp, NearestPixelOfSinglePositions) {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  EXPECT_EQ(images::nearestPixel(-1.5F, 10), -1);
  EXPECT_EQ(images::nearestPixel(-1.4F, 10), 0);
  EXPECT_EQ(images::nearestPixel(0.4F, 10), 0);
  EXPECT_EQ(images::nearestPixel(0.5F, 10), 1);
  EXPECT_EQ(images::nearestPixel(9.4F, 10), 9);
  EXPECT_EQ(images::nearestPixel(9.5F, 10), -1);
  EXPECT_EQ(images::nearestPixel(kNaN, 10), -1);
  EXPECT_EQ(images::nearestPixel(kInfinity, 10), -1);
  EXPECT_EQ(images::nearestPixel(-kInfinity, 10), -1);
  EXPECT_EQ(images::nearestPixel(2147483520.0F, kLargest), 2147483520);
  EXPECT_EQ(images::nearestPixel(2147483648.0F, kLargest), -1);
}

// --- against the formula ---

// trunc(position + 0.5) if that is a pixel on an axis of this length, else -1.
int nearest(float position, int length) {
  const double whole = std::trunc(static_cast<double>(position) + 0.5);
  return whole >= 0 && whole < length ? static_cast<int>(whole) : -1;
}

cv::Point pixelByFormula(const InverseWarp& warp, int x, int y) {
  const cv::Matx33d& h = warp.Hinv;
  const double px = x - warp.dx;
  const double py = y - warp.dy;
  const double w = h(2, 0) * px + h(2, 1) * py + h(2, 2);
  const auto sx = static_cast<float>((h(0, 0) * px + h(0, 1) * py + h(0, 2)) / w);
  const auto sy = static_cast<float>((h(1, 0) * px + h(1, 1) * py + h(1, 2)) / w);
  const cv::Point pixel(nearest(sx, warp.size.width), nearest(sy, warp.size.height));
  return pixel.x < 0 || pixel.y < 0 ? cv::Point(-1, -1) : pixel;
}

class InverseWarpOf : public testing::TestWithParam<warps::Kind> {};

TEST_P(InverseWarpOf, FollowsTheFormula) {
  Dice dice(1);
  int shown = 0;
  for (int i = 0; i < 20000; ++i) {
    const auto [warp, x, y] = GetParam().make(dice);
    for (int k = 0; k < 20 && x <= kLargest - 20; ++k) {
      const SourcePixel pixel = rendering::sourcePixel(warp, x + k, y);
      ASSERT_EQ(cv::Point(pixel.column, pixel.row), pixelByFormula(warp, x + k, y)) << warp.Hinv;
      shown += pixel.column >= 0 ? 1 : 0;
    }
  }
  EXPECT_GT(shown, 1000);
}

INSTANTIATE_TEST_SUITE_P(ManyKinds, InverseWarpOf, testing::ValuesIn(warps::kKinds));

}  // namespace
