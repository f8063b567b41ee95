// The two operations on bytes that need the machine's own instructions, and portable twins, which
// give the same results. Compiled once per instruction set.
#if defined(FISHEYE_BYTE_PRODUCTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_BYTE_PRODUCTS_INL_H_
#undef FISHEYE_BYTE_PRODUCTS_INL_H_
#else
#define FISHEYE_BYTE_PRODUCTS_INL_H_
#endif

#include "rendering/vectors-inl.h"

#if FISHEYE_HAS_BLOCKS

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

// x0 w0 + x1 w1 of neighbouring bytes, as 16-bit sums; weights up to 127, sums up to 32767.
HWY_INLINE V16 sumsOfPairsPortable(VU8 x, VU8 w) {
  const D16 d;
  const V16 low = hn::Set(d, 0xFF);
  const V16 even = hn::Mul(hn::And(hn::BitCast(d, x), low), hn::And(hn::BitCast(d, w), low));
  const hn::Repartition<std::uint16_t, DU8> du;
  const auto high = [&](VU8 v)
                        HWY_ATTR { return hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(du, v))); };
  return hn::Add(even, hn::Mul(high(x), high(w)));
}

// The lanes of each part of `a`, then those of the same part of `b`, from 0 ... 255 to bytes.
HWY_INLINE VU8 narrowPortable(V16 a, V16 b) {
  // Bytes 0, 2 ... 14 of each part, in its lower or upper half.
  alignas(16) static constexpr std::uint8_t kLower[16] = {
      0, 2, 4, 6, 8, 10, 12, 14, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
  alignas(16) static constexpr std::uint8_t kUpper[16] = {
      0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0, 2, 4, 6, 8, 10, 12, 14};
  const DU8 d;
  return hn::Or(hn::TableLookupBytesOr0(hn::BitCast(d, a), hn::LoadDup128(d, kLower)),
                hn::TableLookupBytesOr0(hn::BitCast(d, b), hn::LoadDup128(d, kUpper)));
}

#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSE4 && HWY_MAX_BYTES == 16

HWY_INLINE V16 sumsOfPairs(VU8 x, VU8 w) { return V16{_mm_maddubs_epi16(x.raw, w.raw)}; }
HWY_INLINE VU8 narrow(V16 a, V16 b) { return VU8{_mm_packus_epi16(a.raw, b.raw)}; }

#elif HWY_ARCH_X86 && HWY_TARGET <= HWY_SSE4 && HWY_MAX_BYTES == 32

HWY_INLINE V16 sumsOfPairs(VU8 x, VU8 w) { return V16{_mm256_maddubs_epi16(x.raw, w.raw)}; }
HWY_INLINE VU8 narrow(V16 a, V16 b) { return VU8{_mm256_packus_epi16(a.raw, b.raw)}; }

#elif HWY_ARCH_X86 && HWY_TARGET <= HWY_SSE4 && HWY_MAX_BYTES == 64

HWY_INLINE V16 sumsOfPairs(VU8 x, VU8 w) { return V16{_mm512_maddubs_epi16(x.raw, w.raw)}; }
HWY_INLINE VU8 narrow(V16 a, V16 b) { return VU8{_mm512_packus_epi16(a.raw, b.raw)}; }

#else

HWY_INLINE V16 sumsOfPairs(VU8 x, VU8 w) { return sumsOfPairsPortable(x, w); }
HWY_INLINE VU8 narrow(V16 a, V16 b) { return narrowPortable(a, b); }

#endif

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // FISHEYE_HAS_BLOCKS
#endif  // per-target include guard
