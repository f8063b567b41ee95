// What batches of blocks claim to show against the source pixels of all of their pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "rendering/block_access.h"
#include "rendering/block_sets.h"
#include "rendering/random_warps.h"
#include "rendering/view_geometry.h"

using namespace fisheye_calibration;

namespace {

using rendering::BlockBatch;
using rendering::InverseWarp;
using rendering::kBatch;
using rendering::kBlock;
using rendering::RowPart;
using rendering::ViewGeometry;
using support::Dice;

ViewGeometry geometryOf(const InverseWarp& warp) {
  lens::Camera camera{0, 0, 320, 240, 0.02, -0.03, 0};
  camera.fx = camera.fy = std::clamp(0.4 * warp.size.width, 10.0, 2000.0);
  const cv::Matx33d P = cv::Matx33d::diag({camera.fx, camera.fy, 1});
  return {rendering::rectifyingRays(camera, cv::Matx33d::eye(), P, warp.size), warp};
}

// Blocks that were classified.
struct Counts {
  int inside = 0;
  int outside = 0;
  int all = 0;
};

bool has(unsigned bits, int i) { return (bits >> i & 1) != 0; }

// The part's pixels from the first one of block i on: the last block ends with the part.
int startOf(const RowPart& part, int i) {
  const std::int64_t start = part.begin + std::int64_t{kBlock} * i;
  return static_cast<int>(std::min<std::int64_t>(start, part.end - kBlock));
}

testing::AssertionResult isTrue(const InverseWarp& warp, const RowPart& part, int first,
                                const BlockBatch& batch, Counts& counts) {
  const int blocks = (part.count() - 1) / kBlock + 1;
  for (int i = 0; i < std::min(kBatch, blocks - first); ++i) {
    const int start = startOf(part, first + i);
    // Only small blocks are rendered by their insides.
    const bool inside = has(batch.inside, i) && has(batch.small, i);
    const bool outside = has(batch.outside, i);
    ++counts.all;
    counts.inside += inside ? 1 : 0;
    counts.outside += outside ? 1 : 0;
    for (int k = 0; k < kBlock; ++k) {
      const bool shown = rendering::sourcePixel(warp, start + k, part.y).column >= 0;
      if ((inside && !shown) || (outside && shown)) {
        return testing::AssertionFailure()
               << "block " << first + i << " of columns " << part.begin << " to " << part.end
               << ", row " << part.y << " is not " << (inside ? "inside" : "outside") << " at " << k
               << ": " << warp.size << ", Hinv " << warp.Hinv << ", shift " << warp.dx << ", "
               << warp.dy;
      }
    }
  }
  return testing::AssertionSuccess();
}

class BlockSetupOf : public testing::TestWithParam<warps::Kind> {};

// A part of the row, or the whole one, and the batch that includes the interesting pixel.
TEST_P(BlockSetupOf, NeverContradictsTheSourcePixels) {
  Dice dice(1);
  Counts counts;
  bool skipped = false;
  for (int i = 0; i < 1500 && !HasFatalFailure() && !skipped; ++i) {
    const warps::WarpAt at = GetParam().make(dice);
    const InverseWarp& warp = at.warp;
    const int width = warp.size.width;
    if (width < kBlock) continue;
    RowPart part{at.y, 0, width};
    if (dice.oneIn(2)) {
      part.begin = std::clamp(at.x - dice.whole(0, 300), 0, width - kBlock);
      const std::int64_t end = std::int64_t{part.begin} + dice.whole(kBlock, 600);
      part.end = static_cast<int>(std::min<std::int64_t>(end, width));
    }
    const int first = (at.x - part.begin) / (kBlock * kBatch) * kBatch;
    const ViewGeometry geometry = geometryOf(warp);
    if (!geometry.hasBlocks()) continue;
    blocks::onEverySet([&] {
      BlockBatch batch;
      blocks::prepare(geometry, part, first, batch);
      ASSERT_TRUE(isTrue(warp, part, first, batch, counts)) << i;
    });
    skipped = IsSkipped();
  }
  if (skipped) return;
  EXPECT_GT(counts.all, 1000);
  EXPECT_GT(counts.inside, counts.all / 100);
  EXPECT_GT(counts.outside, counts.all / 100);
}

INSTANTIATE_TEST_SUITE_P(ManyKinds, BlockSetupOf, testing::ValuesIn(warps::kKinds));

// --- by hand ---

BlockBatch batchOf(const InverseWarp& warp, const RowPart& part) {
  BlockBatch batch;
  blocks::prepare(geometryOf(warp), part, 0, batch);
  return batch;
}

// 256 columns are eight blocks, of which the first and the last touch the border.
TEST(BlockSetup, OfTheIdentityLiesInsideAwayFromTheBorder) {
  blocks::onEverySet([] {
    const InverseWarp identity{cv::Matx33d::eye(), 0, 0, {256, 100}};
    const BlockBatch batch = batchOf(identity, {50, 0, 256});
    EXPECT_EQ(batch.inside, 0x7EU);
    EXPECT_EQ(batch.outside, 0U);
    EXPECT_EQ(batch.small, 0xFFU);
    EXPECT_EQ(batch.gentle, 0xFFU);
    for (int i = 0; i < kBatch; ++i) {
      EXPECT_EQ(batch.column[i], 32 * i + 16);
      EXPECT_EQ(batch.row[i], 50);
      EXPECT_EQ(batch.ax[i], 0);
      EXPECT_EQ(batch.bx[i], 1);
      EXPECT_EQ(batch.by[i], 0);
    }
    EXPECT_EQ(batchOf(identity, {0, 0, 256}).inside, 0U);
    EXPECT_EQ(batchOf(identity, {99, 0, 256}).inside, 0U);
  });
}

// Columns 5 to 105: blocks begin at 5, 37, 69 and 73.
TEST(BlockSetup, LastBlockEndsWithThePart) {
  blocks::onEverySet([] {
    const InverseWarp identity{cv::Matx33d::eye(), 0, 0, {256, 100}};
    const BlockBatch batch = batchOf(identity, {50, 5, 105});
    EXPECT_EQ(batch.column[0], 5 + 16);
    EXPECT_EQ(batch.column[2], 69 + 16);
    EXPECT_EQ(batch.column[3], 73 + 16);
  });
}

TEST(BlockSetup, FarFromTheImageLiesOutside) {
  blocks::onEverySet([] {
    for (const double shift : {-300.0, 300.0, -1e7, 1e7}) {
      const BlockBatch aside = batchOf({cv::Matx33d::eye(), shift, 0, {256, 100}}, {50, 0, 256});
      EXPECT_EQ(aside.outside, 0xFFU) << shift;
      EXPECT_EQ(aside.inside, 0U) << shift;
      const BlockBatch above = batchOf({cv::Matx33d::eye(), 0, shift, {256, 100}}, {50, 0, 256});
      EXPECT_EQ(above.outside, 0xFFU) << shift;
      EXPECT_EQ(above.inside, 0U) << shift;
    }
  });
}

// The image begins within block 4.
TEST(BlockSetup, AcrossTheBorderLiesNeitherInsideNorOutside) {
  blocks::onEverySet([] {
    const BlockBatch batch = batchOf({cv::Matx33d::eye(), 144, 0, {256, 100}}, {50, 0, 256});
    EXPECT_EQ(batch.outside, 0x0FU);
    EXPECT_EQ(batch.inside, 0xE0U);
  });
}

// w = 1 - x/100: its zero lies in block 3, and it changes by more than 2% per pixel from x = 50 on.
TEST(BlockSetup, AtTheHorizonIsNotSmall) {
  blocks::onEverySet([] {
    InverseWarp warp{cv::Matx33d::eye(), 0, 0, {256, 100}};
    warp.Hinv(2, 0) = -0.01;
    const BlockBatch batch = batchOf(warp, {50, 0, 256});
    EXPECT_FALSE(has(batch.small, 2) || has(batch.small, 3));
    EXPECT_FALSE(has(batch.outside, 2) || has(batch.outside, 3));
    EXPECT_EQ(batch.gentle, 0U);
  });
}

}  // namespace
