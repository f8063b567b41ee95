// Blocks computed by the plain steps in vectors are those computed one pixel after another.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <opencv2/core.hpp>
#include <string>

#include "rendering/block_access.h"
#include "rendering/block_sets.h"
#include "rendering/random_warps.h"

using namespace fisheye_calibration;

namespace {

using rendering::CarefulBlock;
using rendering::CarefulPositions;
using rendering::kBlock;
using rendering::RawPosition;
using rendering::SourcePixel;
using rendering::ViewGeometry;
using support::Dice;

cv::Matx33d turnedView(Dice& dice) {
  const double angle = dice.number(CV_PI);
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return dice.oneIn(2) ? cv::Matx33d(c, 0, s, 0, 1, 0, -s, 0, c)
                       : cv::Matx33d(c, -s, 0, s, c, 0, 0, 0, 1);
}

// A usual camera and those that blocks of floats cannot describe: huge and tiny numbers, rays that
// are not a pinhole's or point backwards, positions at ties.
ViewGeometry geometryOf(Dice& dice, const rendering::InverseWarp& warp) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  const double focal = dice.magnitude(10, 3000);
  lens::Camera camera{
      focal, 0.98 * focal, dice.number(500), dice.number(500), dice.number(.1), dice.number(0.1),
      0};
  cv::Matx33d P = cv::Matx33d::diag({camera.fx, camera.fy, 1});
  P(0, 1) = dice.oneIn(3) ? dice.number(30) : 0;
  cv::Matx33d RR = cv::Matx33d::eye();
  double lens::Camera::*const fields[] = {&lens::Camera::fx, &lens::Camera::fy, &lens::Camera::cx,
                                          &lens::Camera::cy, &lens::Camera::k0, &lens::Camera::k1};
  const double values[] = {kInfinity, -kInfinity, kNaN, 1e308, 1e12, -1e7, 1e5, 0, -0.0};
  switch (dice.whole(0, 5)) {
    case 0:
      break;
    case 1:
      RR = turnedView(dice);
      break;
    case 2:
      camera.k0 = dice.number(1) * dice.magnitude(1, 1e10);
      break;
    case 3:
      camera.fx = camera.fy = P(0, 0) = P(1, 1) = 1e-9;
      camera.cx = camera.cy = 20 + 1.0 / 64;
      break;
    case 4:
      camera.fx = camera.fy = P(0, 0) = P(1, 1) = dice.magnitude(1e5, 1e9);
      camera.cx = camera.cy = 20 + 1.0 / 64;
      camera.k0 = camera.k1 = 0;
      break;
    default:
      camera.*fields[dice.whole(0, 5)] = values[dice.whole(0, 8)];
  }
  return {rendering::rectifyingRays(camera, RR, P, warp.size), warp};
}

// The last bit of each intermediate result counts: positions are small differences of numbers of
// 2^45, on views of a few pixels of a camera that is turned far away.
ViewGeometry sensitiveGeometry(Dice& dice, const rendering::InverseWarp& warp) {
  const double a = dice.number(1.2);
  const double b = dice.number(1.2);
  const cv::Matx33d RR =
      cv::Matx33d(std::cos(a), 0, std::sin(a), 0, 1, 0, -std::sin(a), 0, std::cos(a)) *
      cv::Matx33d(1, 0, 0, 0, std::cos(b), -std::sin(b), 0, std::sin(b), std::cos(b));
  const cv::Matx33d P = cv::Matx33d::diag({1e8, 1e8, 1});
  lens::Camera camera{0x1p45, 0x1p45, 0, 0, dice.number(0.1), dice.number(0.1), 0};
  const cv::Vec3d ray = rendering::rectifyingRays(camera, RR, P, warp.size).iR *
                        cv::Vec3d(warp.size.width / 2, warp.size.height / 2, 1);
  const double x = ray[0] / ray[2];
  const double y = ray[1] / ray[2];
  const double theta = std::atan(std::hypot(x, y));
  const double scale = theta * (1 + theta * (camera.k0 + theta * camera.k1)) / std::hypot(x, y);
  camera.cx = -camera.fx * x * scale;
  camera.cy = -camera.fy * y * scale;
  return {rendering::rectifyingRays(camera, RR, P, warp.size), warp};
}

// The same for source pixels: small differences of numbers of 2^46.
warps::WarpAt sensitiveWarp(Dice& dice) {
  rendering::InverseWarp warp{cv::Matx33d::eye(), dice.uniform(0x1p45, 0x1p46),
                              dice.uniform(0x1p45, 0x1p46), cv::Size(2000, 2000)};
  const int x = dice.whole(0, 1968);
  const int y = dice.whole(0, 1999);
  for (int i = 0; i < 2; ++i) {
    warp.Hinv(i, 0) = dice.number(1.5);
    warp.Hinv(i, 1) = dice.number(1.5);
    warp.Hinv(i, 2) = 1000 - warp.Hinv(i, 0) * (x - warp.dx) - warp.Hinv(i, 1) * (y - warp.dy);
  }
  return {warp, x, y};
}

struct Counts {
  int shown = 0;
  int hidden = 0;
  int atInfinity = 0;
};

