// Samples of blocks against the formula written out, on every instruction set.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "rendering/block_access.h"
#include "rendering/block_sets.h"
#include "rendering/one_sample.h"
#include "rendering/sample_blocks.h"
#include "rendering/sample_formula.h"
#include "support/dice.h"

using namespace fisheye_calibration;

namespace {

using blocks::alongLine;
using blocks::Block;
using blocks::hideSome;
using blocks::placeBase;
using blocks::scattered;
using rendering::kBlock;
using samples::Bytes;
using samples::Frame;
using samples::noise;
using support::Dice;

constexpr unsigned char kUntouched = 0xA5;
constexpr std::size_t kGuard = 64;       // bytes before and after what may be written
constexpr std::size_t kBytesBehind = 4;  // may be written behind 24-bit blocks
constexpr std::size_t kPixels = kBlock;

struct Call {
  int moreExtent = 0;
  bool isLast = true;
  bool masked = true;
};

testing::AssertionResult followsTheFormula(const Frame& frame, const Block& block,
                                           const Call& call) {
  const auto bytes = static_cast<std::size_t>(frame.bytesPerPixel);
  Bytes pixels(kPixels * bytes + 2 * kGuard, kUntouched);
  Bytes mask(kPixels + 2 * kGuard, kUntouched);
  Bytes wantedPixels = pixels;
  Bytes wantedMask = mask;
  const rendering::BlockPositions positions = block.positions();
  blocks::sample(frame.raw(),
                 {positions, block.baseU, block.baseV, block.extent() + call.moreExtent, block.edge,
                  call.isLast},
                 pixels.data() + kGuard, call.masked ? mask.data() + kGuard : nullptr);
  for (std::size_t k = 0; k < kPixels; ++k) {
    const bool hidden = block.edge && block.hidden[k];
    for (std::size_t c = 0; c < bytes; ++c) {
      wantedPixels[kGuard + k * bytes + c] =
          hidden ? 0 : samples::shownByte(frame, block.u[k], block.v[k], static_cast<int>(c));
    }
    if (call.masked) {
      wantedMask[kGuard + k] = hidden ? 255 : samples::maskByte(frame, block.u[k], block.v[k]);
    }
  }
  if (bytes == 3 && !call.isLast) {
    const auto behind = pixels.begin() + static_cast<std::ptrdiff_t>(kGuard + kPixels * bytes);
    std::fill_n(behind, kBytesBehind, kUntouched);
  }
  if (pixels == wantedPixels && mask == wantedMask) return testing::AssertionSuccess();
  const auto wrong = std::mismatch(pixels.begin(), pixels.end(), wantedPixels.begin()).first;
  return testing::AssertionFailure()
         << frame.width << "x" << frame.height << ", " << bytes << " bytes, base " << block.baseU
         << ", " << block.baseV << ", extent " << block.extent() << "+" << call.moreExtent
         << ", edge " << block.edge << ", last " << call.isLast << ": "
         << (pixels == wantedPixels ? "the mask is" : "pixels are") << " not the formula's, byte "
         << wrong - pixels.begin() - static_cast<std::ptrdiff_t>(kGuard);
}

Call anyCall(Dice& dice) {
  return {dice.oneIn(2) ? 0 : dice.whole(0, 20), dice.oneIn(2), !dice.oneIn(4)};
}

// In the frame and a little around it.
Block around(Dice& dice, const Frame& frame) {
  const int u = dice.whole(-96, 32 * frame.width + 64);
  const int v = dice.whole(-96, 32 * frame.height + 64);
  Block block;
  switch (dice.whole(0, 3)) {
    case 0:
      block = alongLine(dice, u, v, dice.oneIn(2) ? 40 : 200);
      break;
    case 1:
      block = scattered(dice, -3, -3, frame.width + 5, frame.height + 5);
      break;
    case 2:  // windows of the sizes that are read at once, and neighbours
      block = scattered(dice, u >> 5, v >> 5, dice.whole(12, 18), dice.whole(0, 5));
      break;
    default:
      block = alongLine(dice, u, v, 5);
      break;
  }
  placeBase(dice, block);
  if (dice.oneIn(3)) hideSome(dice, block);
  return block;
}

class BlockSamples : public testing::TestWithParam<int> {};  // bytes a pixel

TEST_P(BlockSamples, OfFramesOfEverySmallSizeFollowTheFormula) {
  blocks::onEverySet([] {
    Dice dice(1);
    for (int height = 1; height <= 20; ++height) {
      for (int width = 1; width <= 40; ++width) {
        const Frame frame = noise(dice, width, height, GetParam());
        for (int i = 0; i < 20; ++i) {
          ASSERT_TRUE(followsTheFormula(frame, around(dice, frame), anyCall(dice))) << i;
        }
      }
    }
  });
}

// The sizes of what is read at once, and their neighbours.
TEST_P(BlockSamples, OfFramesAsLargeAsAWindowFollowTheFormula) {
  blocks::onEverySet([] {
    Dice dice(2);
    for (int height = 1; height <= 6; ++height) {
      for (const int width : {1, 2, 3, 4, 5, 15, 16, 17, 18}) {
        const Frame frame = noise(dice, width, height, GetParam());
        for (int i = 0; i < 200; ++i) {
          ASSERT_TRUE(followsTheFormula(frame, around(dice, frame), anyCall(dice))) << i;
        }
      }
    }
  });
}

// Nothing that is read for such a block lies outside the frame.
TEST_P(BlockSamples, DeepInsideFollowTheFormula) {
  blocks::onEverySet([] {
    Dice dice(3);
    const Frame frame = noise(dice, 300, 200, GetParam());
    for (int i = 0; i < 6000; ++i) {
      const int height = dice.whole(0, dice.oneIn(2) ? 5 : 60);
      Block block = dice.oneIn(2) ? alongLine(dice, 32 * 150, 32 * 100, dice.whole(0, 90))
                                  : scattered(dice, 100, 70, dice.whole(0, 60), height);
      placeBase(dice, block);
      if (dice.oneIn(3)) hideSome(dice, block);
      ASSERT_TRUE(followsTheFormula(frame, block, anyCall(dice))) << i;
    }
  });
}

// Blocks at every offset from each corner and side.
TEST_P(BlockSamples, AcrossEveryBorderFollowTheFormula) {
  blocks::onEverySet([] {
    Dice dice(4);
    const Frame frame = noise(dice, 50, 30, GetParam());
    for (int y = -6; y <= frame.height + 3; ++y) {
      for (int x = -40; x <= frame.width + 5; x += 1 + dice.whole(0, 2)) {
        Block block;
        for (int k = 0; k < kBlock; ++k) {
          block.u[k] = 32 * (x + k) + dice.whole(0, 31);
          block.v[k] = 32 * y + dice.whole(-20, 80);
        }
        placeBase(dice, block);
        if (dice.oneIn(4)) hideSome(dice, block);
        ASSERT_TRUE(followsTheFormula(frame, block, anyCall(dice))) << x << ", " << y;
      }
    }
  });
}

TEST_P(BlockSamples, WhollyOutsideAreBlack) {
  blocks::onEverySet([] {
    Dice dice(5);
    for (int i = 0; i < 3000; ++i) {
      const Frame frame = noise(dice, dice.whole(1, 40), dice.whole(1, 40), GetParam());
      const int side = dice.whole(0, 3);
      const int x = side == 0 ? -70 : side == 1 ? frame.width + dice.whole(0, 9) : -10;
      const int y = side == 2 ? -70 : side == 3 ? frame.height + dice.whole(0, 9) : -10;
      Block block = scattered(dice, x, y, 65, 65);
      placeBase(dice, block);
      ASSERT_TRUE(followsTheFormula(frame, block, anyCall(dice))) << i;
    }
  });
}

TEST_P(BlockSamples, OfAllFractionsFollowTheFormula) {
  blocks::onEverySet([] {
    Dice dice(6);
    for (int i = 0; i < 12; ++i) {
      const Frame frame = noise(dice, 70, 40, GetParam());
      const int x = i % 3 == 0 ? frame.width - 2 : dice.whole(20, 40);  // the last columns, too
      for (int b = 0; b < 32; ++b) {
        Block block;
        for (int a = 0; a < kBlock; ++a) {
          const int k = (a * 5 + i) % kBlock;
          block.u[k] = 32 * (x + (i % 2 == 0 ? 0 : a / 4)) + a;
          block.v[k] = 32 * 17 + b;
        }
        placeBase(dice, block);
        ASSERT_TRUE(followsTheFormula(frame, block, anyCall(dice))) << i << ", " << b;
      }
    }
  });
}

// Rows of 32767 bytes and about: products of row numbers and strides exceed 16 bits.
TEST_P(BlockSamples, OfWideFramesFollowTheFormula) {
  const std::vector<int> widths = GetParam() == 1   ? std::vector{32766, 32767, 32768, 32769, 70000}
                                  : GetParam() == 3 ? std::vector{10921, 10922, 10923, 10924, 40000}
                                                    : std::vector{8191, 8192, 16384, 40000};
  Dice frames(7);
  for (const int width : widths) {
    const Frame frame = noise(frames, width, 20, GetParam());
    blocks::onEverySet([&] {
      Dice dice(8);
      const int last = std::min(width, 30900);
      for (int i = 0; i < 300; ++i) {
        const int x = dice.oneIn(2) ? dice.whole(last - 40, last) : dice.whole(-10, last);
        Block block = scattered(dice, x, dice.whole(-3, 18), dice.whole(0, 30), dice.whole(0, 20));
        placeBase(dice, block);
        if (dice.oneIn(4)) hideSome(dice, block);
        ASSERT_TRUE(followsTheFormula(frame, block, anyCall(dice))) << i;
      }
    });
  }
}

// Offsets of up to 937 pixels on both sides.
TEST_P(BlockSamples, FarFromTheirBaseFollowTheFormula) {
  blocks::onEverySet([] {
    Dice dice(9);
    const Frame frame = noise(dice, 700, 900, GetParam());
    for (int i = 0; i < 1000; ++i) {
      Block block = scattered(dice, -20, -20, 740, 940);
      if (dice.oneIn(2)) block = scattered(dice, dice.whole(0, 600), dice.whole(0, 800), 90, 90);
      placeBase(dice, block);
      ASSERT_TRUE(followsTheFormula(frame, block, anyCall(dice))) << i;
    }
  });
}

// A row of almost 2^31 pixels, of which only the first ones are there to be read.
TEST(BlockSamplesOfTheLongestRow, AreThoseOfOnePixelEach) {
  blocks::onEverySet([] {
    Dice dice(10);
    std::vector<unsigned char> row(2048);
    for (unsigned char& byte : row) byte = static_cast<unsigned char>(dice.whole(0, 255));
    const images::Frame frame{row.data(), 2147483647, 1, 1};
    for (int i = 0; i < 200; ++i) {
      Block block;
      block.baseU = dice.whole(-40, 2);
      block.baseV = dice.whole(-2, 1);
      for (int k = 0; k < rendering::kBlock; ++k) {
        block.u[k] = dice.whole(-64, 32 * 900);
        block.v[k] = dice.whole(-40, 40);
      }
      const rendering::BlockPositions positions = block.positions();
      unsigned char pixels[rendering::kBlock];
      unsigned char mask[rendering::kBlock];
      blocks::sample(frame, {positions, block.baseU, block.baseV, block.extent(), false, true},
                     pixels, mask);
      for (int k = 0; k < rendering::kBlock; ++k) {
        unsigned char pixel = 0;
        rendering::sampleOne(frame, block.u[k], block.v[k], &pixel);
        ASSERT_EQ(pixels[k], pixel) << i << ", " << k;
        ASSERT_EQ(mask[k], rendering::validityOfOne(frame, block.u[k], block.v[k]))
            << i << ", " << k;
      }
    }
  });
}

INSTANTIATE_TEST_SUITE_P(BytesAPixel, BlockSamples, testing::Values(1, 3, 4));

}  // namespace
