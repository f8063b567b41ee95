// Middles of a batch of blocks, in double. Compiled once per instruction set.
#if defined(FISHEYE_BLOCK_SETUP_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_BLOCK_SETUP_INL_H_
#undef FISHEYE_BLOCK_SETUP_INL_H_
#else
#define FISHEYE_BLOCK_SETUP_INL_H_
#endif

#include <cmath>

#include "rendering/row_geometry.h"
#include "rendering/row_renderer.h"
#include "rendering/vectors-inl.h"

#if FISHEYE_HAS_BLOCKS

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

using DD = hn::CappedTag<double, kBatch>;
using VD = hn::Vec<DD>;
constexpr double kHalfBlock = 0.5 * kBlock;
constexpr int kDoubles = static_cast<int>(hn::MaxLanes(DD()));

HWY_INLINE VD broadcastDouble(double x) { return hn::Set(DD(), x); }

HWY_INLINE void store(VD value, float* to) {
  const hn::Rebind<float, DD> d;
  hn::Store(hn::DemoteTo(d, value), d, to);
}

// Of whole numbers; the result is undefined beyond 32 bits, where no block is computed.
HWY_INLINE void store(VD value, std::int32_t* to) {
  const hn::Rebind<std::int32_t, DD> d;
  hn::Store(hn::DemoteTo(d, value), d, to);
}

// The middles of a batch in vectors of kDoubles.
constexpr int kGroups = kBatch / kDoubles;

struct Middles {
  VD column[kGroups], row[kGroups];  // the whole source pixels
  hn::Mask<DD> fine[kGroups];        // blocks that the finest table serves
};

// Sets the bits of the blocks of group g, whose middles' 1/w^2 is given, and finds those that the
// finest table serves.
HWY_INLINE void classify(const InverseWarp& warp, const RowGeometry& row, VD squarePerW, int g,
                         Middles& middles, BlockBatch& batch) {
  constexpr double kRounding = 2.5;  // of middles and pixels, and column -1 that counts as 0
  const auto below = [&](double limit)
                         HWY_ATTR { return hn::Lt(squarePerW, broadcastDouble(limit)); };
  const auto gentle = below(row.gentle);
  const VD offsets =
      hn::Mul(squarePerW, hn::IfThenElse(gentle, broadcastDouble(ViewGeometry::kGentleOffsets),
                                         broadcastDouble(ViewGeometry::kSteepOffsets)));
  const VD reachX = hn::Mul(offsets, broadcastDouble(std::abs(row.stepX)));
  const VD reachY = hn::Mul(offsets, broadcastDouble(std::abs(row.stepY)));
  const auto beyondSide = [](VD middle, int size) HWY_ATTR {
    const VD half = broadcastDouble(0.5 * size);
    return hn::Sub(hn::Abs(hn::Sub(middle, half)), half);
  };
  const VD beyondX = beyondSide(middles.column[g], warp.size.width);
  const VD beyondY = beyondSide(middles.row[g], warp.size.height);
  const VD farthest = hn::Max(hn::Add(beyondX, reachX), hn::Add(beyondY, reachY));
  const VD nearest = hn::Max(hn::Sub(beyondX, reachX), hn::Sub(beyondY, reachY));
  const auto outside = hn::And(below(row.certain), hn::Gt(nearest, broadcastDouble(kRounding)));
  middles.fine[g] = below(row.fine);
  const int first = g * kDoubles;
  batch.inside |= bitsOf(DD(), hn::Lt(farthest, broadcastDouble(-kRounding))) << first;
  batch.outside |= bitsOf(DD(), outside) << first;
  batch.small |= bitsOf(DD(), below(row.small)) << first;
  batch.gentle |= bitsOf(DD(), gentle) << first;
}