void expectPlainBlock(const ViewGeometry& geometry, int x, int y, Counts& counts) {
  CarefulPositions positions(geometry);
  CarefulPositions single(geometry);
  CarefulBlock block;
  const bool isShown = blocks::computeCarefully(geometry, positions, x, y, block);
  bool isAnyShown = false;
  for (int k = 0; k < kBlock; ++k) {
    const SourcePixel source = rendering::sourcePixel(geometry.warp(), x + k, y);
    isAnyShown = isAnyShown || source.column >= 0;
    ASSERT_EQ(block.shown[k], source.column < 0 ? 0 : -1) << k;
    ++(source.column < 0 ? counts.hidden : counts.shown);
    if (source.column < 0) continue;
    ASSERT_EQ(cv::Point(block.column[k], block.row[k]), cv::Point(source.column, source.row)) << k;
    const RawPosition raw = single.exact().at(source.column, source.row);
    ASSERT_EQ(cv::Point(block.u[k], block.v[k]), cv::Point(raw.u, raw.v)) << k;
    counts.atInfinity += raw.u == std::numeric_limits<int>::min() ? 1 : 0;
  }
  ASSERT_EQ(isShown, isAnyShown);
}

class CarefulBlockOf : public testing::TestWithParam<warps::Kind> {};

TEST_P(CarefulBlockOf, HasThePixelsOfThePlainSteps) {
  blocks::onEverySet([] {
    Counts counts;
    Dice dice(1);
    for (int i = 0; i < 500; ++i) {
      const auto [warp, x, y] = GetParam().make(dice);
      if (x > warps::kLargest - kBlock) continue;
      expectPlainBlock(geometryOf(dice, warp), x, y, counts);
      ASSERT_FALSE(HasFatalFailure()) << "block " << i;
    }
    EXPECT_GT(counts.shown, 800);
    EXPECT_GT(counts.hidden, 800);
    EXPECT_GT(counts.atInfinity, 80);
  });
}

INSTANTIATE_TEST_SUITE_P(ManyKinds, CarefulBlockOf, testing::ValuesIn(warps::kKinds));

TEST(CarefulBlock, RoundsEveryStepAsThePlainSteps) {
  blocks::onEverySet([] {
    Counts counts;
    Dice dice(2);
    for (int i = 0; i < 500; ++i) {
      const auto [warp, x, y] = dice.oneIn(2) ? sensitiveWarp(dice) : warps::tilted(dice);
      expectPlainBlock(sensitiveGeometry(dice, warp), x, y, counts);
      ASSERT_FALSE(HasFatalFailure()) << "block " << i;
    }
    EXPECT_GT(counts.shown - counts.atInfinity, 2000);
  });
}

// Cameras of all sizes; theta_d is about 0, a difference of large terms, where k0 is chosen so.
lens::Camera cameraAtTies(Dice& dice, double largestFocal, double theta) {
  const double focal = dice.magnitude(10, largestFocal);
  lens::Camera camera{focal, -0.9 * focal, dice.whole(0, 500) + 1.0 / 64, dice.number(500), 0, 0,
                      0};
  camera.k1 = dice.number(1) * dice.magnitude(0.01, 1e3);
  camera.k0 = dice.oneIn(2) ? -(1 / theta + camera.k1 * theta) : dice.number(0.3);
  return camera;
}

// The documented bound is a sixteenth of what the code allows for.
TEST(CarefulBlock, ArctangentsMovePositionsByLessThanTheirBound) {
  blocks::onEverySet([] {
    Dice dice(3);
    for (const double largestFocal : {1e4, 0x1p40}) {
      blocks::ArctangentCheck check;
      for (int i = 0; i < 20000; ++i) {
        const double r = dice.magnitude(1e-3, 30);
        const double turn = dice.number(CV_PI);
        std::array<double, kBlock> x;
        std::array<double, kBlock> y;
        for (std::size_t k = 0; k < x.size(); ++k) {
          const double spread = r * (1 + dice.number(1e-3));
          x[k] = spread * std::cos(turn);
          y[k] = spread * std::sin(turn);
        }
        blocks::checkArctangents(cameraAtTies(dice, largestFocal, std::atan(r)), x, y, check);
      }
      RecordProperty("largestShare", std::to_string(check.largestShare));
      EXPECT_LT(check.largestShare, 1.0 / 16);
      EXPECT_GT(check.largestShare, 1.0 / 256) << "the bound is far too large";
      EXPECT_EQ(check.wrong, 0);
      if (largestFocal < 1e5) {
        EXPECT_GT(check.certain, 600000) << "of 640000";
      }
    }
  });
}

// Steps of 1/64 are exact, so that the ray of the centre (32, 8) is exactly (0, 0, 1).
TEST(CarefulBlock, OnTheAxisIsThePrincipalPoint) {
  blocks::onEverySet([] {
    const lens::Camera camera{64, 64, 11.25, 7.5, 1e9, -1e9, 0};
    const cv::Matx33d P = cv::Matx33d::diag({64, 64, 1});
    const rendering::InverseWarp warp{cv::Matx33d::eye(), 0, 0, {64, 16}};
    const ViewGeometry geometry(rendering::rectifyingRays(camera, cv::Matx33d::eye(), P, warp.size),
                                warp);
    CarefulPositions positions(geometry);
    CarefulBlock block;
    ASSERT_TRUE(blocks::computeCarefully(geometry, positions, 30, 8, block));
    EXPECT_EQ(block.u[2], 32 * 11 + 8);
    EXPECT_EQ(block.v[2], 32 * 7 + 16);
  });
}

}  // namespace
