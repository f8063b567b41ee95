// One row of an inverse warp, pixel by pixel, and its quotients over a run.
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>

#include "images/nearest_pixel.h"
#include "rendering/run.h"
#include "rendering/warped_pixels.h"

namespace fisheye_calibration::rendering {

// One row of the output: the numerators and the denominator of its pixels.
class WarpedRow {
 public:
  WarpedRow(const InverseWarp& warp, int y) : warp_(warp) {
    const double py = y - warp.dy;
    for (int i = 0; i < 3; ++i) {
      byY_[i] = warp.Hinv(i, 1) * py;
    }
  }

  // Row i of Hinv (px, py, 1), summed from left to right.
  double sum(int i, double px) const {
    return (warp_.Hinv(i, 0) * px + byY_[i]) + warp_.Hinv(i, 2);
  }

  // Bound on the sum of the absolute terms of row i over the run around px.
  double terms(int i, double px) const {
    return std::abs(warp_.Hinv(i, 0)) * (std::abs(px) + kRun) + std::abs(byY_[i]) +
           std::abs(warp_.Hinv(i, 2));
  }

  // The source pixel of output column x, or (-1, -1).
  void exact(int x, int& column, int& row) const {
    const double px = x - warp_.dx;
    const double w = sum(2, px);
    column = images::nearestPixel(static_cast<float>(sum(0, px) / w), warp_.size.width);
    row = images::nearestPixel(static_cast<float>(sum(1, px) / w), warp_.size.height);
    if (column < 0 || row < 0) {
      column = row = -1;
    }
  }

  const InverseWarp& warp() const { return warp_; }

 private:
  const InverseWarp& warp_;
  double byY_[3];
};

// The quotients of a run relative to a whole pixel B near its middle, in 32-bit float. With k the
// number of pixels from the middle and w the denominator there,
//   sx - Bx = (ax + bx k)/(1 + c k),
//   ax = (nx - Bx w)/w, bx = (Hinv(0,0) - Bx Hinv(2,0))/w, c = Hinv(2,0)/w,
// and sy likewise.
struct LocalQuotients {
  std::int32_t baseX, baseY;
  float ax, bx, ay, by, c;
  float clear;  // sums sx + 1/2 farther than this from an integer are truncated correctly
};

// std::nullopt if float is too imprecise for the run or a denominator in it comes close to 0.
std::optional<LocalQuotients> localQuotients(const WarpedRow& row, int x);

}  // namespace fisheye_calibration::rendering
