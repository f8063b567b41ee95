#include "stitching/second_positions.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "stitching/second_positions.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::stitching {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::CappedTag<double, 8>;
using Integers = hn::Rebind<std::int32_t, Doubles>;
using Pack = hn::Vec<Doubles>;

HWY_INLINE Pack broadcast(double x) { return hn::Set(Doubles(), x); }

// m0 c + m1 row + m2 for one row (m0, m1, m2) of the transform.
struct RowTerm {
  Pack slope;
  Pack offset;
  Pack constant;

  HWY_INLINE RowTerm(const cv::Matx33d& M, int i, double row)
      : slope(broadcast(M(i, 0))), offset(broadcast(M(i, 1) * row)), constant(broadcast(M(i, 2))) {}

  HWY_INLINE Pack at(Pack column) const {
    return hn::Add(hn::Add(hn::Mul(slope, column), offset), constant);
  }
};

struct RowTerms {
  RowTerm u, v, w;

  HWY_INLINE RowTerms(const cv::Matx33d& M, double row)
      : u(M, 0, row), v(M, 1, row), w(M, 2, row) {}
};

// The positions of `count` columns, each by itself.
HWY_INLINE void positionsOfColumns(const RowTerms& terms, std::int32_t column, int count,
                                   const cv::Size& size, std::int32_t* positions) {
  const Doubles d;
  const Pack half = broadcast(0.5);
  const Pack justOutside = broadcast(-1);  // truncation takes values above it to 0
  const Pack width = broadcast(size.width);
  const Pack height = broadcast(size.height);
  const int lanes = static_cast<int>(hn::Lanes(d));
  for (int i = 0; i < count; i += lanes) {
    const Pack c = hn::Iota(d, column + i);
    const Pack divisor = terms.w.at(c);
    const Pack x = hn::Add(hn::Div(terms.u.at(c), divisor), half);
    const Pack y = hn::Add(hn::Div(terms.v.at(c), divisor), half);
    const auto inColumns = hn::And(hn::Gt(x, justOutside), hn::Lt(x, width));
    const auto inRows = hn::And(hn::Gt(y, justOutside), hn::Lt(y, height));
    const Pack position = hn::Add(hn::Mul(hn::Trunc(y), width), hn::Trunc(x));
    const Pack inside = hn::IfThenElse(hn::And(inColumns, inRows), position, justOutside);
    hn::StoreU(hn::DemoteTo(Integers(), inside), Integers(), positions + i);
  }
}

// Where blocks begin and end, in the view, half a pixel added.
constexpr int kMostLanes = static_cast<int>(hn::MaxLanes(Doubles()));
struct BlockEnds {
  alignas(64) double x[kBlocksAtOnce + 2 * kMostLanes];
  alignas(64) double y[kBlocksAtOnce + 2 * kMostLanes];
  alignas(64) double perW[kBlocksAtOnce + 2 * kMostLanes];  // 1/w
};

// The ends of `blocks` blocks, each end being the next one's beginning.
HWY_INLINE void computeEnds(const RowTerms& terms, std::int32_t column, int blocks,
                            BlockEnds& ends) {
  const Doubles d;
  const Pack half = broadcast(0.5);
  const int lanes = static_cast<int>(hn::Lanes(d));
  for (int b = 0; b < blocks + lanes; b += lanes) {
    const Pack c = hn::MulAdd(hn::Iota(d, b), broadcast(kPositionBlock), broadcast(column));
    const Pack perW = hn::Div(broadcast(1), terms.w.at(c));
    hn::Store(hn::MulAdd(terms.u.at(c), perW, half), d, ends.x + b);
    hn::Store(hn::MulAdd(terms.v.at(c), perW, half), d, ends.y + b);
    hn::Store(perW, d, ends.perW + b);
  }
}

