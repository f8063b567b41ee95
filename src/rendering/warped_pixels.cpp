#include "rendering/warped_pixels.h"

#include <cstdint>
#include <optional>

#include "rendering/run.h"
#include "rendering/warped_row.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rendering/warped_pixels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "rendering/rounded-inl.h"

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
  const std::optional<LocalQuotients> found = localQuotients(exactRow, x);
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
  auto n = hn::Sub(hn::Iota(d, 0.0F), hn::Set(d, 0.5F * kRun));
  for (std::size_t k = 0; k < kRun; k += lanes, n = hn::Add(n, step)) {
    const auto reciprocal = hn::Div(one, hn::MulAdd(n, hn::Set(d, local.c), one));
    const auto nx = hn::MulAdd(n, hn::Set(d, local.bx), hn::Set(d, local.ax));
    const auto ny = hn::MulAdd(n, hn::Set(d, local.by), hn::Set(d, local.ay));
    // Equals sx + 1/2 rounded down except near a tie, where it is uncertain anyway; -1 then means
    // -1.5 < sx < -0.5, which truncation takes to 0 (compatibility 40).
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
