// Samples of runs against the formula written out, on every instruction set.
#include "rendering/bilinear_sampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "rendering/run.h"
#include "support/dice.h"
#include "support/instruction_sets.h"

using namespace fisheye_calibration;

namespace {

using rendering::kNowhere;
using rendering::kRun;
using support::Dice;
using Bytes = std::vector<unsigned char>;

constexpr unsigned char kUntouched = 0xA5;
constexpr std::size_t kGuard = 16;  // bytes before and after what may be written

// As large as its pixels: a sanitizer sees any byte read beyond them.
struct Frame {
  int width;
  int height;
  int bytesPerPixel;
  Bytes bytes = Bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                      static_cast<std::size_t>(bytesPerPixel));

  images::Frame raw() const { return {bytes.data(), width, height, bytesPerPixel}; }

  // Byte c of picture pixel (x, y), rows counted from the top; `outside` beyond the frame.
  int at(int x, int y, int c, int outside) const {
    if (x < 0 || y < 0 || x >= width || y >= height) return outside;
    const std::size_t row = static_cast<std::size_t>(height - 1 - y);
    const std::size_t pixel = row * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    return bytes[pixel * static_cast<std::size_t>(bytesPerPixel) + static_cast<std::size_t>(c)];
  }
};

Frame noise(Dice& dice, int width, int height, int bytesPerPixel) {
  Frame frame{width, height, bytesPerPixel};
  const bool extremes = dice.oneIn(4);
  for (unsigned char& byte : frame.bytes) {
    byte = static_cast<unsigned char>(extremes ? dice.whole(0, 1) * 255 : dice.whole(0, 255));
  }
  return frame;
}

struct Positions {
  alignas(64) int u[kRun];
  alignas(64) int v[kRun];
};

struct Sampled {  // with guards
  Bytes pixels;
  Bytes mask;
};

Sampled untouched(const Frame& frame) {
  const std::size_t bytes = kRun * static_cast<std::size_t>(frame.bytesPerPixel);
  return {Bytes(bytes + 2 * kGuard, kUntouched), Bytes(kRun + 2 * kGuard, kUntouched)};
}

Sampled sample(const Frame& frame, const Positions& at, std::size_t count, bool masked) {
  Sampled sampled = untouched(frame);
  rendering::sampleRun(frame.raw(), at.u, at.v, count, sampled.pixels.data() + kGuard,
                       masked ? sampled.mask.data() + kGuard : nullptr);
  return sampled;
}

int wholePart(int position) { return static_cast<std::int16_t>(position >> 5); }

// The four pixels mixed. Outside the frame they have the value given.
int mixed(const std::function<int(int, int)>& P, int u, int v) {
  const int sx = wholePart(u);
  const int sy = wholePart(v);
  const int a = u & 31;
  const int b = v & 31;
  const int upper = (32 - a) * P(sx, sy) + a * P(sx + 1, sy);
  const int lower = (32 - a) * P(sx, sy + 1) + a * P(sx + 1, sy + 1);
  return ((32 - b) * upper + b * lower + 512) / 1024;
}

// The byte that a sample shows: its four pixels mixed; of those that are there, if it begins in the
// last column or row, their mean by weight, of 15 bits, in 32-bit float; 0 if it begins outside.
int shown(const Frame& frame, int u, int v, int c) {
  const int sx = wholePart(u);
  const int sy = wholePart(v);
  if (frame.at(sx, sy, c, -1) < 0) return 0;
  if (frame.at(sx + 1, sy + 1, c, -1) >= 0) {
    return mixed([&](int x, int y) { return frame.at(x, y, c, 0); }, u, v);
  }
  const int a = u & 31;
  const int b = v & 31;
  const int weights[2][2] = {{(32 - b) * (32 - a) * 32, (32 - b) * a * 32},
                             {b * (32 - a) * 32, b * a * 32}};
  int sum = 0;
  int weight = 0;
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 2; ++x) {
      const int P = frame.at(sx + x, sy + y, c, -1);
      if (P < 0) continue;
      sum += weights[y][x] * P;
      weight += weights[y][x];
    }
  }
  const float scaled = static_cast<float>(sum) * 32768.0F;
  const float mean = scaled / static_cast<float>(weight);
  return (static_cast<int>(mean) + 16384) / 32768;
}

Sampled plainSample(const Frame& frame, const Positions& at, std::size_t count, bool masked) {
  const auto bytes = static_cast<std::size_t>(frame.bytesPerPixel);
  Sampled sampled = untouched(frame);
  for (std::size_t k = 0; k < count; ++k) {
    const int u = at.u[k];
    const int v = at.v[k];
    const bool nowhere = u == kNowhere && v == kNowhere;
    for (int c = 0; c < frame.bytesPerPixel; ++c) {
      sampled.pixels[kGuard + k * bytes + static_cast<std::size_t>(c)] =
          static_cast<unsigned char>(nowhere ? 0 : shown(frame, u, v, c));
    }
    // A picture that is 255 outside the frame and 0 in it, cut above 127.
    const auto outside = [&](int x, int y) { return frame.at(x, y, 0, -1) < 0 ? 255 : 0; };
    if (masked) {
      sampled.mask[kGuard + k] = nowhere || mixed(outside, u, v) > 127 ? 255 : 0;
    }
  }
  return sampled;
}

