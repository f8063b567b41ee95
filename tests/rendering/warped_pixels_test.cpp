// The source pixels of runs against the formula written out, on every instruction set.
#include "rendering/warped_pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <opencv2/core.hpp>
#include <vector>

#include "images/nearest_pixel.h"
#include "rendering/run.h"
#include "support/dice.h"
#include "support/instruction_sets.h"

using namespace fisheye_calibration;

namespace {

using rendering::InverseWarp;
using rendering::kRun;
using support::Dice;

constexpr int kLargest = std::numeric_limits<int>::max();
constexpr int kLastRun = kLargest - static_cast<int>(kRun) + 1;  // ends with the largest column

struct Pixels {
  alignas(64) int column[kRun];
  alignas(64) int row[kRun];
  bool any;
};

Pixels sourcePixels(const InverseWarp& warp, int x, int y) {
  Pixels pixels;
  std::fill_n(pixels.column, kRun, 12345);
  std::fill_n(pixels.row, kRun, 12345);
  pixels.any = rendering::sourcePixelsOfRun(warp, x, y, pixels.column, pixels.row);
  return pixels;
}

// trunc(position + 0.5) if that is a pixel on an axis of this length, else -1.
int nearest(float position, int length) {
  const double whole = std::trunc(static_cast<double>(position) + 0.5);
  return whole >= 0 && whole < length ? static_cast<int>(whole) : -1;
}

cv::Point sourcePixel(const InverseWarp& warp, int x, int y) {
  const cv::Matx33d& h = warp.Hinv;
  const double px = x - warp.dx;
  const double py = y - warp.dy;
  const double w = h(2, 0) * px + h(2, 1) * py + h(2, 2);
  const auto sx = static_cast<float>((h(0, 0) * px + h(0, 1) * py + h(0, 2)) / w);
  const auto sy = static_cast<float>((h(1, 0) * px + h(1, 1) * py + h(1, 2)) / w);
  return {nearest(sx, warp.size.width), nearest(sy, warp.size.height)};
}

testing::AssertionResult followsTheFormula(const InverseWarp& warp, int x, int y) {
  const Pixels pixels = sourcePixels(warp, x, y);
  for (std::size_t k = 0; k < kRun; ++k) {
    const cv::Point p = sourcePixel(warp, x + static_cast<int>(k), y);
    const bool inside = p.x >= 0 && p.y >= 0;
    const cv::Point got(pixels.column[k], pixels.row[k]);
    if (inside ? got != p : got.x != -1) {
      return testing::AssertionFailure()
             << "pixel " << x + static_cast<int>(k) << ", " << y << " shows " << got << ", not "
             << p << ", of " << warp.size << ", Hinv " << warp.Hinv << ", shift " << warp.dx << ", "
             << warp.dy;
    }
    if (inside && !pixels.any) {
      return testing::AssertionFailure() << "a run that shows something is said to lie outside";
    }
  }
  return testing::AssertionSuccess();
}

// Runs are those of whole rows, which start at every 64th column.
int runAt(Dice& dice, int last) { return dice.whole(0, last) & ~(static_cast<int>(kRun) - 1); }

// --- by hand ---

TEST(WarpedPixels, IdentityShowsEveryPixelItself) {
  const Pixels pixels = sourcePixels({cv::Matx33d::eye(), 0, 0, {1000, 1000}}, 128, 7);
  EXPECT_TRUE(pixels.any);
  for (std::size_t k = 0; k < kRun; ++k) {
    EXPECT_EQ(pixels.column[k], 128 + static_cast<int>(k));
    EXPECT_EQ(pixels.row[k], 7);
  }
}

// Half the size: sx = x/2, so that x = 0, 1, 2, 3 lie at 0, 0.5, 1, 1.5 and show 0, 1, 1, 2.
TEST(WarpedPixels, HalvesShowTheNextPixel) {
  const Pixels pixels = sourcePixels({cv::Matx33d::diag({0.5, 0.5, 1}), 0, 0, {1000, 1000}}, 0, 3);
  EXPECT_EQ(std::vector<int>(pixels.column, pixels.column + 6),
            (std::vector<int>{0, 1, 1, 2, 2, 3}));
  EXPECT_EQ(pixels.row[0], 2);
}

// sx = -1.5, -0.5, 0.5: shifted by a half, -1 is outside, 0 and 1 are not.
TEST(WarpedPixels, FirstPixelIsSeenFromAnotherPixelBefore) {
  const Pixels pixels = sourcePixels({cv::Matx33d::eye(), 1.5, 0, {1000, 1000}}, 0, 0);
  EXPECT_EQ(std::vector<int>(pixels.column, pixels.column + 4), (std::vector<int>{-1, 0, 1, 2}));
  const Pixels nearer = sourcePixels({cv::Matx33d::eye(), 1.25, 0, {1000, 1000}}, 0, 0);
  EXPECT_EQ(std::vector<int>(nearer.column, nearer.column + 4), (std::vector<int>{0, 0, 1, 2}));
}

TEST(WarpedPixels, NearestPixelOfSinglePositions) {
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

// A view turned, scaled and tilted, of which (x, y) shows (atX, atY).
InverseWarp tiltedWarp(Dice& dice, const cv::Size& size, int x, int y, double atX, double atY) {
  InverseWarp warp{cv::Matx33d::eye(), dice.number(100), dice.number(100), size};
  const double scale = dice.magnitude(1e-2, 1e2);
  const double turn = dice.number(CV_PI);
  cv::Matx33d& h = warp.Hinv;
  const double px = x - warp.dx;
  const double py = y - warp.dy;
  if (dice.oneIn(2)) {
    h(2, 0) = dice.number(1) * dice.magnitude(1e-9, 1e-2);
    h(2, 1) = dice.number(1) * dice.magnitude(1e-9, 1e-2);
  }
  h(2, 2) = dice.uniform(0.1, 2) - (h(2, 0) * px + h(2, 1) * py);
  const double w = h(2, 0) * px + h(2, 1) * py + h(2, 2);
  h(0, 0) = h(1, 1) = scale * std::cos(turn);
  h(1, 0) = scale * std::sin(turn);
  h(0, 1) = -h(1, 0);
  h(0, 2) = atX * w - (h(0, 0) * px + h(0, 1) * py);
  h(1, 2) = atY * w - (h(1, 0) * px + h(1, 1) * py);
  if (dice.oneIn(8)) {  // the same warp
    h = h * dice.magnitude(1e-100, 1e100) * (dice.oneIn(2) ? -1.0 : 1.0);
  }
  return warp;
}

TEST(WarpedPixels, OfTiltedViewsFollowTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(1);
    for (int i = 0; i < 15000; ++i) {
      const cv::Size size(dice.whole(1, 5000), dice.whole(1, 5000));
      const int x = runAt(dice, size.width - 1);
      const int y = dice.whole(0, size.height - 1);
      const double atX = dice.uniform(-10, size.width + 10.0);
      const double atY = dice.uniform(-10, size.height + 10.0);
      ASSERT_TRUE(followsTheFormula(tiltedWarp(dice, size, x + 32, y, atX, atY), x, y)) << i;
    }
  });
}

