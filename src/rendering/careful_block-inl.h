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

// The plain steps are followed operation by operation: packs round each of them, also a product
// that is added to something.
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

// A camera whose positions bound the terms of this one's, and how they grow with theta.
inline lens::Camera camerasMagnitudes(const lens::Camera& camera) {
  return {std::abs(camera.fx),   std::abs(camera.fy),     std::abs(camera.cx),
          std::abs(camera.cy),   2 * std::abs(camera.k0), 3 * std::abs(camera.k1),
          std::abs(camera.alpha)};
}

// Whether a theta that is off by some units in the last place gives the same rounded positions.
// That moves a position by less than 2^-48 of the sum of its terms: 2^-50 for theta, 20 roundings
// of 2^-53 in both.
HWY_INLINE bool areCertain(const PackOfPositions& positions, const PackOfPositions& magnitudes) {
  const auto isCertain = [](Pack position, Pack magnitude) HWY_ATTR {
    const Pack distance = absolute(position - Pack(hn::Round(position.v)));
    return hn::Lt(distance.v, (Pack(0.5) - Pack(0x1p-44) * magnitude).v);
  };
  return hn::AllTrue(
      Lanes(), hn::And(isCertain(positions.u, magnitudes.u), isCertain(positions.v, magnitudes.v)));
}

// The raw positions of the source pixels, as by ExactPositions.
HWY_INLINE void rawPositions(const lens::Camera& camera, ExactPositions& exact,
                             CarefulBlock& block) {
  constexpr std::ptrdiff_t kPacks = kBlock / kPack;
  const lens::Camera magnitudes = camerasMagnitudes(camera);
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
    const PackOfRays lengths{absolute(rays[i].x), absolute(rays[i].y), rays[i].r, rays[i].isAhead};
    certain = areCertain(positions, positionsOf(magnitudes, lengths, theta));
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
