// Raw positions of a block of output pixels. Compiled once per instruction set.
#if defined(FISHEYE_BLOCK_POSITIONS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_BLOCK_POSITIONS_INL_H_
#undef FISHEYE_BLOCK_POSITIONS_INL_H_
#else
#define FISHEYE_BLOCK_POSITIONS_INL_H_
#endif

#include "rendering/vectors-inl.h"

#if FISHEYE_HAS_BLOCKS

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

// What differs between blocks.
struct BlockKind {
  bool skewed = false;
  bool steep = false;  // T needs a division
  bool odd = false;    // the node has odd terms
  bool edge = false;   // some pixels may lie outside the undistorted image
};

struct BlockVectors {
  VF x[kVectors], y[kVectors];
};

// x is replaced by the nearest whole number, ties to even, if |x| < 2^22: adding 1.5 2^23 leaves no
// fraction bits. Returns the distance.
HWY_INLINE VF makeWhole(VF& x) {
  const VF shift = broadcast(0x1.8p23F);
  const VF whole = hn::Sub(hn::Add(x, shift), shift);
  const VF distance = hn::Abs(hn::Sub(x, whole));
  x = whole;
  return distance;
}

// The same as an integer in the low half of each lane.
HWY_INLINE V32 wholeNumber(VF x, VF& distance) {
  const VF shift = broadcast(0x1.8p23F);
  const VF shifted = hn::Add(x, shift);
  distance = hn::Abs(hn::Sub(x, hn::Sub(shifted, shift)));
  return hn::BitCast(D32(), shifted);
}

// Offsets of the source pixels from the middle one.
template <bool kSteep>
HWY_INLINE void sourceOffsets(const BlockBatch& b, int i, BlockVectors& s) {
  const DF d;
  const VF ax = broadcast(b.ax[i]);
  const VF bx = broadcast(b.bx[i]);
  const VF ay = broadcast(b.ay[i]);
  const VF by = broadcast(b.by[i]);
  const VF t1 = broadcast(b.t1[i]);
  const VF t2 = broadcast(b.t2[i]);
  const VF t3 = broadcast(b.t3[i]);
  HWY_UNROLL(8)
  for (int v = 0; v < kVectors; ++v) {
    const VF k = hn::Load(d, kOffsets.k + v * kLanes);
    const VF T = kSteep ? hn::Div(k, hn::NegMulAdd(k, t1, broadcast(1.0F)))
                        : hn::MulAdd(hn::Load(d, kOffsets.square + v * kLanes),
                                     hn::MulAdd(k, hn::MulAdd(k, t3, t2), t1), k);
    s.x[v] = hn::MulAdd(T, bx, ax);
    s.y[v] = hn::MulAdd(T, by, ay);
  }
}

// Moves pixels outside the undistorted image onto its border and marks them as not shown. Column -1
// stands for -1.5 < sx < -0.5, which truncation takes to 0 (compatibility 40).
HWY_INLINE void clampToImage(const InverseWarp& warp, const BlockBatch& b, int i, BlockVectors& s,
                             BlockPositions& out) {
  const VF lowX = broadcast(static_cast<float>(-b.column[i]));
  const VF lowY = broadcast(static_cast<float>(-b.row[i]));
  const VF highX = broadcast(static_cast<float>(warp.size.width - 1 - b.column[i]));
  const VF highY = broadcast(static_cast<float>(warp.size.height - 1 - b.row[i]));
  const VF one = broadcast(1.0F);
  V32 shown[kVectors];
  for (int v = 0; v < kVectors; ++v) {
    const auto inX = hn::And(hn::Ge(s.x[v], hn::Sub(lowX, one)), hn::Le(s.x[v], highX));
    const auto inY = hn::And(hn::Ge(s.y[v], hn::Sub(lowY, one)), hn::Le(s.y[v], highY));
    shown[v] = hn::BitCast(D32(), hn::VecFromMask(DF(), hn::And(inX, inY)));
    s.x[v] = hn::Min(hn::Max(s.x[v], lowX), highX);
    s.y[v] = hn::Min(hn::Max(s.y[v], lowY), highY);
  }
  for (int v = 0; v < kVectors; v += 2) {
    hn::Store(sideBySide(shown[v], shown[v + 1]), D16(), out.shown + v * kLanes);
  }
}

