// Pixels that are computed one at a time, on their own and within blocks.
#include "rendering/careful_pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

#include "rendering/block_access.h"
#include "rendering/block_sets.h"
#include "rendering/random_warps.h"
#include "rendering/sample_formula.h"

using namespace fisheye_calibration;

namespace {

using rendering::BlockBatch;
using rendering::CarefulPositions;
using rendering::InverseWarp;
using rendering::kBlock;
using rendering::RawPosition;
using rendering::SourcePixel;
using rendering::ViewGeometry;
using samples::Bytes;
using support::Dice;

constexpr int kFrameWidth = 90;
constexpr int kFrameHeight = 70;
constexpr unsigned char kUntouched = 0xA5;

// A lens that sees a frame of that size.
ViewGeometry geometryOf(const InverseWarp& warp) {
  const double focal = 0.4 * kFrameWidth;
  const lens::Camera camera{focal, 0.98 * focal, 44, 36, 0.02, -0.03, 0};
  const cv::Matx33d P = cv::Matx33d::diag({camera.fx, camera.fy, 1});
  return {rendering::rectifyingRays(camera, cv::Matx33d::eye(), P, warp.size), warp};
}

InverseWarp anyWarp(Dice& dice) {
  const cv::Size size(dice.whole(32, 300), dice.whole(1, 200));
  return warps::tiltedWarp(dice, size, dice.whole(0, size.width - 1),
                           dice.whole(0, size.height - 1), dice.uniform(-20, size.width + 20.0),
                           dice.uniform(-20, size.height + 20.0));
}

class CarefulPixels : public testing::TestWithParam<int> {};  // bytes a pixel

TEST_P(CarefulPixels, ShowTheSamplesAtTheirPositions) {
  Dice dice(1);
  int shown = 0;
  for (int i = 0; i < 300; ++i) {
    const InverseWarp warp = anyWarp(dice);
    const ViewGeometry geometry = geometryOf(warp);
    CarefulPositions positions(geometry);
    const auto frame = samples::noise(dice, kFrameWidth, kFrameHeight, GetParam());
    const int count = dice.whole(1, warp.size.width);
    const int x = dice.whole(0, warp.size.width - count);
    const int y = dice.whole(0, warp.size.height - 1);
    Bytes pixels(static_cast<std::size_t>(count * GetParam()) + 2, kUntouched);
    Bytes mask(static_cast<std::size_t>(count) + 2, kUntouched);
    const bool masked = dice.oneIn(2);
    for (int k = 0; k < count; k += kBlock) {
      const int part = std::min(kBlock, count - k);
      rendering::CarefulBlock block;
      rendering::computeCarefully(warp, positions, x + k, y, part, block);
      rendering::sampleOneByOne(frame.raw(), block, part, pixels.data() + 1 + k * GetParam(),
                                masked ? mask.data() + 1 + k : nullptr);
    }
    Bytes wantedPixels{kUntouched};
    Bytes wantedMask{kUntouched};
    for (int k = 0; k < count; ++k) {
      const SourcePixel source = rendering::sourcePixel(warp, x + k, y);
      const bool shows = source.column >= 0;
      const RawPosition raw = shows ? positions.at(source) : RawPosition{};
      for (int c = 0; c < GetParam(); ++c) {
        wantedPixels.push_back(shows ? samples::shownByte(frame, raw.u, raw.v, c)
                                     : static_cast<unsigned char>(0));
      }
      const unsigned char validity = shows ? samples::maskByte(frame, raw.u, raw.v) : 255;
      wantedMask.push_back(masked ? validity : kUntouched);
      shown += shows ? 1 : 0;
    }
    wantedPixels.push_back(kUntouched);
    wantedMask.push_back(kUntouched);
    ASSERT_EQ(pixels, wantedPixels) << i;
    ASSERT_EQ(mask, wantedMask) << i;
  }
  EXPECT_GT(shown, 3000);
}

INSTANTIATE_TEST_SUITE_P(BytesAPixel, CarefulPixels, testing::Values(1, 3, 4));

// --- relative to a whole pixel ---

// All pixels of the block, at one raw position.
rendering::CarefulBlock blockAt(int u, int v) {
  rendering::CarefulBlock block;
  std::fill_n(block.u, kBlock, u);
  std::fill_n(block.v, kBlock, v);
  std::fill_n(block.shown, kBlock, static_cast<std::int16_t>(-1));
  return block;
}

// The first position is 32 (-2, 7) + (5, 31).
TEST(CarefulBlock, PositionsAreRelativeToTheFirstPixel) {
  rendering::CarefulBlock block = blockAt(-64 + 5, 224 + 31);
  block.shown[4] = 0;
  block.u[9] = 1000;
  block.v[9] = -32;
  int baseU = 0;
  int baseV = 0;
  rendering::BlockPositions relative;
  ASSERT_TRUE(rendering::makeRelative(block, baseU, baseV, relative));
  EXPECT_EQ(baseU, -2);
  EXPECT_EQ(baseV, 7);
  EXPECT_EQ(relative.u[3], 5);
  EXPECT_EQ(relative.v[3], 31);
  EXPECT_EQ(relative.u[9], 1064);
  EXPECT_EQ(relative.v[9], -256);
  EXPECT_EQ(relative.shown[9], -1);
  EXPECT_EQ(relative.shown[4], 0);
}

TEST(CarefulBlock, PositionsThatDoNotFit16BitsAreRefused) {
  int baseU = 0;
  int baseV = 0;
  rendering::BlockPositions relative;
  rendering::CarefulBlock block = blockAt(0, 0);
  block.u[31] = 31999;
  EXPECT_TRUE(rendering::makeRelative(block, baseU, baseV, relative));
  block.u[31] = 32000;
  EXPECT_FALSE(rendering::makeRelative(block, baseU, baseV, relative));
  block = blockAt(0, 0);
  block.v[1] = -32000;
  EXPECT_FALSE(rendering::makeRelative(block, baseU, baseV, relative));
  // Close together, but where whole pixels wrap around (compatibility 39).
  EXPECT_FALSE(rendering::makeRelative(blockAt(32 * 30000, 0), baseU, baseV, relative));
  EXPECT_FALSE(rendering::makeRelative(blockAt(0, -32 * 30000), baseU, baseV, relative));
}

// Whole pixels 2^16 apart are the same (compatibility 39); -2^31 = 32 (-2^10 2^16) is column 0.
TEST(CarefulBlock, PositionsWrapAround) {
  rendering::CarefulBlock block = blockAt(32 * 65536 + 40, -32 * 65536 - 1);
  block.u[7] = -2147483647 - 1;
  block.v[7] = 2147483647;
  int baseU = 0;
  int baseV = 0;
  rendering::BlockPositions relative;
  ASSERT_TRUE(rendering::makeRelative(block, baseU, baseV, relative));
  EXPECT_EQ(baseU, 1);
  EXPECT_EQ(baseV, -1);
  EXPECT_EQ(relative.u[0], 8);
  EXPECT_EQ(relative.v[0], 31);
  EXPECT_EQ(relative.u[7], -32);
  EXPECT_EQ(relative.v[7], 31);
}

TEST(CarefulBlock, PixelsThatShowNothingHaveTheSourceOfAnother) {
  rendering::CarefulBlock block;
  std::fill_n(block.column, kBlock, -1);
  std::fill_n(block.row, kBlock, -1);
  EXPECT_FALSE(rendering::completeSources(block));
  block.row[5] = 7;  // without a column
  EXPECT_FALSE(rendering::completeSources(block));
  block.column[9] = 30;
  block.row[9] = 40;
  block.column[20] = 0;
  block.row[20] = 0;
  ASSERT_TRUE(rendering::completeSources(block));
  for (int k = 0; k < kBlock; ++k) {
    EXPECT_EQ(block.shown[k], k == 9 || k == 20 ? -1 : 0) << k;
    EXPECT_EQ(block.column[k], k < 20 ? 30 : 0) << k;
    EXPECT_EQ(block.row[k], k < 20 ? 40 : 0) << k;
  }
}

// --- within blocks ---

struct Counts {
  int settled = 0;
  int hidden = 0;
};

bool has(std::uint32_t bits, int k) { return (bits >> k & 1) != 0; }

// Settles some pixels of a block whose positions were wiped out before.
void expectSettled(Dice& dice, const ViewGeometry& geometry, const BlockBatch& batch, int i,
                   const cv::Point& start, Counts& counts) {
  const InverseWarp& warp = geometry.warp();
  CarefulPositions positions(geometry);
  blocks::Trace trace = blocks::trace(geometry, batch, i);
  const bool edge = !has(batch.inside, i);
  rendering::DoubtfulPixels doubtful;
  for (int k = 0; k < kBlock; ++k) {
    const auto isClear = [&](float s) { return std::abs(s - std::nearbyint(s)) < batch.clear[i]; };
    const bool clear = isClear(trace.detail.sx[k]) && isClear(trace.detail.sy[k]);
    const std::uint32_t bit = std::uint32_t{1} << k;
    if (dice.oneIn(3)) doubtful.source |= bit;
    if (clear && dice.oneIn(3)) doubtful.position |= bit;
  }
  rendering::BlockPositions wanted = trace.positions;
  for (int k = 0; k < kBlock; ++k) {
    const auto p = static_cast<std::size_t>(k);
    const int pixel = trace.order[p];
    if (!has(doubtful.source | doubtful.position, k)) continue;
    trace.positions.u[pixel] = trace.positions.v[pixel] = wanted.u[pixel] = wanted.v[pixel] = 12345;
    const SourcePixel source = rendering::sourcePixel(warp, start.x + pixel, start.y);
    if (edge && has(doubtful.source, k)) {
      trace.positions.shown[pixel] = 0x5A5A;
      wanted.shown[pixel] = source.column < 0 ? 0 : -1;
    }
    ++(source.column < 0 ? counts.hidden : counts.settled);
    if (source.column < 0) continue;
    const RawPosition raw = positions.at(source);
    wanted.u[pixel] = static_cast<std::int16_t>(raw.u - 32 * batch.baseU[i]);
    wanted.v[pixel] = static_cast<std::int16_t>(raw.v - 32 * batch.baseV[i]);
  }
  rendering::settle(warp, positions, {batch, i, start.x, start.y, edge}, doubtful,
                    trace.order.data(), trace.detail, trace.positions);
  for (int pixel = 0; pixel < kBlock; ++pixel) {
    if (edge) {
      ASSERT_EQ(trace.positions.shown[pixel], wanted.shown[pixel]) << pixel;
      if (wanted.shown[pixel] == 0) continue;  // hidden pixels may lie anywhere
    }
    ASSERT_EQ(trace.positions.u[pixel], wanted.u[pixel]) << pixel;
    ASSERT_EQ(trace.positions.v[pixel], wanted.v[pixel]) << pixel;
  }
}

TEST(CarefulPixelsOfBlocks, TakeThePlacesOfDoubtfulOnes) {
  Counts counts;
  blocks::onEverySet([&] {
    Dice dice(2);
    for (int n = 0; n < 1000; ++n) {
      const InverseWarp warp = anyWarp(dice);
      const ViewGeometry geometry = geometryOf(warp);
      if (!geometry.hasBlocks()) continue;
      const int y = dice.whole(0, warp.size.height - 1);
      const rendering::RowPart part{y, 0, warp.size.width};
      BlockBatch batch;
      blocks::prepare(geometry, part, 0, batch);
      for (int i = 0; i < std::min((part.count() - 1) / kBlock + 1, rendering::kBatch); ++i) {
        const bool used = has(batch.small, i) && !has(batch.outside, i);
        if (!used || geometry.node(batch.node[i]).safe == 0) continue;
        const int x = std::min(i * kBlock, part.count() - kBlock);
        expectSettled(dice, geometry, batch, i, {x, y}, counts);
        ASSERT_FALSE(testing::Test::HasFatalFailure()) << n << ", block " << i;
      }
    }
  });
  if (IsSkipped()) return;
  EXPECT_GT(counts.settled, 10000);
  EXPECT_GT(counts.hidden, 1000);
}

}  // namespace