// Finds blocks whose columns certainly show neighbours, and their first positions. Within a block,
// w must change by so little that it keeps its sign and that x and y are monotonic: then x - c
// deviates from its chord by less than 16^2/8 |x''| = 64 |x' m20/w|, where x' is close to 1.
// `margin` bounds that and the rounding of x and y, here and in positionsOfColumns, times |w|.
HWY_INLINE void findNeighbours(const BlockEnds& ends, int blocks, double slopeOfW, double margin,
                               const cv::Size& size, SecondPositions& positions) {
  constexpr double kLargestChange = 1e-3;  // of w, per column
  const Doubles d;
  const Pack length = broadcast(kPositionBlock);
  const int lanes = static_cast<int>(hn::Lanes(d));
  alignas(64) std::int32_t first[kMostLanes];
  for (int b = 0; b < blocks; b += lanes) {
    const Pack p0 = hn::Load(d, ends.perW + b);
    const Pack p1 = hn::LoadU(d, ends.perW + b + 1);
    const Pack largest = hn::Max(hn::Abs(p0), hn::Abs(p1));
    const Pack off = hn::Mul(largest, broadcast(margin));
    const Pack x0 = hn::Load(d, ends.x + b);
    const Pack y0 = hn::Load(d, ends.y + b);
    const Pack x1 = hn::Sub(hn::LoadU(d, ends.x + b + 1), length);
    const Pack y1 = hn::LoadU(d, ends.y + b + 1);
    const Pack column = hn::Floor(hn::Sub(hn::Min(x0, x1), off));
    const Pack row = hn::Floor(hn::Sub(hn::Min(y0, y1), off));
    const auto same = hn::And(hn::Eq(column, hn::Floor(hn::Add(hn::Max(x0, x1), off))),
                              hn::Eq(row, hn::Floor(hn::Add(hn::Max(y0, y1), off))));
    const auto inside = hn::And(hn::And(hn::Ge(column, hn::Zero(d)), hn::Ge(row, hn::Zero(d))),
                                hn::And(hn::Le(column, broadcast(size.width - kPositionBlock)),
                                        hn::Lt(row, broadcast(size.height))));
    const auto steady =
        hn::Lt(hn::Mul(largest, broadcast(std::abs(slopeOfW))), broadcast(kLargestChange));
    const auto found = hn::And(hn::And(same, inside), steady);
    std::uint8_t bits[8] = {};
    hn::StoreMaskBits(d, found, bits);
    positions.neighbours |= std::uint32_t{bits[0]} << b;
    const Pack position = hn::IfThenElseZero(found, hn::MulAdd(row, broadcast(size.width), column));
    hn::Store(hn::DemoteTo(Integers(), position), Integers(), first);
    for (int k = 0; k < lanes; ++k) {
      positions.at[std::ptrdiff_t{kPositionBlock} * (b + k)] = first[k];
    }
  }
}

// Bounds the rounding of u/w + 1/2 and v/w + 1/2, and how far x - c is from its chord, times |w|.
double marginOf(const cv::Matx33d& M, double row, double column, const cv::Size& size) {
  const auto magnitude = [&](int i) {
    return std::abs(M(i, 0)) * column + std::abs(M(i, 1) * row) + std::abs(M(i, 2));
  };
  const double terms = std::max(magnitude(0), magnitude(1)) +
                       (std::max(size.width, size.height) + 1.0) * magnitude(2);
  return 100 * std::abs(M(2, 0)) + terms * 0x1p-45;
}

void FindSecondPositions(const cv::Matx33d& M, double row, std::int32_t column, int count,
                         const cv::Size& size, SecondPositions& positions) {
  const RowTerms terms(M, row);
  const int blocks = count / kPositionBlock;
  positions.neighbours = 0;
  BlockEnds ends;
  computeEnds(terms, column, blocks, ends);
  findNeighbours(ends, blocks, M(2, 0), marginOf(M, row, static_cast<double>(column) + count, size),
                 size, positions);
  positions.neighbours &= blocks < kBlocksAtOnce ? (1U << blocks) - 1 : ~0U;
  for (int b = 0; kPositionBlock * b < count; ++b) {
    if (!positions.areNeighbours(b)) {
      const int i = kPositionBlock * b;
      positionsOfColumns(terms, column + i, std::min(kPositionBlock, count - i), size,
                         positions.at + i);
    }
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::stitching
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fisheye_calibration::stitching {

HWY_EXPORT(FindSecondPositions);

void secondPositions(const cv::Matx33d& M, double row, std::int32_t column, int count,
                     const cv::Size& size, SecondPositions& positions) {
  HWY_DYNAMIC_DISPATCH(FindSecondPositions)(M, row, column, count, size, positions);
}

}  // namespace fisheye_calibration::stitching
#endif  // HWY_ONCE