HWY_INLINE VF polynomial(VF p, const float* c) {
  VF sum = broadcast(c[LensNode::kDegree - 1]);
  HWY_UNROLL(4)
  for (std::size_t k = LensNode::kDegree - 1; k-- > 0;) {
    sum = hn::MulAdd(sum, p, broadcast(c[k]));
  }
  return sum;
}

// D = S - S0 of pixels at offsets s.
template <bool kOdd>
HWY_INLINE void factorOffsets(const ViewGeometry& view, const BlockBatch& b, int i,
                              const BlockVectors& s, VF* D) {
  const LensNode& node = view.node(b.node[i]);
  const VF alpha = broadcast(view.squareXx());
  const VF gamma = broadcast(view.squareYy());
  const VF beta = broadcast(b.beta[i]);
  const VF delta = broadcast(b.delta[i]);
  const VF p0 = broadcast(b.p0[i]);
  HWY_UNROLL(8)
  for (int v = 0; v < kVectors; ++v) {
    const VF py = hn::MulAdd(s.y[v], hn::MulAdd(s.y[v], gamma, delta), p0);
    const VF p = hn::MulAdd(s.x[v], hn::MulAdd(s.x[v], alpha, beta), py);
    D[v] = hn::Mul(polynomial(p, node.cFloat.data()), p);
    if (kOdd) {
      const VF q = hn::Max(hn::Add(p, broadcast(static_cast<float>(node.radius * node.radius))),
                           hn::Zero(DF()));
      const VF t = hn::Sub(hn::Sqrt(q), broadcast(static_cast<float>(node.radius)));
      D[v] = hn::MulAdd(t, polynomial(p, node.oFloat.data()), D[v]);
    }
  }
}

// Rounds the positions of pixels at offsets s with factors D.
HWY_INLINE VF roundPositions(const BlockBatch& b, int i, const BlockVectors& s, const VF* D,
                             BlockPositions& out, BlockDetail* detail) {
  const DF d;
  const VF a0 = broadcast(b.a0[i]);
  const VF b0 = broadcast(b.b0[i]);
  const VF S0 = broadcast(b.S0[i]);
  const VF restU = broadcast(b.restU[i]);
  const VF restV = broadcast(b.restV[i]);
  VF farthest = hn::Zero(d);
  V32 u[kVectors];
  V32 w[kVectors];
  HWY_UNROLL(8)
  for (int v = 0; v < kVectors; ++v) {
    const VF du = hn::MulAdd(hn::Add(s.x[v], a0), D[v], hn::MulAdd(s.x[v], S0, restU));
    const VF dv = hn::MulAdd(hn::Add(s.y[v], b0), D[v], hn::MulAdd(s.y[v], S0, restV));
    VF distanceU;
    VF distanceV;
    u[v] = wholeNumber(du, distanceU);
    w[v] = wholeNumber(dv, distanceV);
    farthest = hn::Max(farthest, hn::Max(distanceU, distanceV));
    if (v % 2 == 1) {
      hn::Store(sideBySide(u[v - 1], u[v]), D16(), out.u + (v - 1) * kLanes);
      hn::Store(sideBySide(w[v - 1], w[v]), D16(), out.v + (v - 1) * kLanes);
    }
    if (detail != nullptr) {
      hn::Store(du, d, detail->u + v * kLanes);
      hn::Store(dv, d, detail->v + v * kLanes);
    }
  }
  return farthest;
}

HWY_INLINE VF roundSource(BlockVectors& s) {
  VF farthest = hn::Zero(DF());
  HWY_UNROLL(8)
  for (int v = 0; v < kVectors; ++v) {
    farthest = hn::Max(farthest, hn::Max(makeWhole(s.x[v]), makeWhole(s.y[v])));
  }
  return farthest;
}