// The source side. The last block of a part ends with it.
HWY_INLINE void prepareSource(const ViewGeometry& view, const RowGeometry& row, const RowPart& part,
                              int first, int g, Middles& middles, BlockBatch& batch) {
  const DD d;
  const cv::Matx33d& H = view.warp().Hinv;
  const int i = g * kDoubles;
  const VD middle = hn::Min(hn::MulAdd(hn::Iota(d, first + i), broadcastDouble(kBlock),
                                       broadcastDouble(part.begin + kHalfBlock - view.warp().dx)),
                            broadcastDouble(part.end - kHalfBlock - view.warp().dx));
  const auto sum = [&](int k) HWY_ATTR {
    return hn::MulAdd(broadcastDouble(H(k, 0)), middle, broadcastDouble(row.numerators[k]));
  };
  const VD perW = hn::Div(broadcastDouble(1), sum(2));
  const VD squarePerW = hn::Mul(perW, perW);
  const VD sx = hn::Mul(sum(0), perW);
  const VD sy = hn::Mul(sum(1), perW);
  const VD column = hn::Round(sx);
  const VD line = hn::Round(sy);
  store(hn::Sub(sx, column), batch.ax + i);
  store(hn::Sub(sy, line), batch.ay + i);
  store(hn::Mul(squarePerW, broadcastDouble(row.stepX)), batch.bx + i);
  store(hn::Mul(squarePerW, broadcastDouble(row.stepY)), batch.by + i);
  store(hn::Mul(perW, broadcastDouble(-H(2, 0))), batch.t1 + i);
  store(column, batch.column + i);
  store(line, batch.row + i);
  middles.column[g] = column;
  middles.row[g] = line;
  classify(view.warp(), row, squarePerW, g, middles, batch);
}

// What follows from the above in float.
HWY_INLINE void completeSource(const ViewGeometry& view, BlockBatch& batch) {
  const hn::CappedTag<float, kBatch> d;
  const hn::Rebind<std::int32_t, decltype(d)> d32;
  for (int i = 0; i < kBatch; i += static_cast<int>(hn::MaxLanes(d))) {
    const auto t1 = hn::Load(d, batch.t1 + i);
    const auto t2 = hn::Mul(t1, t1);
    hn::Store(t2, d, batch.t2 + i);
    hn::Store(hn::Mul(t2, t1), d, batch.t3 + i);
    const auto farthest =
        hn::Max(hn::Abs(hn::Load(d32, batch.column + i)), hn::Abs(hn::Load(d32, batch.row + i)));
    hn::Store(hn::NegMulAdd(hn::ConvertTo(d, farthest),
                            hn::Set(d, static_cast<float>(ViewGeometry::kPlainRounding)),
                            hn::Set(d, static_cast<float>(view.clear()))),
              d, batch.clear + i);
  }
}

// Looks up the nodes of the blocks of group g. Returns S0, stores the extents and begins the bits
// of usual blocks with those about a usual node.
HWY_INLINE VD lookUp(const ViewGeometry& view, int g, BlockBatch& batch) {
  HWY_ALIGN double values[kDoubles];
  for (int k = 0; k < kDoubles; ++k) {
    const int i = g * kDoubles + k;
    const LensNode& node = view.node(batch.node[i]);
    values[k] = node.value;
    batch.extent[i] = node.extent;
    batch.usual |= static_cast<unsigned>(node.usual) << i;
  }
  return hn::Load(DD(), values);
}

// The rays of the middles and their lens nodes.
struct Rays {
  VD x[kGroups], y[kGroups];
};

