// Samples a block of output pixels and its mask. Compiled once per instruction set.
#if defined(FISHEYE_BLOCK_SAMPLES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_BLOCK_SAMPLES_INL_H_
#undef FISHEYE_BLOCK_SAMPLES_INL_H_
#else
#define FISHEYE_BLOCK_SAMPLES_INL_H_
#endif

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "images/pixel_format.h"
#include "rendering/block_batch.h"
#include "rendering/colour_samples-inl.h"
#include "rendering/grey_samples-inl.h"
#include "rendering/one_sample.h"

#if FISHEYE_HAS_BLOCKS

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

// A block that is ready to be sampled.
struct SampledBlock {
  const BlockPositions* positions;
  std::int32_t baseU, baseV;
  bool deep;              // nothing outside the frame is read
  bool edge;              // not all pixels are shown
  bool isLast;            // nothing may be written behind it
  bool isUpwards;         // the next block below in the view was sampled before
  std::ptrdiff_t stride;  // of the frame
  unsigned char* pixels;  // of the block
  unsigned char* mask;    // may be null
};

// Columns to the right of a sample's first one, and rows below, that are read along with it.
template <int kBytes>
constexpr int kColumnsRead = kBytes == 1 ? kWindowColumns : (kPairBytes + kBytes - 1) / kBytes;
template <int kBytes>
constexpr int kRowsRead = kBytes == 1 ? kWindowRows : 2;

// Whole positions fit 16 bits, so larger sizes make no difference.
HWY_INLINE int sizeThatMatters(int size) { return std::min(size, 1 << 17); }

// Lanes with x0 <= x <= x1 and y0 <= y <= y1.
HWY_INLINE hn::Mask<D16> between(V16 x, int x0, int x1, V16 y, int y0, int y1) {
  const auto limit = [](int value)
                         HWY_ATTR { return broadcast16(std::clamp(value, -32768, 32767)); };
  return hn::And(hn::And(hn::Gt(x, limit(x0 - 1)), hn::Lt(x, limit(x1 + 1))),
                 hn::And(hn::Gt(y, limit(y0 - 1)), hn::Lt(y, limit(y1 + 1))));
}

// Whether the block crosses so few rows of the frame that 8 neighbours usually fit a window.
HWY_INLINE bool mayFitWindows(const BlockPositions& positions) {
  constexpr int kMostRows = kBlock / 8 * kWindowRows;
  return std::abs(positions.v[kBlock - 1] - positions.v[0]) <= kMostRows * kFractions;
}

using DBatch = hn::CappedTag<std::int32_t, kBatch>;

// The bits of blocks that cannot be computed in float mean nothing.
template <int kBytes>
HWY_INLINE FramePlaces placesOf(const images::Frame& frame, const BlockBatch& batch) {
  const DBatch d;
  FramePlaces places{0, 0};
  for (int i = 0; i < kBatch; i += static_cast<int>(hn::MaxLanes(d))) {
    const auto u = hn::Load(d, batch.baseU + i);
    const auto v = hn::Load(d, batch.baseV + i);
    const auto extent = hn::Load(d, batch.extent + i);
    // How far samples of so many pixels can move from the middle's without leaving the frame. If
    // negative, by how much they lie outside already; a sample that starts at -1 touches the frame.
    const auto room = [&](int columns, int rows) HWY_ATTR {
      const auto right = hn::Set(d, sizeThatMatters(frame.width) - columns);
      const auto below = hn::Set(d, sizeThatMatters(frame.height) - rows);
      return hn::Min(hn::Min(u, hn::Sub(right, u)), hn::Min(v, hn::Sub(below, v)));
    };
    const auto deep = hn::Not(hn::Lt(room(kColumnsRead<kBytes>, kRowsRead<kBytes>), extent));
    const auto beyond = hn::Lt(room(2, 2), hn::Sub(hn::Set(d, -1), extent));
    places.deep |= bitsOf(d, deep) << i;
    places.beyond |= bitsOf(d, beyond) << i;
  }
  return places;
}

