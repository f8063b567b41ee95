// Positions of runs are those of the maps, whatever the camera and the order of the pixels.
#include "rendering/fast_positions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <opencv2/core.hpp>

#include "rendering/pixel_runs.h"
#include "support/dice.h"
#include "support/instruction_sets.h"

using namespace fisheye_calibration;

namespace {

using rendering::kNowhere;
using rendering::kRun;
using runs::Maps;
using runs::ordinaryView;
using runs::PixelRun;
using runs::runAlongRow;
using runs::View;
using support::Dice;

View randomView(Dice& dice) {
  View view;
  view.size = {dice.whole(1, 250), dice.whole(1, 120)};
  if (dice.oneIn(8)) {
    view.size = {dice.whole(1000, 9000), dice.whole(1, 3)};
  }
  lens::Camera& c = view.camera;
  const int longer = std::max(view.size.width, view.size.height);
  c.fx = longer * dice.magnitude(0.05, 3);
  c.fy = c.fx * dice.uniform(0.9, 1.1);
  c.cx = view.size.width * dice.uniform(0, 1);
  c.cy = view.size.height * dice.uniform(0, 1);
  c.k0 = dice.number(0.2);
  c.k1 = dice.number(0.2);
  switch (dice.whole(0, 5)) {
    case 0:  // any focal lengths, mirrored ones, too
      c.fx = dice.magnitude(1e-6, 1e5) * (dice.oneIn(3) ? -1 : 1);
      c.fy = dice.magnitude(1e-6, 1e5) * (dice.oneIn(3) ? -1 : 1);
      break;
    case 1:  // the distorted angle turns back
      c.k0 = dice.number(20);
      c.k1 = dice.number(20);
      break;
    case 2:  // positions near whole and half 1/32 pixels
      c.fx = c.fy = 1e6;
      c.cx = dice.whole(-100, 1000) / 64.0;
      c.cy = dice.whole(-100, 1000) / 64.0;
      break;
    case 3:  // positions beyond 16 bits
      c.cx = dice.number(1e6);
      c.cy = dice.number(1e6);
      break;
    default:
      break;
  }
  const double skew = dice.oneIn(3) ? dice.number(1.5) * c.fx : 0;
  view.P = {c.fx, skew, 0, 0, c.fy, 0, 0, 0, 1};
  return view;
}

TEST(FastPositions, OfRandomRunsAreThoseOfTheMaps) {
  int fast = 0;
  int exact = 0;
  for (std::uint64_t seed = 0; seed < 300; ++seed) {
    Dice dice(seed);
    const View view = randomView(dice);
    const bool isFast = rendering::FastPositions(view.rays(), view.size).safeDistance() > 0;
    ++(isFast ? fast : exact);
    support::onEveryInstructionSet(
        [&] { ASSERT_TRUE(areThoseOfTheMaps(view, 1000 + seed, 25)) << "view " << seed; });
  }
  EXPECT_GT(fast, 150);
  EXPECT_GT(exact, 15);
}

TEST(FastPositions, OfAnOrdinaryViewAreThoseOfTheMaps) {
  support::onEveryInstructionSet([] { EXPECT_TRUE(areThoseOfTheMaps(ordinaryView(), 3, 500)); });
}

// Focal lengths so long that float has just enough room: the positions that it would round wrongly
// are many here.
TEST(FastPositions, AtTheLimitOfTheFastComputationAreThoseOfTheMaps) {
  for (const double focal : {5e3, 1e4, 2e4}) {
    SCOPED_TRACE(focal);
    View view = ordinaryView();
    view.size = {400, 300};
    view.P = {300, 40, 0, 0, 290, 0, 0, 0, 1};
    view.camera.fx = focal;
    view.camera.fy = -0.9 * focal;
    EXPECT_GT(rendering::FastPositions(view.rays(), view.size).safeDistance(), 0);
    support::onEveryInstructionSet([&] { EXPECT_TRUE(areThoseOfTheMaps(view, 5, 300)); });
  }
}

TEST(FastPositions, OfAnOrdinaryViewAreRarelyRecomputed) {
  const View view = ordinaryView();
  const rendering::FastPositions positions(view.rays(), view.size);
  support::onEveryInstructionSet([&] {
    rendering::ExactPositions stepped(view.rays(), view.size.width);
    std::size_t recomputed = 0;
    std::size_t pixels = 0;
    for (int row = 0; row < view.size.height; row += 16) {
      for (int column = 0; column < view.size.width; column += static_cast<int>(kRun)) {
        PixelRun run = runAlongRow(column, row);
        recomputed += fill(positions, stepped, run);
        pixels += kRun;
      }
    }
    EXPECT_LT(static_cast<double>(recomputed), 0.03 * static_cast<double>(pixels));
  });
}

TEST(FastPositions, UnwantedPixelsLieNowhere) {
  View view = ordinaryView();
  for (const double fx :
       {410.0, std::numeric_limits<double>::quiet_NaN()}) {  // the fast path, then the exact one
    view.camera.fx = fx;
    const rendering::FastPositions positions(view.rays(), view.size);
    rendering::ExactPositions stepped(view.rays(), view.size.width);
    support::onEveryInstructionSet([&] {
      PixelRun run = runAlongRow(640, 100);
      std::fill_n(run.column, kRun / 2, -1);
      run.column[kRun - 1] = std::numeric_limits<int>::min();
      fill(positions, stepped, run);
      for (std::size_t k = 0; k < kRun; ++k) {
        const bool unwanted = k < kRun / 2 || k == kRun - 1;
        EXPECT_EQ(run.u[k] == kNowhere, unwanted) << k;
        EXPECT_EQ(run.v[k] == kNowhere, unwanted) << k;
      }
    });
  }
}

TEST(FastPositions, BeyondTheCountAreNotRecomputed) {
  View view = ordinaryView();
  view.camera.fx = std::numeric_limits<double>::quiet_NaN();  // every wanted pixel is computed as
                                                              // the maps compute it
  const rendering::FastPositions positions(view.rays(), view.size);
  rendering::ExactPositions stepped(view.rays(), view.size.width);
  PixelRun run = runAlongRow(0, 0);
  run.count = 10;
  EXPECT_EQ(fill(positions, stepped, run), 10U);
  run.column[3] = -1;
  EXPECT_EQ(fill(positions, stepped, run), 9U);
}

// (2^31 - 1)/32 pixels in both coordinates is what kNowhere looks like. The pixel on the optical
// axis lies exactly at the principal point.
TEST(FastPositions, RealPositionIsNeverWrittenAsNowhere) {
  View view = ordinaryView();
  view.camera.cx = view.camera.cy = kNowhere / 32.0;
  const rendering::FastPositions positions(view.rays(), view.size);
  rendering::ExactPositions stepped(view.rays(), view.size.width);
  PixelRun run = runAlongRow(view.size.width / 2, view.size.height / 2);
  run.count = 1;
  fill(positions, stepped, run);
  EXPECT_EQ(run.v[0], kNowhere);
  EXPECT_EQ(run.u[0] & 0x1FFFFF, kNowhere & 0x1FFFFF);
  EXPECT_TRUE(Maps(view).hold(run));
}

}  // namespace
