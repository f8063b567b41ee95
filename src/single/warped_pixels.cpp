#include "single/warped_pixels.h"

#include "fisheye/raw_positions.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "single/warped_pixels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace single {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// One row of Hinv times (px, py, 1), summed from left to right; the products are not fused.
template <class V>
struct RowSum {
  V byX, byY, rest;
  HWY_INLINE V at(V px) const { return hn::Add(hn::Add(hn::Mul(byX, px), byY), rest); }
};

bool SourcePixelsOfRun(const InverseWarp& warp, int x, int y, double* column, double* row) {
  const hn::CappedTag<double, 8> d;
  using V = hn::Vec<decltype(d)>;
  const hn::Rebind<float, decltype(d)> df;
  const double py = y - warp.dy;
  RowSum<V> rows[3];
  for (int i = 0; i < 3; ++i) {
    rows[i] = {hn::Set(d, warp.Hinv(i, 0)), hn::Set(d, warp.Hinv(i, 1) * py),
               hn::Set(d, warp.Hinv(i, 2))};
  }
  const V dx = hn::Set(d, warp.dx);
  const V half = hn::Set(d, 0.5);
  const V below = hn::Set(d, -1.0);  // what lies above -1 is truncated to 0 or more
  const V width = hn::Set(d, static_cast<double>(warp.size.width));
  const V height = hn::Set(d, static_cast<double>(warp.size.height));
  bool any = false;
  for (std::size_t k = 0; k < fisheye::kRun; k += hn::Lanes(d)) {
    const V px = hn::Sub(hn::Iota(d, static_cast<double>(x) + static_cast<double>(k)), dx);
    const V w = rows[2].at(px);
    const V sx = hn::PromoteTo(d, hn::DemoteTo(df, hn::Div(rows[0].at(px), w)));
    const V sy = hn::PromoteTo(d, hn::DemoteTo(df, hn::Div(rows[1].at(px), w)));
    const V tx = hn::Add(sx, half);
    const V ty = hn::Add(sy, half);
    const auto inside = hn::And(hn::And(hn::Gt(tx, below), hn::Lt(tx, width)),
                                hn::And(hn::Gt(ty, below), hn::Lt(ty, height)));
    any = any || !hn::AllFalse(d, inside);
    hn::Store(hn::IfThenElse(inside, hn::Trunc(tx), below), d, column + k);
    hn::Store(hn::IfThenElse(inside, hn::Trunc(ty), below), d, row + k);
  }
  return any;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace single
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace single {

HWY_EXPORT(SourcePixelsOfRun);

bool sourcePixelsOfRun(const InverseWarp& warp, int x, int y, double* column, double* row) {
  return HWY_DYNAMIC_DISPATCH(SourcePixelsOfRun)(warp, x, y, column, row);
}

}  // namespace single
#endif  // HWY_ONCE