// The samples of pixels k ... of a block that lies deep inside the frame.
template <int kBytes>
HWY_INLINE Samples samplesInside(const images::Frame& frame, const SampledBlock& block,
                                 std::ptrdiff_t k) {
  const std::ptrdiff_t stride = block.stride;
  return {frame.pixels + ((std::ptrdiff_t{frame.height} - 1 - block.baseV) * stride +
                          std::ptrdiff_t{block.baseU} * kBytes),
          stride, block.isUpwards ? kRowsAhead * stride : -kRowsAhead * stride,
          hn::Load(D16(), block.positions->u + k), hn::Load(D16(), block.positions->v + k)};
}

// The same anywhere. Addresses start from (baseU, baseV) or, if that lies outside the frame, the
// nearest pixel in it, so that 32 bits hold the offset of every position in the frame. Positions
// outside give any address.
template <int kBytes>
HWY_INLINE Samples samplesAt(const images::Frame& frame, const SampledBlock& block,
                             std::ptrdiff_t k) {
  SampledBlock nearest = block;
  nearest.baseU = std::clamp(block.baseU, 0, frame.width - 1);
  nearest.baseV = std::clamp(block.baseV, 0, frame.height - 1);
  Samples samples = samplesInside<kBytes>(frame, nearest, k);
  const auto moved = [](V16 position, int pixels)
                         HWY_ATTR { return hn::Sub(position, broadcast16(kFractions * pixels)); };
  samples.u = moved(samples.u, nearest.baseU - block.baseU);
  samples.v = moved(samples.v, nearest.baseV - block.baseV);
  return samples;
}

template <int kBytes, bool kMasked>
HWY_INLINE void sampleInside(const Samples& samples, V16 shown, bool windows, bool isLast,
                             unsigned char* pixels) {
  if constexpr (kBytes == 1) {
    V16 values;
    if (HWY_UNLIKELY(!windows || !sampleWindows(samples, values))) {
      values = sampleScattered(samples);
    }
    storeGrey(kMasked ? hn::And(values, shown) : values, pixels);
  } else {
    const ColourValues values = sampleColour<kBytes, kMasked>(samples, shown);
    if (kBytes == 3) {
      storeTriples(values, pixels, isLast);
    } else {
      storeQuads(values, pixels);
    }
  }
}

HWY_INLINE void storeMask(V16 shown, unsigned char* mask) {
  const hn::Rebind<std::int8_t, D16> d;
  hn::StoreU(hn::DemoteTo(d, hn::Not(shown)), d, reinterpret_cast<std::int8_t*>(mask));
}

// One by one, the samples that lie partly in the frame or too close to its end.
template <int kBytes>
HWY_INLINE void sampleTouching(const images::Frame& frame, const SampledBlock& block,
                               std::ptrdiff_t k, hn::Mask<D16> which) {
  alignas(64) std::int16_t chosen[kWide];
  hn::Store(hn::VecFromMask(D16(), which), D16(), chosen);
  for (std::ptrdiff_t i = 0; i < kWide; ++i) {
    if (chosen[i] != 0) {
      const int u = kFractions * block.baseU + block.positions->u[k + i];
      const int v = kFractions * block.baseV + block.positions->v[k + i];
      sampleOne(frame, u, v, block.pixels + (k + i) * kBytes);
      if (block.mask != nullptr) {
        block.mask[k + i] = validityOfOne(frame, u, v);
      }
    }
  }
}

