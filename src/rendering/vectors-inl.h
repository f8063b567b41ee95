// The vectors that blocks are computed in. Compiled once per instruction set.
#include <hwy/highway.h>

#if defined(FISHEYE_VECTORS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_VECTORS_INL_H_
#undef FISHEYE_VECTORS_INL_H_
#else
#define FISHEYE_VECTORS_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "rendering/block_batch.h"

// Blocks are computed in vectors of a known number of bytes, the lowest first. Without those, or
// without doubles, every pixel is computed as the plain steps do.
#undef FISHEYE_HAS_BLOCKS
#if HWY_TARGET == HWY_SCALAR || HWY_HAVE_SCALABLE || !HWY_HAVE_FLOAT64 ||  \
    (defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__) || \
    (HWY_TARGET & (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)) != 0
#define FISHEYE_HAS_BLOCKS 0
#else
#define FISHEYE_HAS_BLOCKS 1
#endif

#if FISHEYE_HAS_BLOCKS

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using DF = hn::CappedTag<float, 16>;
using D32 = hn::Rebind<std::int32_t, DF>;
using DU32 = hn::Rebind<std::uint32_t, DF>;
using D16 = hn::Repartition<std::int16_t, DF>;
using DU8 = hn::Repartition<std::uint8_t, DF>;
using VF = hn::Vec<DF>;
using V32 = hn::Vec<D32>;
using V16 = hn::Vec<D16>;
using VU8 = hn::Vec<DU8>;

constexpr auto kLanes = static_cast<std::ptrdiff_t>(hn::MaxLanes(DF()));
constexpr std::ptrdiff_t kWide = 2 * kLanes;          // 16-bit lanes
constexpr std::ptrdiff_t kVectors = kBlock / kLanes;  // of floats per block
constexpr std::ptrdiff_t kParts =
    kWide / 8;  // 16-byte parts per vector, of 8 pixels in 16-bit lanes

HWY_INLINE VF broadcast(float x) { return hn::Set(DF(), x); }
HWY_INLINE V16 broadcast16(int x) { return hn::Set(D16(), static_cast<std::int16_t>(x)); }

// One bit per lane, of at most 8.
template <class D>
HWY_INLINE unsigned bitsOf(D d, hn::Mask<D> mask) {
  std::uint8_t bits[8] = {};
  hn::StoreMaskBits(d, mask, bits);
  return bits[0];
}

// Joins kParts vectors of 16 bytes, each from its own address.
using Part = hn::Full128<std::uint8_t>;

HWY_INLINE VU8 join(const hn::Vec<Part>* parts) {
#if HWY_MAX_BYTES >= 64
  const hn::Full256<std::uint8_t> d256;
  return hn::Combine(DU8(), hn::Combine(d256, parts[3], parts[2]),
                     hn::Combine(d256, parts[1], parts[0]));
#elif HWY_MAX_BYTES == 32
  return hn::Combine(DU8(), parts[1], parts[0]);
#else
  return parts[0];
#endif
}

// Half of the lanes of each part, sign-extended to 32 bits: pixels 0 ... 3 or 4 ... 7 of every 8.
HWY_INLINE V32 lowerHalves(V16 x) {
  return hn::ShiftRight<16>(hn::BitCast(D32(), hn::InterleaveLower(D16(), x, x)));
}
HWY_INLINE V32 upperHalves(V16 x) {
  return hn::ShiftRight<16>(hn::BitCast(D32(), hn::InterleaveUpper(D16(), x, x)));
}
// The reverse: lower and upper halves of each part, in order.
HWY_INLINE V16 fromHalves(V32 lower, V32 upper) {
  return hn::ReorderDemote2To(D16(), lower, upper);
}

// The low halves of 32-bit lanes side by side: a0 b0 a1 b1 ...
HWY_INLINE V16 sideBySide(V32 a, V32 b) {
  const D16 d;
  return hn::OddEven(hn::BitCast(d, hn::ShiftLeft<16>(b)), hn::BitCast(d, a));
}

// Pixel offsets from a block's middle, in the order in which sideBySide puts them right: vectors
// hold the even and the odd ones of kWide pixels in turn.
struct LaneOffsets {
  alignas(64) float k[kBlock] = {};
  alignas(64) float square[kBlock] = {};
  alignas(64) int pixel[kBlock] = {};
  constexpr LaneOffsets() {
    for (std::ptrdiff_t i = 0; i < kBlock; ++i) {
      pixel[i] = static_cast<int>(i / kWide * kWide + 2 * (i % kLanes) + i / kLanes % 2);
      k[i] = static_cast<float>(pixel[i]) - 0.5F * kBlock;
      square[i] = k[i] * k[i];
    }
  }
};
constexpr LaneOffsets kOffsets;

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // FISHEYE_HAS_BLOCKS
#endif  // per-target include guard
