#include "stitching/second_positions.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "stitching/second_positions.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::stitching {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::ScalableTag<double>;
using Pack = hn::Vec<Doubles>;

// m0 c + m1 row + m2 for one row (m0, m1, m2) of the transform.
struct RowTerm {
  Pack slope;
  Pack offset;
  Pack constant;

  HWY_INLINE RowTerm(const cv::Matx33d& M, int i, double row)
      : slope(hn::Set(Doubles(), M(i, 0))),
        offset(hn::Set(Doubles(), M(i, 1) * row)),
        constant(hn::Set(Doubles(), M(i, 2))) {}

  HWY_INLINE Pack at(Pack column) const {
    return hn::Add(hn::Add(hn::Mul(slope, column), offset), constant);
  }
};

void SecondPositions(const cv::Matx33d& M, double row, std::int32_t column, int count,
                     const cv::Size& size, std::int32_t* positions) {
  const Doubles d;
  const hn::Rebind<std::int32_t, Doubles> integers;
  const RowTerm u(M, 0, row);
  const RowTerm v(M, 1, row);
  const RowTerm w(M, 2, row);
  const Pack half = hn::Set(d, 0.5);
  const Pack justOutside = hn::Set(d, -1.0);  // truncation takes values above it to 0
  const Pack width = hn::Set(d, size.width);
  const Pack height = hn::Set(d, size.height);
  const int lanes = static_cast<int>(hn::Lanes(d));
  const Pack step = hn::Set(d, lanes);
  Pack c = hn::Iota(d, column);
  for (int i = 0; i < count; i += lanes) {
    const Pack divisor = w.at(c);
    const Pack x = hn::Add(hn::Div(u.at(c), divisor), half);
    const Pack y = hn::Add(hn::Div(v.at(c), divisor), half);
    const auto inColumns = hn::And(hn::Gt(x, justOutside), hn::Lt(x, width));
    const auto inRows = hn::And(hn::Gt(y, justOutside), hn::Lt(y, height));
    const Pack position = hn::Add(hn::Mul(hn::Trunc(y), width), hn::Trunc(x));
    const Pack inside = hn::IfThenElse(hn::And(inColumns, inRows), position, justOutside);
    hn::StoreU(hn::DemoteTo(integers, inside), integers, positions + i);
    c = hn::Add(c, step);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::stitching
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fisheye_calibration::stitching {

HWY_EXPORT(SecondPositions);

void secondPositions(const cv::Matx33d& M, double row, std::int32_t column, int count,
                     const cv::Size& size, std::int32_t* positions) {
  HWY_DYNAMIC_DISPATCH(SecondPositions)(M, row, column, count, size, positions);
}

}  // namespace fisheye_calibration::stitching
#endif  // HWY_ONCE
