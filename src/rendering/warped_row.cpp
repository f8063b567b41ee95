#include "rendering/warped_row.h"

#include <algorithm>

namespace fisheye_calibration::rendering {

std::optional<LocalQuotients> localQuotients(const WarpedRow& row, int x) {
  const cv::Matx33d& Hinv = row.warp().Hinv;
  constexpr double kHalf = 0.5 * kRun;
  const double px = x + kHalf - row.warp().dx;
  const double nx = row.sum(0, px);
  const double ny = row.sum(1, px);
  const double w = row.sum(2, px);
  const double perW = 1 / w;
  constexpr double kLimit = 0x1p22;
  if (!(std::isfinite(w) && std::abs(nx * perW) < kLimit && std::abs(ny * perW) < kLimit)) {
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
  const double spread = 2 + kHalf * std::max(std::abs(bx), std::abs(by));
  // Rounding error of the run's sums in double, where terms may cancel, in pixels.
  const double magnitude = std::max(std::abs(Bx), std::abs(By)) + 2 * spread;
  const double noise =
      0x1p-50 * std::abs(perW) *
      (std::max(row.terms(0, px), row.terms(1, px)) + magnitude * row.terms(2, px));
  if (!(spread < 4096 && std::abs(c) * kHalf <= 0.5 && noise < 0x1p-20)) {
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

}  // namespace fisheye_calibration::rendering