// kWide pixels of a block at the frame's border. Samples that are read safely are computed
// together; the others take the place of one of them meanwhile.
template <int kBytes>
HWY_NOINLINE void sampleBorder(const images::Frame& frame, const SampledBlock& block,
                               std::ptrdiff_t k) {
  constexpr int kColumns = kBytes == 1 ? kScatteredColumns : kColumnsRead<kBytes>;
  const D16 d;
  Samples samples = samplesAt<kBytes>(frame, block, k);
  V16 shown = block.edge ? hn::Load(d, block.positions->shown + k) : broadcast16(-1);
  const V16 x = wholePixels(hn::Load(d, block.positions->u + k));
  const V16 y = wholePixels(hn::Load(d, block.positions->v + k));
  const int baseU = block.baseU;
  const int baseV = block.baseV;
  const int width = sizeThatMatters(frame.width);
  const int height = sizeThatMatters(frame.height);
  const auto wanted = hn::Ne(shown, hn::Zero(d));
  const auto safe =
      hn::And(wanted, between(x, -baseU, width - kColumns - baseU, y, -baseV, height - 2 - baseV));
  const auto touching =
      hn::And(wanted, between(x, -1 - baseU, width - 1 - baseU, y, -1 - baseV, height - 1 - baseV));
  shown = hn::VecFromMask(d, safe);
  alignas(64) std::int16_t lanes[kWide];
  hn::Store(shown, d, lanes);
  const auto first = std::find(lanes, lanes + kWide, -1) - lanes;
  if (first < kWide) {
    alignas(64) std::int16_t u[kWide];
    alignas(64) std::int16_t v[kWide];
    hn::Store(samples.u, d, u);
    hn::Store(samples.v, d, v);
    samples.u = hn::IfThenElse(safe, samples.u, broadcast16(u[first]));
    samples.v = hn::IfThenElse(safe, samples.v, broadcast16(v[first]));
    sampleInside<kBytes, true>(samples, shown, false, block.isLast && k + kWide == kBlock,
                               block.pixels + k * kBytes);
  } else {
    std::memset(block.pixels + k * kBytes, 0, static_cast<std::size_t>(kWide * kBytes));
  }
  if (block.mask != nullptr) {
    storeMask(shown, block.mask + k);
  }
  sampleTouching<kBytes>(frame, block, k, hn::AndNot(safe, touching));
}

// kWide pixels for which nothing outside the frame is read.
template <int kBytes, bool kMasked>
HWY_INLINE void sampleSafely(const Samples& samples, const SampledBlock& block, std::ptrdiff_t k,
                             bool windows) {
  const V16 shown = kMasked ? hn::Load(D16(), block.positions->shown + k) : broadcast16(-1);
  sampleInside<kBytes, kMasked>(samples, shown, windows, block.isLast && k + kWide == kBlock,
                                block.pixels + k * kBytes);
  if (block.mask == nullptr) {
    return;
  }
  if (kMasked) {
    storeMask(shown, block.mask + k);
  } else {
    std::memset(block.mask + k, 0, kWide);
  }
}

// Whether everything that is read for kWide pixels lies in the frame.
template <int kBytes>
HWY_NOINLINE bool isInside(const images::Frame& frame, const SampledBlock& block,
                           std::ptrdiff_t k) {
  const V16 x = wholePixels(hn::Load(D16(), block.positions->u + k));
  const V16 y = wholePixels(hn::Load(D16(), block.positions->v + k));
  return hn::AllTrue(
      D16(),
      between(x, -block.baseU, sizeThatMatters(frame.width) - kColumnsRead<kBytes> - block.baseU, y,
              -block.baseV, sizeThatMatters(frame.height) - kRowsRead<kBytes> - block.baseV));
}

// A block that may lie partly outside the frame or show only some of its pixels.
template <int kBytes, bool kMasked>
HWY_NOINLINE void sampleAnywhere(const images::Frame& frame, const SampledBlock& block) {
  for (std::ptrdiff_t k = 0; k < kBlock; k += kWide) {
    if (isInside<kBytes>(frame, block, k)) {
      sampleSafely<kBytes, kMasked>(samplesAt<kBytes>(frame, block, k), block, k, true);
    } else {
      sampleBorder<kBytes>(frame, block, k);
    }
  }
}

template <int kBytes>
HWY_INLINE void sampleBlock(const images::Frame& frame, const SampledBlock& block) {
  if (HWY_LIKELY(block.deep && !block.edge)) {
    const bool windows = kBytes == 1 && mayFitWindows(*block.positions);
    HWY_UNROLL(4)
    for (std::ptrdiff_t k = 0; k < kBlock; k += kWide) {
      sampleSafely<kBytes, false>(samplesInside<kBytes>(frame, block, k), block, k, windows);
    }
  } else if (block.edge) {
    sampleAnywhere<kBytes, true>(frame, block);
  } else {
    sampleAnywhere<kBytes, false>(frame, block);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // FISHEYE_HAS_BLOCKS
#endif  // per-target include guard
