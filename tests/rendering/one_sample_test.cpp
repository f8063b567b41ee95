// Single samples by hand and against the formula written out.
#include "rendering/one_sample.h"

#include <gtest/gtest.h>

#include <limits>
#include <opencv2/core.hpp>

#include "rendering/sample_formula.h"
#include "support/dice.h"

using namespace fisheye_calibration;

namespace {

using samples::Bytes;
using samples::Frame;
using samples::noise;
using support::Dice;

constexpr unsigned char kUntouched = 0xA5;

// A sample's bytes, and one on either side that must not be written.
Bytes sampled(const Frame& frame, int u, int v) {
  Bytes bytes(static_cast<std::size_t>(frame.bytesPerPixel) + 2, kUntouched);
  rendering::sampleOne(frame.raw(), u, v, bytes.data() + 1);
  return bytes;
}

testing::AssertionResult followsTheFormula(const Frame& frame, int u, int v) {
  Bytes wanted{kUntouched};
  for (int c = 0; c < frame.bytesPerPixel; ++c) {
    wanted.push_back(samples::shownByte(frame, u, v, c));
  }
  wanted.push_back(kUntouched);
  const bool pixels = sampled(frame, u, v) == wanted;
  const bool mask = rendering::validityOfOne(frame.raw(), u, v) == samples::maskByte(frame, u, v);
  if (pixels && mask) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << frame.width << "x" << frame.height << ", " << frame.bytesPerPixel << " bytes: the "
         << (pixels ? "mask" : "pixel") << " at " << u << ", " << v << " is not the formula's";
}

// --- by hand ---

// The one pixel of a frame of one byte a pixel, given top row first, and its validity.
struct One {
  int value;
  int validity;