// Scales and shifts of quarters: many positions are halves, and all are exact.
TEST(WarpedPixels, AtExactHalvesFollowTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(2);
    for (int i = 0; i < 15000; ++i) {
      const double scale = std::ldexp(dice.oneIn(2) ? 1 : -1, dice.whole(-2, 1));
      InverseWarp warp{cv::Matx33d::diag({scale, scale, 1}), dice.whole(-400, 400) * 0.25,
                       dice.whole(-400, 400) * 0.25,
                       cv::Size(dice.whole(1, 500), dice.whole(1, 500))};
      if (dice.oneIn(2)) {  // a quarter turn
        warp.Hinv = {0, -scale, dice.whole(0, 500) * 0.5, scale, 0, dice.whole(0, 500) * 0.5, 0,
                     0, 1};
      }
      ASSERT_TRUE(followsTheFormula(warp, runAt(dice, 500), dice.whole(0, 500))) << i;
    }
  });
}

// The horizon crosses the run, or passes close by it.
TEST(WarpedPixels, WhereTheDenominatorPassesZeroFollowTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(3);
    for (int i = 0; i < 15000; ++i) {
      const cv::Size size(dice.whole(1, 3000), dice.whole(1, 3000));
      const int x = runAt(dice, size.width - 1);
      const int y = dice.whole(0, size.height - 1);
      InverseWarp warp = tiltedWarp(dice, size, x + 32, y, dice.number(3000), dice.number(3000));
      cv::Matx33d& h = warp.Hinv;
      h(2, 0) = dice.oneIn(3) ? 0 : dice.number(1) * dice.magnitude(1e-6, 1);
      h(2, 1) = 0;
      const double zero = dice.oneIn(2) ? dice.whole(x, x + 63) : dice.uniform(x - 200, x + 264);
      h(2, 2) = -h(2, 0) * (zero - warp.dx);
      if (dice.oneIn(3)) {
        h(2, 2) += std::ldexp(dice.number(1), -dice.whole(0, 60));
      }
      ASSERT_TRUE(followsTheFormula(warp, x, y)) << i;
    }
  });
}

