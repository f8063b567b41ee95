// Blocks of pixels by the plain steps, in vectors of doubles. Compiled once per instruction set.
#if defined(FISHEYE_CAREFUL_BLOCK_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_CAREFUL_BLOCK_INL_H_
#undef FISHEYE_CAREFUL_BLOCK_INL_H_
#else
#define FISHEYE_CAREFUL_BLOCK_INL_H_
#endif

#include <cmath>
#include <cstddef>

#include "lens/camera_model-inl.h"
#include "rendering/careful_pixels.h"
#include "rendering/vectors-inl.h"

#if FISHEYE_HAS_BLOCKS

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

// The plain steps are followed operation by operation, except for the arctangent where its last
// bits do not count: packs round each of them, also a product that is added to something.
namespace model = lens::HWY_NAMESPACE;
using model::Lanes;
using model::Pack;
constexpr auto kPack = static_cast<std::ptrdiff_t>(hn::MaxLanes(Lanes()));

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
  for (std::ptrdiff_t k = 0; k < kBlock; k += kPack) {
    const Pack px = Pack(hn::Iota(Lanes(), static_cast<int>(x + k))) - Pack(warp.dx);
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

struct PackOfRays {
  Pack x, y, r;
  Pack::M isAhead;
};

struct PackOfPositions {
  Pack u, v;  // in 1/32 pixel, before rounding
};

HWY_INLINE PackOfPositions positionsOf(const lens::Camera& camera, const PackOfRays& rays,
                                       Pack theta) {
  const Pack thetaD = model::distortedAngle(camera, theta);
  const Pack scale = select(hn::Eq(rays.r.v, hn::Zero(Lanes())), Pack(1.0), thetaD / rays.r);
  const Pack u = Pack(camera.fx) * rays.x * scale + Pack(camera.cx);
  const Pack v = Pack(camera.fy) * rays.y * scale + Pack(camera.cy);
  return {u * Pack(kFractions), v * Pack(kFractions)};
}

// How far a theta that is off by three units in the last place can move positions. That is less
// than 2^-48 of M, the sum of the terms' magnitudes with k0 twice and k1 three times, as in the
// slope of theta_d (docs/rendering.md). A margin of 16 costs little: with M = 2^16, the largest of
// usual cameras, one block in 2^21 is computed twice.
HWY_INLINE PackOfPositions boundsOf(const lens::Camera& camera, const PackOfRays& rays,
                                    Pack theta) {
  const Pack share(0x1p-44);
  const lens::Camera magnitudes{std::abs(camera.fx),
                                std::abs(camera.fy),
                                std::abs(camera.cx),
                                std::abs(camera.cy),
                                2 * std::abs(camera.k0),
                                3 * std::abs(camera.k1),
                                0};
  const PackOfPositions M =
      positionsOf(magnitudes, {absolute(rays.x), absolute(rays.y), rays.r, rays.isAhead}, theta);
  return {share * M.u, share * M.v};
}

// Whether positions that are off by less than this are rounded correctly. False for NaN and
// infinity.
HWY_INLINE bool areCertain(const PackOfPositions& positions, const PackOfPositions& bounds) {
  const auto isCertain = [](Pack position, Pack bound) HWY_ATTR {
    const Pack distance = absolute(position - Pack(hn::Round(position.v)));
    return hn::Lt(distance.v, (Pack(0.5) - bound).v);
  };
  return hn::AllTrue(Lanes(),
                     hn::And(isCertain(positions.u, bounds.u), isCertain(positions.v, bounds.v)));
}

// The raw positions of the source pixels, as by ExactPositions.
HWY_INLINE void rawPositions(const lens::Camera& camera, ExactPositions& exact,
                             CarefulBlock& block) {
  constexpr std::ptrdiff_t kPacks = kBlock / kPack;
  alignas(64) double X[kBlock];
  alignas(64) double Y[kBlock];
  alignas(64) double W[kBlock];
  exact.rays(block.column, block.row, kBlock, X, Y, W);
  PackOfRays rays[kPacks];
  const auto storePositions = [&](std::ptrdiff_t i, const PackOfPositions& positions) HWY_ATTR {
    storeRounded(positions.u, rays[i].isAhead, block.u + i * kPack);
    storeRounded(positions.v, rays[i].isAhead, block.v + i * kPack);
  };
  for (std::ptrdiff_t i = 0; i < kPacks; ++i) {
    const Pack w = Pack::load(W + i * kPack);
    const Pack x = Pack::load(X + i * kPack) / w;
    const Pack y = Pack::load(Y + i * kPack) / w;
    rays[i] = {x, y, squareRoot(x * x + y * y), hn::Not(hn::Le(w.v, hn::Zero(Lanes())))};
  }
  bool certain = true;
  for (std::ptrdiff_t i = 0; i < kPacks && certain; ++i) {
    const Pack theta = arcTangent(rays[i].r);
    const PackOfPositions positions = positionsOf(camera, rays[i], theta);
    certain = areCertain(positions, boundsOf(camera, rays[i], theta));
    storePositions(i, positions);
  }
  if (certain) {
    return;
  }
  alignas(64) double r[kBlock];
  alignas(64) double theta[kBlock];
  for (std::ptrdiff_t i = 0; i < kPacks; ++i) {
    rays[i].r.store(r + i * kPack);
  }
  arcTangents(r, theta);
  for (std::ptrdiff_t i = 0; i < kPacks; ++i) {
    storePositions(i, positionsOf(camera, rays[i], Pack::load(theta + i * kPack)));
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
