#include "rendering/block_access.h"

#include <algorithm>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rendering/block_access.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "rendering/block_positions-inl.h"
#include "rendering/block_samples-inl.h"
#include "rendering/block_setup-inl.h"
#include "rendering/careful_block-inl.h"

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {
namespace {

#if FISHEYE_HAS_BLOCKS

bool AreComputed() { return true; }

void Prepare(const ViewGeometry& view, const RowPart& part, int first, BlockBatch& batch) {
  prepareBatch(view, RowGeometry(view, part.y), part, first, batch);
}

void TraceBlock(const ViewGeometry& view, const BlockBatch& batch, int i, blocks::Trace& trace) {
  const LensNode& node = view.node(batch.node[i]);
  const BlockKind kind{view.xy() != 0, (batch.gentle >> i & 1) == 0, node.odd,
                       (batch.inside >> i & 1) == 0};
  detailedBlock(view, batch, i, kind, trace.positions, trace.detail);
  std::copy_n(kOffsets.pixel, kBlock, trace.order.begin());
}

bool ComputeCarefully(const ViewGeometry& view, CarefulPositions& positions, int x, int y,
                      CarefulBlock& block) {
  return computeBlockCarefully(view, positions, x, y, block);
}

void CheckArctangents(const lens::Camera& camera, const double* x, const double* y,
                      blocks::ArctangentCheck& check) {
  for (int k = 0; k < kBlock; k += static_cast<int>(kPack)) {
    const Pack px = Pack::load(x + k);
    const Pack py = Pack::load(y + k);
    const PackOfRays rays{px, py, squareRoot(px * px + py * py), hn::Eq(px.v, px.v)};
    alignas(64) double r[kPack];
    alignas(64) double theta[kPack];
    rays.r.store(r);
    std::transform(r, r + kPack, theta, [](double tangent) { return std::atan(tangent); });
    const PackOfPositions expected = positionsOf(camera, rays, Pack::load(theta));
    const PackOfPositions found = positionsOf(camera, rays, arcTangent(rays.r));
    const PackOfPositions bounds = boundsOf(camera, rays, arcTangent(rays.r));
    const Pack u = absolute(found.u - expected.u) / bounds.u;
    const Pack v = absolute(found.v - expected.v) / bounds.v;
    const Pack larger(hn::MaxOfLanes(Lanes(), hn::Max(u.v, v.v)));
    check.largestShare = std::max(check.largestShare, hn::GetLane(larger.v));
    if (areCertain(found, bounds)) {
      const auto equal = hn::And(hn::Eq(hn::Round(found.u.v), hn::Round(expected.u.v)),
                                 hn::Eq(hn::Round(found.v.v), hn::Round(expected.v.v)));
      check.certain += static_cast<int>(kPack);
      check.wrong += static_cast<int>(kPack) - static_cast<int>(hn::CountTrue(Lanes(), equal));
    }
  }
}

template <int kBytes>
void SamplePixels(const images::Frame& frame, const blocks::Request& request, unsigned char* pixels,
                  unsigned char* mask) {
  BlockBatch batch{};
  batch.baseU[0] = request.baseU;
  batch.baseV[0] = request.baseV;
  batch.extent[0] = request.extent;
  const bool deep = (placesOf<kBytes>(frame, batch).deep & 1) != 0;
  sampleBlock<kBytes>(frame, {&request.positions, request.baseU, request.baseV, deep, request.edge,
                              request.isLast, false, frame.stride(), pixels, mask});
}

void Sample(const images::Frame& frame, const blocks::Request& request, unsigned char* pixels,
            unsigned char* mask) {
  switch (frame.bytes) {
    case 1:
      return SamplePixels<1>(frame, request, pixels, mask);
    case 3:
      return SamplePixels<3>(frame, request, pixels, mask);
    default:
      return SamplePixels<4>(frame, request, pixels, mask);
  }
}

bool SumsOfPairsAgree(const std::uint8_t* x, const std::uint8_t* weights) {
  const DU8 d;
  const auto own = sumsOfPairs(hn::LoadU(d, x), hn::LoadU(d, weights));
  const auto portable = sumsOfPairsPortable(hn::LoadU(d, x), hn::LoadU(d, weights));
  return hn::AllTrue(D16(), hn::Eq(own, portable));
}

bool NarrowingAgrees(const std::uint8_t* a, const std::uint8_t* b) {
  const DU8 d;
  const auto values = [&](const std::uint8_t* bytes) HWY_ATTR {
    return hn::And(hn::BitCast(D16(), hn::LoadU(d, bytes)), hn::Set(D16(), 0xFF));
  };
  const auto own = narrow(values(a), values(b));
  return hn::AllTrue(d, hn::Eq(own, narrowPortable(values(a), values(b))));
}

#else

bool AreComputed() { return false; }
void Prepare(const ViewGeometry&, const RowPart&, int, BlockBatch&) {}
void TraceBlock(const ViewGeometry&, const BlockBatch&, int, blocks::Trace&) {}
bool ComputeCarefully(const ViewGeometry&, CarefulPositions&, int, int, CarefulBlock&) {
  return false;
}
void CheckArctangents(const lens::Camera&, const double*, const double*, blocks::ArctangentCheck&) {
}
void Sample(const images::Frame&, const blocks::Request&, unsigned char*, unsigned char*) {}
bool SumsOfPairsAgree(const std::uint8_t*, const std::uint8_t*) { return false; }
bool NarrowingAgrees(const std::uint8_t*, const std::uint8_t*) { return false; }

#endif  // FISHEYE_HAS_BLOCKS

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fisheye_calibration::rendering {
namespace {

HWY_EXPORT(AreComputed);
HWY_EXPORT(Prepare);
HWY_EXPORT(TraceBlock);
HWY_EXPORT(ComputeCarefully);
HWY_EXPORT(CheckArctangents);
HWY_EXPORT(Sample);
HWY_EXPORT(SumsOfPairsAgree);
HWY_EXPORT(NarrowingAgrees);

}  // namespace
}  // namespace fisheye_calibration::rendering

namespace blocks {

using namespace fisheye_calibration::rendering;

bool areComputed() { return HWY_DYNAMIC_DISPATCH(AreComputed)(); }

void prepare(const ViewGeometry& view, const RowPart& part, int first, BlockBatch& batch) {
  HWY_DYNAMIC_DISPATCH(Prepare)(view, part, first, batch);
}

Trace trace(const ViewGeometry& view, const BlockBatch& batch, int i) {
  Trace trace;
  HWY_DYNAMIC_DISPATCH(TraceBlock)(view, batch, i, trace);
  return trace;
}

bool computeCarefully(const ViewGeometry& view, CarefulPositions& positions, int x, int y,
                      CarefulBlock& block) {
  return HWY_DYNAMIC_DISPATCH(ComputeCarefully)(view, positions, x, y, block);
}

void checkArctangents(const fisheye_calibration::lens::Camera& camera,
                      const std::array<double, kBlock>& x, const std::array<double, kBlock>& y,
                      ArctangentCheck& check) {
  HWY_DYNAMIC_DISPATCH(CheckArctangents)(camera, x.data(), y.data(), check);
}

void sample(const images::Frame& frame, const Request& request, unsigned char* pixels,
            unsigned char* mask) {
  HWY_DYNAMIC_DISPATCH(Sample)(frame, request, pixels, mask);
}

bool sumsOfPairsAgree(const Bytes64& x, const Bytes64& weights) {
  return HWY_DYNAMIC_DISPATCH(SumsOfPairsAgree)(x.data(), weights.data());
}

bool narrowingAgrees(const Bytes64& a, const Bytes64& b) {
  return HWY_DYNAMIC_DISPATCH(NarrowingAgrees)(a.data(), b.data());
}

}  // namespace blocks
#endif  // HWY_ONCE
