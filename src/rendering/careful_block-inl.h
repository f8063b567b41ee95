// Blocks of pixels by the plain steps, in vectors of doubles. Compiled once per instruction set.
#if defined(FISHEYE_CAREFUL_BLOCK_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_CAREFUL_BLOCK_INL_H_
#undef FISHEYE_CAREFUL_BLOCK_INL_H_
#else
#define FISHEYE_CAREFUL_BLOCK_INL_H_
#endif

#include "lens/camera_model-inl.h"
#include "rendering/careful_pixels.h"
#include "rendering/vectors-inl.h"

#if FISHEYE_HAS_BLOCKS

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

// The plain steps are followed operation by operation: packs round each of them, also a product
// that is added to something.
namespace model = lens::HWY_NAMESPACE;
using model::Lanes;
using model::Pack;
constexpr int kPack = static_cast<int>(hn::MaxLanes(Lanes()));

HWY_INLINE void storeWhole(Pack value, std::int32_t* to) {
  const hn::Rebind<std::int32_t, Lanes> d;
  hn::Store(hn::DemoteTo(d, value.v), d, to);
}

// As images::nearestPixel, before truncation.
HWY_INLINE Pack nearestPixels(Pack position, int length) {
  const hn::Rebind<float, Lanes> dFloat;
  const Pack shifted = Pack(hn::PromoteTo(Lanes(), hn::DemoteTo(dFloat, position.v))) + Pack(0.5);
  return select(hn::And(shifted > Pack(-1), shifted < Pack(length)), shifted, Pack(-1));
}

// The source pixels of a block that starts at output pixel (x, y), as by sourcePixel, but where one
// coordinate is -1 the other can be anything.
HWY_INLINE void sourcePixels(const InverseWarp& warp, int x, int y, CarefulBlock& block) {
  const cv::Matx33d& H = warp.Hinv;
  const double py = y - warp.dy;
  for (int k = 0; k < kBlock; k += kPack) {
    const Pack px = Pack(hn::Iota(Lanes(), x + k)) - Pack(warp.dx);
    const auto sum = [&](int i) HWY_ATTR {
      return (Pack(H(i, 0)) * px + Pack(H(i, 1) * py)) + Pack(H(i, 2));
    };
    const Pack w = sum(2);
    storeWhole(nearestPixels(sum(0) / w, warp.size.width), block.column + k);
    storeWhole(nearestPixels(sum(1) / w, warp.size.height), block.row + k);
  }
}

// As roundToInt, and -2^31 where there is no position.
HWY_INLINE void storeRounded(Pack value, Pack::M exists, std::int32_t* to) {
  const auto fits = hn::And(hn::Ge(value.v, hn::Set(Lanes(), -2147483648.5)),
                            hn::Lt(value.v, hn::Set(Lanes(), 2147483647.5)));
  storeWhole(select(hn::And(exists, fits), Pack(hn::Round(value.v)), Pack(-2147483648.0)), to);
}

// The raw positions of the source pixels, as by ExactPositions.
HWY_INLINE void rawPositions(const lens::Camera& camera, ExactPositions& exact,
                             CarefulBlock& block) {
  alignas(64) double X[kBlock];
  alignas(64) double Y[kBlock];
  alignas(64) double W[kBlock];
  exact.rays(block.column, block.row, kBlock, X, Y, W);
  alignas(64) double x[kBlock];
  alignas(64) double y[kBlock];
  alignas(64) double r[kBlock];
  alignas(64) double theta[kBlock];
  for (int k = 0; k < kBlock; k += kPack) {
    const Pack px = Pack::load(X + k) / Pack::load(W + k);
    const Pack py = Pack::load(Y + k) / Pack::load(W + k);
    px.store(x + k);
    py.store(y + k);
    squareRoot(px * px + py * py).store(r + k);
  }
  arcTangents(r, theta);
  for (int k = 0; k < kBlock; k += kPack) {
    const auto isAhead = hn::Not(hn::Le(Pack::load(W + k).v, hn::Zero(Lanes())));
    const Pack pr = Pack::load(r + k);
    const Pack thetaD = model::distortedAngle(camera, Pack::load(theta + k));
    const Pack scale = select(hn::Eq(pr.v, hn::Zero(Lanes())), Pack(1.0), thetaD / pr);
    const Pack u = Pack(camera.fx) * Pack::load(x + k) * scale + Pack(camera.cx);
    const Pack v = Pack(camera.fy) * Pack::load(y + k) * scale + Pack(camera.cy);
    storeRounded(u * Pack(kFractions), isAhead, block.u + k);
    storeRounded(v * Pack(kFractions), isAhead, block.v + k);
  }
}

// A block that starts at output pixel (x, y). Returns false if it shows nothing.
HWY_INLINE bool computeBlockCarefully(const ViewGeometry& view, CarefulPositions& positions, int x,
                                      int y, CarefulBlock& block) {
  sourcePixels(view.warp(), x, y, block);
  if (!completeSources(block)) {
    return false;
  }
  rawPositions(view.rays().camera, positions.exact(), block);
  return true;
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // FISHEYE_HAS_BLOCKS
#endif  // per-target include guard
