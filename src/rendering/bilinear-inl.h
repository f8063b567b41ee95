// Bilinear interpolation in fixed point, and where the pixels of samples are. Compiled once per
// instruction set.
//
// A sample at (u, v), in 1/32 pixel, mixes the four pixels P00, P01 (right), P10 (below), P11 that
// begin at (sx, sy) = (u >> 5, v >> 5):
//   ((32 - b) ((32 - a) P00 + a P01) + b ((32 - a) P10 + a P11) + 512)/1024, a = u & 31, b = v &
//   31,
// rounded down: byte for byte the remap of the image library, version 4.9, with fixed-point maps.
#if defined(FISHEYE_BILINEAR_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_BILINEAR_INL_H_
#undef FISHEYE_BILINEAR_INL_H_
#else
#define FISHEYE_BILINEAR_INL_H_
#endif

#include <hwy/cache_control.h>

#include "images/view.h"
#include "rendering/byte_products-inl.h"

#if FISHEYE_HAS_BLOCKS

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

// Rows that are fetched into the cache ahead of their use, because the next row of blocks will show
// them.
constexpr std::ptrdiff_t kRowsAhead = 4;

// The samples of kWide pixels of a block.
struct Samples {
  const unsigned char* origin;  // the raw pixel that (u, v) are relative to
  std::ptrdiff_t stride;        // bytes of a row; the next lower row precedes it in the buffer
  std::ptrdiff_t ahead;         // from a pixel to one that the next row of blocks will show
  V16 u, v;

  HWY_INLINE const unsigned char* at(std::ptrdiff_t offset) const { return origin + offset; }
};

HWY_INLINE V16 wholePixels(V16 position) { return hn::ShiftRight<kFractionBits>(position); }

// Bytes (32 - a, a) in every lane.
HWY_INLINE V16 columnWeights(V16 u) {
  const V16 a = hn::And(u, broadcast16(kFractions - 1));
  return hn::Add(hn::ShiftLeft<8>(a), hn::Sub(broadcast16(kFractions), a));
}

// 512 b
HWY_INLINE V16 rowWeights(V16 v) {
  return hn::And(hn::ShiftLeft<9>(v), broadcast16((kFractions - 1) << 9));
}

// From rows mixed along x, at most 8160 each. The division by 1024 is that of
// (top + floor(b (bottom - top)/32) + 16)/32, and the floor is the high half of a 32-bit product:
// 4 (bottom - top) fits 16 bits, and so does 512 b.
HWY_INLINE V16 mixRows(V16 top, V16 bottom, V16 weights) {
  const V16 lean = hn::MulHigh(hn::ShiftLeft<2>(hn::Sub(bottom, top)), weights);
  return hn::ShiftRight<5>(hn::Add(hn::Add(top, broadcast16(16)), lean));
}

// Offsets in bytes of P00, of half of the pixels of every part.
template <int kBytes>
HWY_INLINE V32 offsetsOf(V32 sx, V32 sy, std::ptrdiff_t stride) {
  const V32 rows = hn::Mul(sy, hn::Set(D32(), static_cast<std::int32_t>(stride)));
  if (kBytes == 1) {
    return hn::Sub(sx, rows);
  }
  if (kBytes == 4) {
    return hn::Sub(hn::ShiftLeft<2>(sx), rows);
  }
  return hn::Sub(hn::Add(sx, hn::Add(sx, sx)), rows);
}

struct SampleOffsets {
  alignas(64) std::int32_t half[2][kLanes];  // lower and upper halves of the parts
};

template <int kBytes>
HWY_INLINE void locate(const Samples& samples, SampleOffsets& offsets) {
  const V16 sx = wholePixels(samples.u);
  const V16 sy = wholePixels(samples.v);
  hn::Store(offsetsOf<kBytes>(lowerHalves(sx), lowerHalves(sy), samples.stride), D32(),
            offsets.half[0]);
  hn::Store(offsetsOf<kBytes>(upperHalves(sx), upperHalves(sy), samples.stride), D32(),
            offsets.half[1]);
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // FISHEYE_HAS_BLOCKS
#endif  // per-target include guard