HWY_INLINE void prepareRays(const ViewGeometry& view, const Middles& middles, int g, Rays& rays,
                            BlockBatch& batch) {
  const VD column = middles.column[g];
  const VD row = middles.row[g];
  const VD x = hn::MulAdd(column, broadcastDouble(view.xx()),
                          hn::MulAdd(row, broadcastDouble(view.xy()), broadcastDouble(view.x0())));
  const VD y = hn::MulAdd(row, broadcastDouble(view.yy()), broadcastDouble(view.y0()));
  const VD q = hn::MulAdd(x, x, hn::Mul(y, y));
  const VD n = hn::Floor(
      hn::MulAdd(hn::Sqrt(q), broadcastDouble(LensTable::kNodesPerUnit), broadcastDouble(0.5)));
  const auto fine = middles.fine[g];
  const VD last =
      hn::IfThenElse(fine, broadcastDouble(view.lastFineNode()), broadcastDouble(view.lastNode()));
  const VD node = hn::IfThenElse(hn::Lt(n, last), n, last);  // the last one for NaN, too
  const VD r = hn::Mul(node, broadcastDouble(1 / LensTable::kNodesPerUnit));
  const int i = g * kDoubles;
  store(hn::Add(node, hn::IfThenElseZero(fine, broadcastDouble(view.firstFineNode()))),
        batch.node + i);
  store(hn::NegMulAdd(r, r, q), batch.p0 + i);
  store(hn::Mul(broadcastDouble(2 * view.xx()), x), batch.beta + i);
  store(hn::Mul(broadcastDouble(2 * view.yy()), y), batch.delta + i);
  rays.x[g] = x;
  rays.y[g] = y;
}

// The raw positions of the middles. Returns the blocks whose positions are so far from wrapping
// around that 16 bits hold them (compatibility 39), as bits.
HWY_INLINE unsigned prepareLens(const ViewGeometry& view, const Rays& rays, int g,
                                BlockBatch& batch) {
  constexpr double kFarthest = 30000;  // raw pixels
  const lens::Camera& camera = view.rays().camera;
  const int i = g * kDoubles;
  const VD S0 = lookUp(view, g, batch);
  const VD a0 = hn::Mul(broadcastDouble(camera.fx), rays.x[g]);
  const VD b0 = hn::Mul(broadcastDouble(camera.fy), rays.y[g]);
  const VD perPixel = broadcastDouble(1.0 / kFractions);
  const VD pixel = broadcastDouble(kFractions);
  const VD U = hn::MulAdd(a0, S0, broadcastDouble(kFractions * camera.cx));
  const VD V = hn::MulAdd(b0, S0, broadcastDouble(kFractions * camera.cy));
  const VD baseU = hn::Floor(hn::Mul(U, perPixel));
  const VD baseV = hn::Floor(hn::Mul(V, perPixel));
  store(a0, batch.a0 + i);
  store(b0, batch.b0 + i);
  store(S0, batch.S0 + i);
  store(baseU, batch.baseU + i);
  store(baseV, batch.baseV + i);
  store(hn::NegMulAdd(baseU, pixel, U), batch.restU + i);
  store(hn::NegMulAdd(baseV, pixel, V), batch.restV + i);
  const auto holdable =
      hn::Lt(hn::Max(hn::Abs(U), hn::Abs(V)), broadcastDouble(kFractions * kFarthest));
  return bitsOf(DD(), holdable) << i;
}

// Blocks `first` ... of a part of a row. The steps of all blocks are taken together, so that none
// waits for the divisions, square roots and loads of another.
HWY_INLINE void prepareBatch(const ViewGeometry& view, const RowGeometry& row, const RowPart& part,
                             int first, BlockBatch& batch) {
  Middles middles;
  Rays rays;
  unsigned holdable = 0;
  batch.inside = batch.outside = batch.small = batch.gentle = batch.usual = 0;
  HWY_UNROLL(4)
  for (int g = 0; g < kGroups; ++g) {
    prepareSource(view, row, part, first, g, middles, batch);
  }
  HWY_UNROLL(4)
  for (int g = 0; g < kGroups; ++g) {
    prepareRays(view, middles, g, rays, batch);
  }
  completeSource(view, batch);
  HWY_UNROLL(4)
  for (int g = 0; g < kGroups; ++g) {
    holdable |= prepareLens(view, rays, g, batch);
  }
  batch.small &= view.hasBlocks() ? holdable : 0;
  batch.usual &= batch.inside & batch.small & batch.gentle;
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // FISHEYE_HAS_BLOCKS
#endif  // per-target include guard
