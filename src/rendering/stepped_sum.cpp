#include "rendering/stepped_sum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace fisheye_calibration::rendering {
namespace {

constexpr int kFewAdditions = 32;  // so few are made faster than they are skipped
constexpr int kFractionBits = 52;

// Sign and exponent: numbers that share them lie on one grid of equally spaced numbers.
std::uint64_t binadeOf(double value) {
  return std::bit_cast<std::uint64_t>(value) >> kFractionBits;
}

bool isInLastBinade(std::uint64_t binade) { return (binade & 0x7ff) >= 0x7fe; }

// The end of the binade that is nearer to zero; of the next binade it is the other end of this one.
double innerEnd(std::uint64_t binade) { return std::bit_cast<double>(binade << kFractionBits); }

// How many more times, at most `count`, `moved` can be added to `sum` for certain without leaving
// the binade.
int additionsWithin(std::uint64_t binade, double sum, double moved, int count) {
  const bool outwards = (moved > 0) == (sum > 0);
  const double end = innerEnd(outwards ? binade + 1 : binade);
  const double room = (end - sum) / moved - 2;  // one for the quotient's rounding
  return room > 0 ? static_cast<int>(std::min<double>(count, room)) : 0;
}

}  // namespace

// A sum that has been rounded to a binade's grid moves on, as long as it stays in that binade, by
// the same multiple of the grid's spacing each time: what of the step lies between two points of
// the grid is rounded in the same way. That holds for ties, too, as their result is always an even
// multiple. So those additions are made at once, exactly.
double steppedSum(double start, double step, int count) {
  if (count > 0 && start + step == start) {
    return start + step;
  }
  double sum = start;
  int left = count;
  while (left > kFewAdditions) {
    const double second = sum + step;
    const double third = second + step;
    if (third == second || std::isnan(third)) {
      return third;
    }
    const double moved = third - second;
    const std::uint64_t binade = binadeOf(sum);
    sum = third;
    left -= 2;
    if (binadeOf(second) == binade && binadeOf(third) == binade && !isInLastBinade(binade)) {
      const int skipped = additionsWithin(binade, sum, moved, left);
      sum += skipped * moved;
      left -= skipped;
    }
  }
  for (; left > 0; --left) {
    sum += step;
  }
  return sum;
}

}  // namespace fisheye_calibration::rendering
