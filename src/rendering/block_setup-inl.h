// Middles of a batch of blocks, in double. Compiled once per instruction set.
#if defined(FISHEYE_BLOCK_SETUP_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_BLOCK_SETUP_INL_H_
#undef FISHEYE_BLOCK_SETUP_INL_H_
#else
#define FISHEYE_BLOCK_SETUP_INL_H_
#endif

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

HWY_INLINE unsigned bitsOf(hn::Mask<DD> mask) {
  std::uint8_t bits[8] = {};
  hn::StoreMaskBits(DD(), mask, bits);
  return bits[0];
}

// Blocks of the batch that lie inside or outside the undistorted image and that float can handle.
struct BatchMasks {
  hn::Mask<DD> inside, outside, small, gentle, fine;
};

// Whether the blocks about the whole source pixels (icx, icy) can be computed in float, and whether
// they show the undistorted image.
HWY_INLINE BatchMasks classify(const ViewGeometry& view, VD icx, VD icy, VD bx, VD by, VD t1,
                               VD perW) {
  constexpr double kRounding = 2.5;  // of middles and pixels, and column -1 that counts as 0
  constexpr double kFarthestSource = 0x1p22;  // float still has fraction bits
  const VD c = hn::Abs(t1);
  BatchMasks masks;
  masks.gentle = hn::Lt(c, broadcastDouble(ViewGeometry::kGentle));
  const auto certain = hn::And(hn::Lt(hn::Abs(perW), broadcastDouble(view.largestPerW())),
                               hn::Lt(c, broadcastDouble(ViewGeometry::kSteep)));
  const VD offsets = hn::IfThenElse(masks.gentle, broadcastDouble(ViewGeometry::kGentleOffsets),
                                    broadcastDouble(ViewGeometry::kSteepOffsets));
  const VD reachX = hn::Mul(hn::Abs(bx), offsets);
  const VD reachY = hn::Mul(hn::Abs(by), offsets);
  const VD farthest = broadcastDouble(kFarthestSource);
  const auto near = hn::And(hn::Lt(hn::Abs(icx), farthest), hn::Lt(hn::Abs(icy), farthest));
  const auto close = hn::And(hn::Le(reachX, broadcastDouble(view.reachX() - 1)),
                             hn::Le(reachY, broadcastDouble(view.reachY() - 1)));
  masks.small = hn::And(certain, hn::And(near, close));
  masks.fine = hn::And(hn::Le(reachX, broadcastDouble(view.fineReachX() - 1)),
                       hn::Le(reachY, broadcastDouble(view.fineReachY() - 1)));
  const double halfWidth = 0.5 * view.warp().size.width;
  const double halfHeight = 0.5 * view.warp().size.height;
  const VD offX = hn::Abs(hn::Sub(icx, broadcastDouble(halfWidth)));
  const VD offY = hn::Abs(hn::Sub(icy, broadcastDouble(halfHeight)));
  masks.inside = hn::And(hn::Lt(hn::Add(offX, reachX), broadcastDouble(halfWidth - kRounding)),
                         hn::Lt(hn::Add(offY, reachY), broadcastDouble(halfHeight - kRounding)));
  const auto beyond =
      hn::Or(hn::Gt(hn::Sub(offX, reachX), broadcastDouble(halfWidth + kRounding)),
             hn::Gt(hn::Sub(offY, reachY), broadcastDouble(halfHeight + kRounding)));
  masks.outside = hn::And(certain, beyond);
  return masks;
}

// The source side of elements g, g + 1 ... of the batch: middles, steps and masks. The last block
// of a part ends with it.
HWY_INLINE BatchMasks prepareSource(const ViewGeometry& view, const RowPart& part, int first, int g,
                                    VD& icx, VD& icy, BlockBatch& batch) {
  const DD d;
  const InverseWarp& warp = view.warp();
  const cv::Matx33d& H = warp.Hinv;
  const double py = part.y - warp.dy;
  const VD h20 = broadcastDouble(H(2, 0));
  const VD block = hn::Add(hn::Iota(d, g), broadcastDouble(first));
  const VD middle =
      hn::Min(hn::MulAdd(block, broadcastDouble(kBlock), broadcastDouble(part.begin + kHalfBlock)),
              broadcastDouble(part.end - kHalfBlock));
  const VD px = hn::Sub(middle, broadcastDouble(warp.dx));
  const VD w = hn::MulAdd(h20, px, broadcastDouble(H(2, 1) * py + H(2, 2)));
  const VD perW = hn::Div(broadcastDouble(1), w);
  const VD h00 = broadcastDouble(H(0, 0));
  const VD h10 = broadcastDouble(H(1, 0));
  const VD sx = hn::Mul(hn::MulAdd(h00, px, broadcastDouble(H(0, 1) * py + H(0, 2))), perW);
  const VD sy = hn::Mul(hn::MulAdd(h10, px, broadcastDouble(H(1, 1) * py + H(1, 2))), perW);
  icx = hn::Round(sx);
  icy = hn::Round(sy);
  const VD bx = hn::Mul(hn::NegMulAdd(sx, h20, h00), perW);
  const VD by = hn::Mul(hn::NegMulAdd(sy, h20, h10), perW);
  const VD t1 = hn::Neg(hn::Mul(h20, perW));
  const VD t2 = hn::Mul(t1, t1);
  store(hn::Sub(sx, icx), batch.ax + g);
  store(hn::Sub(sy, icy), batch.ay + g);
  store(bx, batch.bx + g);
  store(by, batch.by + g);
  store(t1, batch.t1 + g);
  store(t2, batch.t2 + g);
  store(hn::Mul(t2, t1), batch.t3 + g);
  store(icx, batch.column + g);
  store(icy, batch.row + g);
  store(hn::NegMulAdd(hn::Max(hn::Abs(sx), hn::Abs(sy)),
                      broadcastDouble(ViewGeometry::kPlainRounding), broadcastDouble(view.clear())),
        batch.clear + g);
  return classify(view, icx, icy, bx, by, t1, perW);
}

