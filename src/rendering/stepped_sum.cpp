#include "rendering/stepped_sum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace fisheye_calibration::rendering {
namespace {

constexpr int kFewAdditions = 32;  // making so few is faster than skipping them
constexpr int kSignificandBits = 52;

// Sign and exponent: numbers that share them lie on one equally spaced grid.
std::uint64_t binadeOf(double value) {
  return std::bit_cast<std::uint64_t>(value) >> kSignificandBits;
}

bool isInLastBinade(std::uint64_t binade) { return (binade & 0x7ff) >= 0x7fe; }

// The end of the binade nearer to zero; that of the next binade is the other end of this one.
double innerEnd(std::uint64_t binade) { return std::bit_cast<double>(binade << kSignificandBits); }

// How many times, up to `count`, `moved` can be added to `sum` without any risk of leaving the
// binade.
int additionsWithin(std::uint64_t binade, double sum, double moved, int count) {
  const bool outwards = (moved > 0) == (sum > 0);
  const double end = innerEnd(outwards ? binade + 1 : binade);
  const double room = (end - sum) / moved - 2;  // one for the quotient's rounding
  return room > 0 ? static_cast<int>(std::min<double>(count, room)) : 0;
}

}  // namespace

// Once rounded to a binade's grid, a sum that stays in the binade advances by the same multiple of
// the grid's spacing each time, because the part of the step between two grid points is always
// rounded the same way. This holds for ties too, which always round to an even multiple. So these
// additions are made at once, exactly.
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
