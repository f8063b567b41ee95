#include "fisheye/stepped_positions.h"

#include <algorithm>
#include <cstddef>

#include "fisheye/stepped_sum.h"

namespace fisheye {
namespace {

constexpr int kSmallestSpacing = 16;
constexpr int kMostKept = 512;

int spacingOf(int width) { return std::max(kSmallestSpacing, width / kMostKept + 1); }

}  // namespace

// The first time that a start is asked for tells nothing about a second time, so nothing is kept.
double SteppedPositions::Sums::at(double start, int count) {
  if (!(start == start_)) {
    start_ = start;
    kept_.assign(1, start);
    return steppedSum(start, step_, count);
  }
  const auto block = static_cast<std::size_t>(count / spacing_);
  while (kept_.size() <= block) {
    kept_.push_back(steppedSum(kept_.back(), step_, spacing_));
  }
  return steppedSum(kept_[block], step_, count % spacing_);
}

SteppedPositions::SteppedPositions(const RectifyingRays& rays, int width)
    : rays_(rays),
      sums_{Sums(rays.iR(0, 0), spacingOf(width)), Sums(rays.iR(1, 0), spacingOf(width)),
            Sums(rays.iR(2, 0), spacingOf(width))} {}

RawPosition SteppedPositions::at(int column, int row) {
  const cv::Matx33d& iR = rays_.iR;
  std::array<double, 3> ray;
  for (int k = 0; k < 3; ++k) {
    ray[static_cast<std::size_t>(k)] =
        sums_[static_cast<std::size_t>(k)].at(row * iR(k, 1) + iR(k, 2), column);
  }
  return rawPosition(rays_.camera, ray[0], ray[1], ray[2]);
}

}  // namespace fisheye