// Float holds every whole number up to 2^24 and every half up to 2^23.
TEST(WarpedPixels, BeyondTwentyTwoBitsFollowTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(4);
    for (int i = 0; i < 15000; ++i) {
      const double far = dice.oneIn(3) ? 0x1p22 + dice.number(200) : dice.magnitude(1e6, 2.1e9);
      const cv::Size size(kLargest, kLargest);
      const int x = runAt(dice, 5000);
      const int y = dice.whole(0, 5000);
      const InverseWarp warp =
          tiltedWarp(dice, size, x + 32, y, dice.oneIn(2) ? far : dice.uniform(0, 5000), far);
      ASSERT_TRUE(followsTheFormula(warp, x, y)) << i;
    }
  });
}

TEST(WarpedPixels, OfTheLargestOutputsFollowTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(5);
    for (int i = 0; i < 15000; ++i) {
      const cv::Size size(static_cast<int>(dice.magnitude(1, kLargest)),
                          static_cast<int>(dice.magnitude(1, kLargest)));
      const int x = dice.oneIn(2) ? kLastRun : runAt(dice, kLargest);
      const int y = dice.oneIn(2) ? kLargest : dice.whole(0, kLargest);
      const double atX = size.width * dice.uniform(0, 1);
      const double atY = size.height * dice.uniform(0, 1);
      ASSERT_TRUE(followsTheFormula(tiltedWarp(dice, size, x + 32, y, atX, atY), x, y)) << i;
      const InverseWarp shift{cv::Matx33d::eye(), x - std::floor(atX), y - std::floor(atY), size};
      ASSERT_TRUE(followsTheFormula(shift, x, y)) << i;
    }
  });
}

// Large terms that cancel leave the noise of their rounding, which is part of the formula.
TEST(WarpedPixels, WhereLargeTermsCancelFollowTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(6);
    for (int i = 0; i < 5000; ++i) {
      const double shift = dice.magnitude(1e6, 1e16);
      InverseWarp warp{cv::Matx33d::eye(), shift, dice.oneIn(2) ? shift : 0, {2000, 2000}};
      warp.Hinv(0, 0) = warp.Hinv(1, 1) = dice.uniform(0.5, 1.5);
      warp.Hinv(0, 2) = warp.Hinv(0, 0) * warp.dx + dice.number(500);
      warp.Hinv(1, 2) = warp.Hinv(1, 1) * warp.dy + dice.number(500);
      ASSERT_TRUE(followsTheFormula(warp, runAt(dice, 1999), dice.whole(0, 1999))) << i;
    }
  });
}

TEST(WarpedPixels, OfNonFiniteNumbersFollowTheFormula) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double values[] = {kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN(),
                           1e308,     -1e308,     5e-324};
  support::onEveryInstructionSet([&] {
    Dice dice(7);
    for (int i = 0; i < 3000; ++i) {
      const cv::Size size(500, 500);
      InverseWarp warp = tiltedWarp(dice, size, 32, 100, 200, 200);
      const int field = dice.whole(0, 10);
      const double value = values[dice.whole(0, 5)];
      (field < 9 ? warp.Hinv.val[field] : field == 9 ? warp.dx : warp.dy) = value;
      ASSERT_TRUE(followsTheFormula(warp, 0, 100)) << i;
    }
  });
}

// --- runs that lie outside ---

TEST(WarpedPixels, RunFarOutsideIsReportedOutside) {
  support::onEveryInstructionSet([] {
    for (const double shift : {-1e3, 1e3, -1e7, 1e7}) {
      const Pixels aside = sourcePixels({cv::Matx33d::eye(), shift, 0, {500, 500}}, 0, 100);
      EXPECT_FALSE(aside.any) << shift;
      EXPECT_EQ(std::count(aside.column, aside.column + kRun, -1), std::ptrdiff_t{kRun});
      const Pixels above = sourcePixels({cv::Matx33d::eye(), 0, shift, {500, 500}}, 0, 100);
      EXPECT_FALSE(above.any) << shift;
      EXPECT_EQ(std::count(above.column, above.column + kRun, -1), std::ptrdiff_t{kRun});
    }
  });
}

TEST(WarpedPixels, OnePixelInsideMakesTheRunLieInside) {
  support::onEveryInstructionSet([] {
    for (int k = 0; k < static_cast<int>(kRun); ++k) {
      // A source of one pixel, which output pixel k shows; the one before it, too, or not.
      const Pixels pixels = sourcePixels({cv::Matx33d::eye(), k + 0.25, 0, {1, 1}}, 0, 0);
      EXPECT_TRUE(pixels.any) << k;
      EXPECT_EQ(pixels.column[k], 0) << k;
    }
  });
}

}  // namespace