// S0 at these nodes.
HWY_INLINE VD valuesAt(const ViewGeometry& view, const std::int32_t* node) {
  HWY_ALIGN double values[kBatch];
  for (int k = 0; k < kDoubles; ++k) {
    values[k] = view.node(node[k]).value;
  }
  return hn::Load(DD(), values);
}

// The lens side of the same elements: the nearest node and the linear terms. Returns the blocks
// whose positions are so far from wrapping around that 16 bits hold them (compatibility 39).
HWY_INLINE hn::Mask<DD> prepareLens(const ViewGeometry& view, int g, VD icx, VD icy,
                                    hn::Mask<DD> fine, BlockBatch& batch) {
  constexpr double kFarthest = 30000;  // raw pixels
  const lens::Camera& camera = view.rays().camera;
  const VD xm = hn::MulAdd(icx, broadcastDouble(view.xx()),
                           hn::MulAdd(icy, broadcastDouble(view.xy()), broadcastDouble(view.x0())));
  const VD ym = hn::MulAdd(icy, broadcastDouble(view.yy()), broadcastDouble(view.y0()));
  const VD q = hn::MulAdd(xm, xm, hn::Mul(ym, ym));
  const VD n = hn::Floor(
      hn::MulAdd(hn::Sqrt(q), broadcastDouble(LensTable::kNodesPerUnit), broadcastDouble(0.5)));
  const auto lastOf = [](const LensTable& table) HWY_ATTR {
    return broadcastDouble(static_cast<double>(table.size() - 1));
  };
  const VD last = hn::IfThenElse(fine, lastOf(view.finestTable()), lastOf(view.table()));
  const VD node = hn::IfThenElse(hn::Lt(n, last), n, last);  // the last one for NaN, too
  const VD table = hn::IfThenElseZero(fine, broadcastDouble(ViewGeometry::kFine));
  store(hn::Add(node, table), batch.node + g);
  const VD S0 = valuesAt(view, batch.node + g);
  const VD r = hn::Mul(node, broadcastDouble(1 / LensTable::kNodesPerUnit));
  store(hn::NegMulAdd(r, r, q), batch.p0 + g);
  store(hn::Mul(broadcastDouble(2 * view.xx()), xm), batch.beta + g);
  store(hn::Mul(broadcastDouble(2 * view.yy()), ym), batch.delta + g);
  const VD a0 = hn::Mul(broadcastDouble(camera.fx), xm);
  const VD b0 = hn::Mul(broadcastDouble(camera.fy), ym);
  store(a0, batch.a0 + g);
  store(b0, batch.b0 + g);
  store(S0, batch.S0 + g);
  const VD perPixel = broadcastDouble(1.0 / kFractions);
  const VD pixel = broadcastDouble(kFractions);
  const VD U = hn::MulAdd(a0, S0, broadcastDouble(kFractions * camera.cx));
  const VD V = hn::MulAdd(b0, S0, broadcastDouble(kFractions * camera.cy));
  const VD baseU = hn::Floor(hn::Mul(U, perPixel));
  const VD baseV = hn::Floor(hn::Mul(V, perPixel));
  store(baseU, batch.baseU + g);
  store(baseV, batch.baseV + g);
  store(hn::NegMulAdd(baseU, pixel, U), batch.restU + g);
  store(hn::NegMulAdd(baseV, pixel, V), batch.restV + g);
  const VD farthest = broadcastDouble(kFractions * kFarthest);
  return hn::And(hn::Lt(hn::Abs(U), farthest), hn::Lt(hn::Abs(V), farthest));
}

// Blocks `first` ... of a part of a row.
HWY_INLINE void prepareBatch(const ViewGeometry& view, const RowPart& part, int first,
                             BlockBatch& batch) {
  batch.inside = batch.outside = batch.small = batch.gentle = 0;
  for (int g = 0; g < kBatch; g += kDoubles) {
    VD icx;
    VD icy;
    const BatchMasks masks = prepareSource(view, part, first, g, icx, icy, batch);
    const auto near = prepareLens(view, g, icx, icy, masks.fine, batch);
    batch.inside |= bitsOf(masks.inside) << g;
    batch.outside |= bitsOf(masks.outside) << g;
    batch.small |= bitsOf(hn::And(masks.small, near)) << g;
    batch.gentle |= bitsOf(masks.gentle) << g;
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // FISHEYE_HAS_BLOCKS
#endif  // per-target include guard
