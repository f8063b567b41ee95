// Sums by skipping against sums by adding, to the bit.
#include "rendering/stepped_sum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

using namespace fisheye_calibration;

namespace {

double addedUp(double start, double step, int count) {
  double sum = start;
  for (int i = 0; i < count; ++i) sum += step;
  return sum;
}

std::uint64_t bitsOf(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

void expectSameSums(double start, double step, int count) {
  const double expected = addedUp(start, step, count);
  const double sum = rendering::steppedSum(start, step, count);
  if (std::isnan(expected)) {
    ASSERT_TRUE(std::isnan(sum)) << start << " + " << count << " x " << step;
  } else {
    ASSERT_EQ(bitsOf(sum), bitsOf(expected)) << start << " + " << count << " x " << step;
  }
}

class Dice {
 public:
  int whole(int low, int high) {
    return low + static_cast<int>(engine_() % static_cast<unsigned>(high - low + 1));
  }
  // Any fraction of 53 bits, of either sign, times 2^exponent.
  double number(int exponent) {
    const auto fraction = static_cast<double>(engine_() >> 11);
    return std::ldexp(whole(0, 1) != 0 ? fraction : -fraction, exponent - 53);
  }
  // A small odd number times 2^exponent.
  double coarse(int exponent) { return std::ldexp(2 * whole(-40, 40) + 1, exponent); }

 private:
  std::mt19937_64 engine_{20};
};

TEST(SteppedSum, OfRaysAcrossAnImageIsWhatAddingGives) {
  Dice dice;
  for (int i = 0; i < 3000; ++i) {
    const double step = dice.number(-dice.whole(6, 12));
    const double start = -step * dice.whole(0, 6000) + dice.number(-20);
    expectSameSums(start, step, dice.whole(0, 6000));
  }
}

TEST(SteppedSum, OfNumbersOfAnySizeIsWhatAddingGives) {
  Dice dice;
  for (int i = 0; i < 3000; ++i) {
    const int exponent = dice.whole(-1060, 1010);
    expectSameSums(dice.number(exponent + dice.whole(0, 14)), dice.number(exponent),
                   dice.whole(0, 3000));
  }
}

// Steps that lie half-way between two points of the grid of the larger sums.
TEST(SteppedSum, RoundsTiesToEvenWhereverTheyBegin) {
  Dice dice;
  for (int i = 0; i < 5000; ++i) {
    const int spacing = -dice.whole(0, 8);
    const double start = std::ldexp(dice.coarse(0), 48) + dice.coarse(spacing);
    expectSameSums(start, dice.coarse(spacing - dice.whole(0, 8)), dice.whole(30, 3000));
  }
}

TEST(SteppedSum, StopsMovingWhereTheStepIsTooSmall) {
  EXPECT_EQ(rendering::steppedSum(1.0, 0x1p-54, 2000000000), 1.0);
  EXPECT_EQ(rendering::steppedSum(0.5, 0x1p-53, 2000000000), 0.5 + 2000000000 * 0x1p-53);
}

TEST(SteppedSum, WithAZeroStepKeepsTheSignOfTheStart) {
  EXPECT_TRUE(std::signbit(rendering::steppedSum(-0.0, 0.0, 0)));
  EXPECT_FALSE(std::signbit(rendering::steppedSum(-0.0, 0.0, 1)));
  EXPECT_TRUE(std::signbit(rendering::steppedSum(-0.0, -0.0, 100)));
}

TEST(SteppedSum, CarriesInfinityAndNan) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kLargest = std::numeric_limits<double>::max();
  expectSameSums(kLargest, kLargest / 1000, 2000);
  expectSameSums(-kLargest, kLargest / 1000, 2000);
  expectSameSums(0, kInfinity, 100);
  expectSameSums(-kInfinity, kInfinity, 100);
  expectSameSums(1, std::nan(""), 100);
}

}  // namespace