  bool operator==(const One&) const = default;
};

One sampleAt(const Frame& frame, int u, int v) {
  return {sampled(frame, u, v)[1], rendering::validityOfOne(frame.raw(), u, v)};
}

// Picture 10 20 / 40 80; the lower row comes first in the buffer.
Frame fourPixels() { return {2, 2, 1, {40, 80, 10, 20}}; }

TEST(OneSample, AtWholePositionsShowsTheUpperLeftPixel) {
  EXPECT_EQ(sampleAt(fourPixels(), 0, 0), (One{10, 0}));
}

TEST(OneSample, FractionsMixAlongBothAxes) {
  EXPECT_EQ(sampleAt(fourPixels(), 16, 0).value, 15);  // (10 + 20)/2
  EXPECT_EQ(sampleAt(fourPixels(), 0, 8).value, 18);   // 10 + 30/4 = 17.5, rounded up
  // a = 8, b = 24: upper 12.5, lower 50, (12.5 + 3 * 50)/4 = 40.625
  EXPECT_EQ(sampleAt(fourPixels(), 8, 24).value, 41);
}

TEST(OneSample, LastColumnAndRowShowTheirOwnPixels) {
  EXPECT_EQ(sampleAt(fourPixels(), 32, 0), (One{20, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 0, 32), (One{40, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 32, 32), (One{80, 0}));
}

TEST(OneSample, BeyondTheLastColumnOrRowOnlyItsPixelsAreMixed) {
  // Half a pixel down between 20 and 80, however far to the right.
  EXPECT_EQ(sampleAt(fourPixels(), 32, 16), (One{50, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 32 + 15, 16), (One{50, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 32 + 31, 16), (One{50, 255}));  // mostly outside
  // Half a pixel to the right between 40 and 80, however far down.
  EXPECT_EQ(sampleAt(fourPixels(), 16, 32 + 31), (One{60, 255}));
  // Of the corner's sample one pixel is left.
  EXPECT_EQ(sampleAt(fourPixels(), 32 + 31, 32 + 31), (One{80, 255}));
}

TEST(OneSample, ThatBeginsOutsideIsBlack) {
  EXPECT_EQ(sampleAt(fourPixels(), -1, 0), (One{0, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 0, -1), (One{0, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 64, 0), (One{0, 255}));
  EXPECT_EQ(sampleAt(fourPixels(), 0, 64), (One{0, 255}));
}

// a is 29, b is 11: weights 3 * 21 and 3 * 11 of the column's two pixels, (63 * 100 + 33 * 211)/96
// = 138.16. For 52 and 84 they give exactly 63. Two pixels above each other with weights 16 and 16,
// 10 and 13: 11.5, rounded up.
TEST(OneSample, ExistingPixelsShareTheWeight) {
  EXPECT_EQ(sampleAt({1, 2, 1, {211, 100}}, 29, 11).value, 138);
  EXPECT_EQ(sampleAt({1, 2, 1, {84, 52}}, 29, 11).value, 63);
  EXPECT_EQ(sampleAt({1, 2, 1, {13, 10}}, 7, 16).value, 12);
}

// 15/32 outside: 255 * 15/32 = 119.5; a half outside: 127.5, rounded to 128.
TEST(OneSample, ValidityTurnsWhereHalfOfTheWeightLiesOutside) {
  EXPECT_EQ(sampleAt(fourPixels(), -15, 0), (One{0, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), -16, 0), (One{0, 255}));
  EXPECT_EQ(sampleAt(fourPixels(), 32 + 15, 0), (One{20, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 32 + 16, 0), (One{20, 255}));
  EXPECT_EQ(sampleAt(fourPixels(), 0, -15), (One{0, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 0, 32 + 16), (One{40, 255}));
  // (1 - 9/32)^2 = 0.517 inside, (1 - 10/32)^2 = 0.473.
  EXPECT_EQ(sampleAt(fourPixels(), -9, -9), (One{0, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), -10, -10), (One{0, 255}));
}

TEST(OneSample, PositionsWrapAtSixteenBitsOfTheirWholePart) {
  EXPECT_EQ(sampleAt(fourPixels(), 65536 * 32 + 16, 0), (One{15, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 16, -65536 * 32), (One{15, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 32768 * 32, 0), (One{0, 255}));
}

// Both are 65535 + 31/32 pixels after a multiple of 65536: they begin one pixel before the frame.
TEST(OneSample, LargestPositionBeginsBeforeTheFirstPixel) {
  constexpr int kLargest = std::numeric_limits<int>::max();
  EXPECT_EQ(sampleAt(fourPixels(), kLargest, kLargest), (One{0, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), std::numeric_limits<int>::min(), 0), (One{10, 0}));
}

TEST(OneSample, ChannelsStayApart) {
  // Two rows of two pixels of three bytes; lower row first.
  const Frame frame{2, 2, 3, {0, 0, 9, 0, 0, 9, 100, 50, 9, 200, 150, 9}};
  EXPECT_EQ(sampled(frame, 16, 0), (Bytes{kUntouched, 150, 100, 9, kUntouched}));
}

// --- against the formula ---

class OneSampleOf : public testing::TestWithParam<int> {};  // bytes a pixel

TEST_P(OneSampleOf, FollowsTheFormulaAtEveryPositionOfTinyFrames) {
  Dice dice(1);
  for (const cv::Size& size : {cv::Size(1, 1), cv::Size(2, 1), cv::Size(1, 2), cv::Size(3, 2)}) {
    const Frame frame = noise(dice, size.width, size.height, GetParam());
    for (int v = -40; v <= 32 * size.height + 8; ++v) {
      for (int u = -40; u <= 32 * size.width + 8; ++u) {
        ASSERT_TRUE(followsTheFormula(frame, u, v));
      }
    }
  }
}

TEST_P(OneSampleOf, FollowsTheFormulaInAndAroundFrames) {
  Dice dice(2);
  for (int i = 0; i < 3000; ++i) {
    const Frame frame = noise(dice, dice.whole(1, 20), dice.whole(1, 20), GetParam());
    for (int k = 0; k < 40; ++k) {
      ASSERT_TRUE(followsTheFormula(frame, dice.whole(-64, 32 * frame.width + 32),
                                    dice.whole(-64, 32 * frame.height + 32)));
    }
  }
}

TEST_P(OneSampleOf, FollowsTheFormulaAtAnyPosition) {
  constexpr int kLeast = std::numeric_limits<int>::min();
  constexpr int kLargest = std::numeric_limits<int>::max();
  Dice dice(3);
  const auto position = [&](int size) {
    if (dice.oneIn(4)) return dice.whole(kLeast, kLargest);
    if (dice.oneIn(8)) return dice.oneIn(2) ? kLeast : kLargest;
    const int wrapped = dice.oneIn(4) ? dice.whole(-100, 100) * (1 << 21) : 0;
    return dice.whole(-64, 32 * size + 32) + wrapped;
  };
  for (int i = 0; i < 1500; ++i) {
    const Frame frame = noise(dice, dice.whole(1, 30), dice.whole(1, 30), GetParam());
    for (int k = 0; k < 40; ++k) {
      ASSERT_TRUE(followsTheFormula(frame, position(frame.width), position(frame.height)));
    }
  }
}

// Only the first 32768 columns or rows can be reached.
TEST_P(OneSampleOf, FollowsTheFormulaAtTheEndOfSixteenBits) {
  Dice dice(4);
  const Frame frames[] = {noise(dice, 70000, 2, GetParam()), noise(dice, 2, 70000, GetParam()),
                          noise(dice, 32768, 2, GetParam()), noise(dice, 32769, 2, GetParam()),
                          noise(dice, 32767, 2, GetParam()), noise(dice, 2, 32768, GetParam())};
  for (const Frame& frame : frames) {
    for (int i = 0; i < 4000; ++i) {
      const int along = 32 * 32768 + dice.whole(-96, 96);
      const int across = dice.whole(-64, 96);
      ASSERT_TRUE(frame.height == 2 ? followsTheFormula(frame, along, across)
                                    : followsTheFormula(frame, across, along));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(BytesAPixel, OneSampleOf, testing::Values(1, 3, 4));

}  // namespace
