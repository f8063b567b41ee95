#include "rendering/exact_positions.h"

#include <algorithm>

#include "rendering/stepped_sum.h"

namespace fisheye_calibration::rendering {
namespace {

constexpr int kFewestBits = 3;
constexpr int kFewSteps = 6;

}  // namespace

// kept_ has no values yet: views of a few pixels would pay for them.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
ExactPositions::Sums::Sums(double step, int width) : step_(step), spacingBits_(kFewestBits) {
  while (static_cast<std::size_t>(width >> spacingBits_) >= kMostKept) {
    ++spacingBits_;
  }
}

double ExactPositions::Sums::at(double start, int count) {
  if (step_ == 0) {
    return count > 0 ? start + step_ : start;
  }
  if (start == lastStart_ && count >= lastCount_ && count - lastCount_ <= kFewSteps) {
    for (; lastCount_ < count; ++lastCount_) {
      lastSum_ += step_;
    }
    return lastSum_;
  }
  lastSum_ = keptAt(start, count);
  lastStart_ = start;
  lastCount_ = count;
  return lastSum_;
}

// Neighbouring pixels have close sums, in any order.
void ExactPositions::Sums::replaceStarts(const int* counts, int number, double* sums) {
  constexpr int kClose = 128;
  if (step_ == 0) {
    for (int i = 0; i < number; ++i) {
      sums[i] = counts[i] > 0 ? sums[i] + step_ : sums[i];
    }
    return;
  }
  for (int begin = 0, end = 0; begin < number; begin = end) {
    const double start = sums[begin];
    int low = counts[begin];
    int high = low;
    for (end = begin + 1; end < number && sums[end] == start; ++end) {
      low = std::min(low, counts[end]);
      high = std::max(high, counts[end]);
    }
    if (high - low < kClose) {
      double close[kClose];
      close[0] = at(start, low);
      for (int i = 1; i <= high - low; ++i) {
        close[i] = close[i - 1] + step_;
      }
      for (int i = begin; i < end; ++i) {
        sums[i] = close[counts[i] - low];
      }
      lastCount_ = high;
      lastSum_ = close[high - low];
    } else {
      for (int i = begin; i < end; ++i) {
        sums[i] = at(start, counts[i]);
      }
    }
  }
}

// No sums are kept on the first request for a start, which may be the only one.
double ExactPositions::Sums::keptAt(double start, int count) {
  if (!(start == start_)) {
    start_ = start;
    kept_[0] = start;
    keptCount_ = 1;
    return steppedSum(start, step_, count);
  }
  const int spacing = 1 << spacingBits_;
  // Columns beyond the view's width, if there were any, would begin at the last one kept.
  const auto block = std::min(static_cast<std::size_t>(count >> spacingBits_), kMostKept - 1);
  for (; keptCount_ <= block; ++keptCount_) {
    kept_[keptCount_] = steppedSum(kept_[keptCount_ - 1], step_, spacing);
  }
  return steppedSum(kept_[block], step_, count - static_cast<int>(block << spacingBits_));
}

ExactPositions::ExactPositions(const RectifyingRays& rays, int width)
    : rays_(rays),
      sums_{Sums(rays.iR(0, 0), width), Sums(rays.iR(1, 0), width), Sums(rays.iR(2, 0), width)} {}

RawPosition ExactPositions::at(int column, int row) {
  const cv::Matx33d& iR = rays_.iR;
  std::array<double, 3> ray;
  for (int k = 0; k < 3; ++k) {
    ray[static_cast<std::size_t>(k)] =
        sums_[static_cast<std::size_t>(k)].at(row * iR(k, 1) + iR(k, 2), column);
  }
  return rawPosition(rays_.camera, ray[0], ray[1], ray[2]);
}

void ExactPositions::rays(const int* columns, const int* rows, int count, double* X, double* Y,
                          double* W) {
  double* const ray[] = {X, Y, W};
  for (int k = 0; k < 3; ++k) {
    for (int i = 0; i < count; ++i) {
      ray[k][i] = rows[i] * rays_.iR(k, 1) + rays_.iR(k, 2);
    }
    sums_[static_cast<std::size_t>(k)].replaceStarts(columns, count, ray[k]);
  }
}

}  // namespace fisheye_calibration::rendering
