#include "rendering/warped_pixels.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

#include "images/nearest_pixel.h"
#include "rendering/run.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rendering/warped_pixels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "rendering/rounded-inl.h"

#ifndef FISHEYE_SINGLE_WARPED_PIXELS_ONCE
#define FISHEYE_SINGLE_WARPED_PIXELS_ONCE
namespace fisheye_calibration::rendering {
namespace {

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

  // Sum of the absolute terms of row i, over the run around px.
  double terms(int i, double px) const {
    return std::abs(warp_.Hinv(i, 0)) * (std::abs(px) + kRun) + std::abs(byY_[i]) +
           std::abs(warp_.Hinv(i, 2));
  }

  // The source pixel of output column x, or (-1, -1).
  [[maybe_unused]] void exact(int x, int& column, int& row) const {
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

// The quotients of a run as differences from a whole pixel B near its middle, in 32-bit float. With
// k the number of pixels from the middle and w the denominator there,
//   sx - Bx = (ax + bx k)/(1 + c k),  ax = (nx - Bx w)/w, bx = (Hinv_11 - Bx Hinv_31)/w, c =
//   Hinv_31/w,
// and sy likewise.
struct LocalQuotients {
  std::int32_t baseX, baseY;
  float ax, bx, ay, by, c;
  float clear;  // a sum sx + 1/2 farther than this from whole numbers is truncated rightly
};

// Nothing where float has no room for the run, or a denominator in it comes near to 0.
[[maybe_unused]] std::optional<LocalQuotients> localQuotients(const WarpedRow& row, int x) {
  const cv::Matx33d& Hinv = row.warp().Hinv;
  constexpr double half = kRun / 2;
  const double px = x + half - row.warp().dx;
  const double nx = row.sum(0, px);
  const double ny = row.sum(1, px);
  const double w = row.sum(2, px);
  const double perW = 1 / w;
  constexpr double limit = 0x1p22;
  if (!(std::isfinite(w) && std::abs(nx * perW) < limit && std::abs(ny * perW) < limit)) {
    return std::nullopt;
  }
  LocalQuotients local;
  local.baseX = static_cast<std::int32_t>(nx * perW);
  local.baseY = static_cast<std::int32_t>(ny * perW);
  const double Bx = local.baseX;
  const double By = local.baseY;
  const double bx = (Hinv(0, 0) - Bx * Hinv(2, 0)) * perW;
  const double by = (Hinv(1, 0) - By * Hinv(2, 0)) * perW;
  const double c = Hinv(2, 0) * perW;
  const double spread = 2 + half * std::max(std::abs(bx), std::abs(by));
  // Rounding in double of the sums of the run, where terms may cancel, in pixels.
  const double magnitude = std::max(std::abs(Bx), std::abs(By)) + 2 * spread;
  const double noise =
      0x1p-50 * std::abs(perW) *
      (std::max(row.terms(0, px), row.terms(1, px)) + magnitude * row.terms(2, px));
  if (!(spread < 4096 && std::abs(c) * half <= 0.5 && noise < 0x1p-20)) {
    return std::nullopt;
  }
  local.ax = static_cast<float>((nx - Bx * w) * perW);
  local.bx = static_cast<float>(bx);
  local.ay = static_cast<float>((ny - By * w) * perW);
  local.by = static_cast<float>(by);
  local.c = static_cast<float>(c);
  // Nine operations in float, 2^-24 each, on |a + b k| <= spread over a denominator of at least
  // 1/2; the rounding of sx itself to float, half a unit of at most 2^-23 |sx|, |sx| <= magnitude;
  // and the noise.
  local.clear = static_cast<float>(20 * 0x1p-24 * spread + 0x1p-23 * magnitude + 0x1p-19);
  return local;
}

}  // namespace
}  // namespace fisheye_calibration::rendering
#endif

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using D = hn::CappedTag<float, 8>;
using DI = hn::Rebind<std::int32_t, D>;

bool SourcePixelsOfRun(const InverseWarp& warp, int x, int y, int* column, int* row) {
  const D d;
  const DI di;
  const std::size_t lanes = hn::Lanes(d);
  const WarpedRow exactRow(warp, y);
  const auto found = localQuotients(exactRow, x);
  bool any = false;
  if (HWY_UNLIKELY(!found)) {
    for (std::size_t k = 0; k < kRun; ++k) {
      exactRow.exact(x + static_cast<int>(k), column[k], row[k]);
      any = any || column[k] >= 0;
    }
    return any;
  }
  const LocalQuotients& local = *found;
  const auto one = hn::Set(d, 1.0F);
  const auto clear = hn::Set(d, 0.5F - local.clear);
  const auto width = hn::Set(di, static_cast<std::int32_t>(warp.size.width));
  const auto height = hn::Set(di, static_cast<std::int32_t>(warp.size.height));
  const auto minusOne = hn::Set(di, -1);
  const auto beyond = hn::Set(di, -2);
  const auto step = hn::Set(d, static_cast<float>(lanes));
  auto n = hn::Sub(hn::Iota(d, 0.0F), hn::Set(d, static_cast<float>(kRun / 2)));
  for (std::size_t k = 0; k < kRun; k += lanes, n = hn::Add(n, step)) {
    const auto reciprocal = hn::Div(one, hn::MulAdd(n, hn::Set(d, local.c), one));
    const auto nx = hn::MulAdd(n, hn::Set(d, local.bx), hn::Set(d, local.ax));
    const auto ny = hn::MulAdd(n, hn::Set(d, local.by), hn::Set(d, local.ay));
    // That is sx + 1/2 rounded down, but near a tie, where it is doubtful anyway; -1 then stands
    // for -1.5 < sx < -0.5, which truncation brings to 0.
    const auto sx = rounded(d, hn::Mul(nx, reciprocal));
    const auto sy = rounded(d, hn::Mul(ny, reciprocal));
    const auto distance = hn::Max(sx.distance, sy.distance);
    const auto ix = hn::Add(sx.whole, hn::Set(di, local.baseX));
    const auto iy = hn::Add(sy.whole, hn::Set(di, local.baseY));
    const auto inside = hn::And(hn::And(hn::Gt(ix, beyond), hn::Lt(ix, width)),
                                hn::And(hn::Gt(iy, beyond), hn::Lt(iy, height)));
    const auto zero = hn::Zero(di);
    hn::Store(hn::IfThenElse(inside, hn::Max(ix, zero), minusOne), di, column + k);
    hn::Store(hn::IfThenElse(inside, hn::Max(iy, zero), minusOne), di, row + k);
    any = any || !hn::AllFalse(di, inside);
    const auto doubtful = hn::Not(hn::Lt(distance, clear));
    if (HWY_UNLIKELY(!hn::AllFalse(d, doubtful))) {
      std::uint8_t bits[8] = {};
      hn::StoreMaskBits(d, doubtful, bits);
      for (std::size_t i = 0; i < lanes; ++i) {
        if ((bits[0] >> i & 1) != 0) {
          exactRow.exact(x + static_cast<int>(k + i), column[k + i], row[k + i]);
          any = any || column[k + i] >= 0;
        }
      }
    }
  }
  return any;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fisheye_calibration::rendering {

HWY_EXPORT(SourcePixelsOfRun);

bool sourcePixelsOfRun(const InverseWarp& warp, int x, int y, int* column, int* row) {
  return HWY_DYNAMIC_DISPATCH(SourcePixelsOfRun)(warp, x, y, column, row);
}

}  // namespace fisheye_calibration::rendering
#endif  // HWY_ONCE