// The skew moves columns: x is linear in X + lean Y.
HWY_INLINE void addSkew(const ViewGeometry& view, BlockVectors& s) {
  const VF lean = broadcast(view.lean());
  for (int v = 0; v < kVectors; ++v) {
    s.x[v] = hn::MulAdd(s.y[v], lean, s.x[v]);
  }
}

HWY_INLINE bool isCertain(const BlockBatch& b, int i, const LensNode& node, VF source,
                          VF position) {
  return hn::AllTrue(
      DF(), hn::And(hn::Lt(source, broadcast(b.clear[i])), hn::Lt(position, broadcast(node.safe))));
}

// The positions of block i, which lies inside the undistorted image. Returns whether the rounding
// of all of them is certain.
template <bool kSkewed, bool kSteep, bool kOdd>
HWY_INLINE bool positionsInside(const ViewGeometry& view, const BlockBatch& b, int i,
                                BlockPositions& out) {
  BlockVectors s;
  VF D[kVectors];
  sourceOffsets<kSteep>(b, i, s);
  const VF source = roundSource(s);
  if (kSkewed) {
    addSkew(view, s);
  }
  factorOffsets<kOdd>(view, b, i, s, D);
  const VF position = roundPositions(b, i, s, D, out, nullptr);
  return isCertain(b, i, view.node(b.node[i]), source, position);
}

// The less common kinds.
template <bool kSkewed>
HWY_NOINLINE bool otherPositionsInside(const ViewGeometry& view, const BlockBatch& b, int i,
                                       const BlockKind& kind, BlockPositions& out) {
  if (!kind.steep) {
    return positionsInside<kSkewed, false, true>(view, b, i, out);
  }
  return kind.odd ? positionsInside<kSkewed, true, true>(view, b, i, out)
                  : positionsInside<kSkewed, true, false>(view, b, i, out);
}

// Any block; writes what it rounds to `detail`.
HWY_NOINLINE inline bool detailedBlock(const ViewGeometry& view, const BlockBatch& b, int i,
                                       const BlockKind& kind, BlockPositions& out,
                                       BlockDetail& detail) {
  const DF d;
  BlockVectors s;
  VF D[kVectors];
  if (kind.steep) {
    sourceOffsets<true>(b, i, s);
  } else {
    sourceOffsets<false>(b, i, s);
  }
  for (int v = 0; v < kVectors; ++v) {
    hn::Store(s.x[v], d, detail.sx + v * kLanes);
    hn::Store(s.y[v], d, detail.sy + v * kLanes);
  }
  const VF source = roundSource(s);
  if (kind.edge) {
    clampToImage(view.warp(), b, i, s, out);
  }
  if (kind.skewed) {
    addSkew(view, s);
  }
  if (kind.odd) {
    factorOffsets<true>(view, b, i, s, D);
  } else {
    factorOffsets<false>(view, b, i, s, D);
  }
  const VF position = roundPositions(b, i, s, D, out, &detail);
  return isCertain(b, i, view.node(b.node[i]), source, position);
}

// The pixels, as bits in the order of kOffsets, whose a or b is `limit` or more from a whole
// number.
HWY_INLINE std::uint32_t doubtfulPixels(const float* a, const float* b, float limit) {
  const DF d;
  std::uint32_t pixels = 0;
  for (int v = 0; v < kVectors; ++v) {
    VF x = hn::Load(d, a + v * kLanes);
    VF y = hn::Load(d, b + v * kLanes);
    const VF distance = hn::Max(makeWhole(x), makeWhole(y));
    std::uint8_t bits[8] = {};
    hn::StoreMaskBits(d, hn::Not(hn::Lt(distance, broadcast(limit))), bits);
    pixels |= (bits[0] | static_cast<std::uint32_t>(bits[1]) << 8) << (v * kLanes);
  }
  return pixels;
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // FISHEYE_HAS_BLOCKS
#endif  // per-target include guard