testing::AssertionResult followsTheFormula(const Frame& frame, const Positions& at,
                                           std::size_t count = kRun, bool masked = true) {
  const Sampled got = sample(frame, at, count, masked);
  const Sampled wanted = plainSample(frame, at, count, masked);
  if (got.pixels == wanted.pixels && got.mask == wanted.mask) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << frame.width << "x" << frame.height << ", " << frame.bytesPerPixel << " bytes, count "
         << count << ": " << (got.pixels == wanted.pixels ? "the mask is" : "pixels are")
         << " not the formula's";
}

Positions everywhere(int u, int v) {
  Positions at;
  std::fill_n(at.u, kRun, u);
  std::fill_n(at.v, kRun, v);
  return at;
}

// In the frame and a little around it.
Positions around(Dice& dice, const Frame& frame) {
  Positions at;
  for (std::size_t k = 0; k < kRun; ++k) {
    at.u[k] = dice.whole(-64, 32 * frame.width + 32);
    at.v[k] = dice.whole(-64, 32 * frame.height + 32);
  }
  return at;
}

int anyInteger(Dice& dice) { return dice.whole(std::numeric_limits<int>::min(), kNowhere); }

// --- by hand ---

// The one pixel of a frame of one byte a pixel, given top row first, and its validity.
struct One {
  int value;
  int validity;

  bool operator==(const One&) const = default;
};

One sampleAt(const Frame& frame, int u, int v) {
  const Sampled sampled = sample(frame, everywhere(u, v), 1, true);
  return {sampled.pixels[kGuard], sampled.mask[kGuard]};
}

// Picture 10 20 / 40 80; the lower row comes first in the buffer.
Frame fourPixels() { return {2, 2, 1, {40, 80, 10, 20}}; }

TEST(BilinearSampler, WholePositionsShowTheUpperLeftPixel) {
  EXPECT_EQ(sampleAt(fourPixels(), 0, 0), (One{10, 0}));
}

TEST(BilinearSampler, FractionsMixAlongBothAxes) {
  EXPECT_EQ(sampleAt(fourPixels(), 16, 0).value, 15);  // (10 + 20)/2
  EXPECT_EQ(sampleAt(fourPixels(), 0, 8).value, 18);   // 10 + 30/4 = 17.5, rounded up
  // a = 8, b = 24: upper 12.5, lower 50, (12.5 + 3 * 50)/4 = 40.625
  EXPECT_EQ(sampleAt(fourPixels(), 8, 24).value, 41);
}

TEST(BilinearSampler, LastColumnAndRowShowTheirOwnPixels) {
  EXPECT_EQ(sampleAt(fourPixels(), 32, 0), (One{20, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 0, 32), (One{40, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 32, 32), (One{80, 0}));
}

TEST(BilinearSampler, BeyondTheLastColumnOrRowOnlyItsPixelsAreMixed) {
  // Half a pixel down between 20 and 80, however far to the right.
  EXPECT_EQ(sampleAt(fourPixels(), 32, 16), (One{50, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 32 + 15, 16), (One{50, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 32 + 31, 16), (One{50, 255}));  // mostly outside
  // Half a pixel to the right between 40 and 80, however far down.
  EXPECT_EQ(sampleAt(fourPixels(), 16, 32 + 31), (One{60, 255}));
  // Of the corner's sample one pixel is left.
  EXPECT_EQ(sampleAt(fourPixels(), 32 + 31, 32 + 31), (One{80, 255}));
}

TEST(BilinearSampler, SampleThatBeginsOutsideIsBlack) {
  EXPECT_EQ(sampleAt(fourPixels(), -1, 0), (One{0, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 0, -1), (One{0, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 64, 0), (One{0, 255}));
  EXPECT_EQ(sampleAt(fourPixels(), 0, 64), (One{0, 255}));
}

// a is 29, b is 11: weights 3 * 21 and 3 * 11 of the column's two pixels, (63 * 100 + 33 * 211)/96
// = 138.16. For 52 and 84 they give exactly 63. Two pixels above each other with weights 16 and 16,
// 10 and 13: 11.5, rounded up.
TEST(BilinearSampler, ExistingPixelsShareTheWeight) {
  EXPECT_EQ(sampleAt({1, 2, 1, {211, 100}}, 29, 11).value, 138);
  EXPECT_EQ(sampleAt({1, 2, 1, {84, 52}}, 29, 11).value, 63);
  EXPECT_EQ(sampleAt({1, 2, 1, {13, 10}}, 7, 16).value, 12);
}

// 15/32 outside: 255 * 15/32 = 119.5; a half outside: 127.5, rounded to 128.
TEST(BilinearSampler, ValidityTurnsWhereHalfOfTheWeightLiesOutside) {
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

TEST(BilinearSampler, PositionsWrapAtSixteenBitsOfTheirWholePart) {
  EXPECT_EQ(sampleAt(fourPixels(), 65536 * 32 + 16, 0), (One{15, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 16, -65536 * 32), (One{15, 0}));
  EXPECT_EQ(sampleAt(fourPixels(), 32768 * 32, 0), (One{0, 255}));
}

TEST(BilinearSampler, NowhereIsBlackAndNotValid) {
  EXPECT_EQ(sampleAt(fourPixels(), kNowhere, kNowhere), (One{0, 255}));
}

TEST(BilinearSampler, ChannelsStayApart) {
  // Two rows of two pixels of three bytes; lower row first.
  const Frame frame{2, 2, 3, {0, 0, 9, 0, 0, 9, 100, 50, 9, 200, 150, 9}};
  const Sampled sampled = sample(frame, everywhere(16, 0), 2, false);
  EXPECT_EQ(Bytes(sampled.pixels.begin() + kGuard, sampled.pixels.begin() + kGuard + 6),
            (Bytes{150, 100, 9, 150, 100, 9}));
}

// --- against the formula ---

class BilinearSamplerOf : public testing::TestWithParam<int> {};  // bytes a pixel

TEST_P(BilinearSamplerOf, SmallFramesFollowTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(1);
    for (int i = 0; i < 3000; ++i) {
      const Frame frame = noise(dice, dice.whole(1, 20), dice.whole(1, 20), GetParam());
      ASSERT_TRUE(followsTheFormula(frame, around(dice, frame))) << i;
    }
  });
}

// No sample of a run reaches beyond the frame.
TEST_P(BilinearSamplerOf, RunsInsideTheFrameFollowTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(2);
    for (int i = 0; i < 1000; ++i) {
      const Frame frame = noise(dice, dice.whole(2, 40), dice.whole(2, 40), GetParam());
      Positions at;
      for (std::size_t k = 0; k < kRun; ++k) {
        at.u[k] = dice.whole(0, 32 * (frame.width - 1) - 1);
        at.v[k] = dice.whole(0, 32 * (frame.height - 1) - 1);
      }
      ASSERT_TRUE(followsTheFormula(frame, at)) << i;
    }
  });
}

TEST_P(BilinearSamplerOf, AnyPositionsFollowTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(3);
    for (int i = 0; i < 1500; ++i) {
      const Frame frame = noise(dice, dice.whole(1, 30), dice.whole(1, 30), GetParam());
      Positions at = around(dice, frame);
      for (std::size_t k = 0; k < kRun; ++k) {
        if (dice.oneIn(8)) at.u[k] += dice.whole(-100, 100) * (1 << 21);  // wraps into the frame
        if (dice.oneIn(4)) at.u[k] = anyInteger(dice);
        if (dice.oneIn(4)) at.v[k] = anyInteger(dice);
        if (dice.oneIn(8)) at.u[k] = std::numeric_limits<int>::min();
        if (dice.oneIn(8)) at.v[k] = kNowhere;
        if (dice.oneIn(8)) at.u[k] = kNowhere;  // at times both
      }
      ASSERT_TRUE(followsTheFormula(frame, at)) << i;
    }
  });
}

TEST_P(BilinearSamplerOf, PartialRunsWriteNothingBeyondTheCount) {
  support::onEveryInstructionSet([] {
    Dice dice(4);
    for (std::size_t count = 1; count <= kRun; ++count) {
      for (int i = 0; i < 8; ++i) {
        const Frame frame = noise(dice, dice.whole(1, 20), dice.whole(1, 20), GetParam());
        ASSERT_TRUE(followsTheFormula(frame, around(dice, frame), count, i % 2 == 0));
      }
    }
  });
}

TEST_P(BilinearSamplerOf, FramesOnePixelWideFollowTheFormula) {
  support::onEveryInstructionSet([] {
    Dice dice(5);
    for (int i = 0; i < 300; ++i) {
      const Frame column = noise(dice, 1, dice.whole(1, 40), GetParam());
      ASSERT_TRUE(followsTheFormula(column, around(dice, column))) << i;
      const Frame row = noise(dice, dice.whole(1, 40), 1, GetParam());
      ASSERT_TRUE(followsTheFormula(row, around(dice, row))) << i;
    }
  });
}

// Only the first 32768 columns or rows can be reached.
TEST_P(BilinearSamplerOf, WideAndTallFramesFollowTheFormula) {
  Dice dice(6);
  const Frame frames[] = {noise(dice, 70000, 2, GetParam()), noise(dice, 2, 70000, GetParam()),
                          noise(dice, 32768, 2, GetParam()), noise(dice, 32769, 2, GetParam())};
  support::onEveryInstructionSet([&] {
    for (int i = 0; i < 400; ++i) {
      const Frame& frame = frames[i % 4];
      Positions at = around(dice, frame);
      for (std::size_t k = 0; k < kRun / 4; ++k) {  // around the end of the 16 bits
        (frame.height == 2 ? at.u : at.v)[k] = 32 * 32768 + dice.whole(-96, 96);
      }
      ASSERT_TRUE(followsTheFormula(frame, at)) << i;
    }
  });
}

INSTANTIATE_TEST_SUITE_P(BytesAPixel, BilinearSamplerOf, testing::Values(1, 3, 4));

}  // namespace
