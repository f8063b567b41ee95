// Samples of frames with one byte per pixel. Compiled once per instruction set.
#if defined(FISHEYE_GREY_SAMPLES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_GREY_SAMPLES_INL_H_
#undef FISHEYE_GREY_SAMPLES_INL_H_
#else
#define FISHEYE_GREY_SAMPLES_INL_H_
#endif

#include <cstring>

#include "rendering/bilinear-inl.h"

#if FISHEYE_HAS_BLOCKS

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

// The raw pixels that eight neighbouring samples need usually lie in a window of 16 columns and 3
// or 4 rows, which is loaded as a whole.
constexpr int kWindowColumns = 16;
constexpr int kWindowRows = 4;

// The least of every 8 lanes, in all of them.
HWY_INLINE V16 leastOfPart(V16 x) {
  const D16 d;
  x = hn::Min(x, hn::Reverse8(d, x));
  x = hn::Min(x, hn::Reverse4(d, x));
  return hn::Min(x, hn::Reverse2(d, x));
}

struct Windows {
  const unsigned char* from[kParts];  // upper left pixels

  HWY_INLINE VU8 row(std::ptrdiff_t offset) const {
    hn::Vec<Part> parts[kParts];
    for (std::ptrdiff_t j = 0; j < kParts; ++j) {
      parts[j] = hn::LoadU(Part(), from[j] + offset);
    }
    return join(parts);
  }
};

HWY_INLINE Windows windowsOf(const Samples& samples, V16 leastX, V16 leastY) {
  const D16 d;
  alignas(64) std::int16_t x[kWide];
  alignas(64) std::int16_t y[kWide];
  hn::Store(leastX, d, x);
  hn::Store(leastY, d, y);
  Windows windows;
  HWY_UNROLL(4)
  for (std::ptrdiff_t j = 0; j < kParts; ++j) {
    windows.from[j] = samples.at(x[8 * j] - y[8 * j] * samples.stride);
    hwy::Prefetch(windows.from[j] + samples.ahead);
  }
  return windows;
}

// Samples that lie in windows, which must lie in the frame. Returns false if some do not.
HWY_INLINE bool sampleWindows(const Samples& samples, V16& values) {
  const D16 d;
  const DU8 du8;
  const V16 sx = wholePixels(samples.u);
  const V16 sy = wholePixels(samples.v);
  const V16 leastX = leastOfPart(sx);
  const V16 leastY = leastOfPart(sy);
  const Windows windows = windowsOf(samples, leastX, leastY);
  const V16 x = hn::Sub(sx, leastX);
  const V16 y = hn::Sub(sy, leastY);
  const V16 one = broadcast16(1);
  const auto wide = hn::Gt(x, broadcast16(kWindowColumns - 2));
  // Bytes (x, x + 1) in every lane.
  const VU8 columns =
      hn::BitCast(du8, hn::Add(hn::ShiftLeft<8>(x), hn::Add(x, broadcast16(0x0100))));
  const VU8 weights = hn::BitCast(du8, columnWeights(samples.u));
  const auto rowAt = [&](int row) HWY_ATTR {
    return sumsOfPairs(hn::TableLookupBytes(windows.row(-row * samples.stride), columns), weights);
  };
  const V16 r0 = rowAt(0);
  const V16 r1 = rowAt(1);
  const V16 r2 = rowAt(2);
  const auto lower = hn::Eq(y, one);
  V16 top = hn::IfThenElse(lower, r1, r0);
  V16 bottom = hn::IfThenElse(lower, r2, r1);
  const auto lowest = hn::Gt(y, one);
  if (HWY_UNLIKELY(!hn::AllFalse(d, hn::Or(wide, lowest)))) {
    if (!hn::AllFalse(d, hn::Or(wide, hn::Gt(y, broadcast16(kWindowRows - 2))))) {
      return false;
    }
    top = hn::IfThenElse(lowest, r2, top);
    bottom = hn::IfThenElse(lowest, rowAt(3), bottom);
  }
  values = mixRows(top, bottom, rowWeights(samples.v));
  return true;
}

// Bytes that are read from P00 and P10 on, of which two are used.
constexpr int kScatteredColumns = 4;

// Bytes P00, P01, P10, P11 of samples at these offsets, one in each 32-bit lane.
HWY_INLINE V16 quadsAt(const Samples& samples, const std::int32_t* offsets) {
  const D32 d;
  alignas(64) std::int32_t top[kLanes];
  alignas(64) std::int32_t bottom[kLanes];
  for (int k = 0; k < kLanes; ++k) {
    std::memcpy(&top[k], samples.at(offsets[k]), kScatteredColumns);
    std::memcpy(&bottom[k], samples.at(offsets[k] - samples.stride), kScatteredColumns);
  }
  return sideBySide(hn::Load(d, top), hn::Load(d, bottom));
}

// Half of the samples of every part, wherever in the frame they lie.
HWY_INLINE V32 mixQuads(const Samples& samples, const std::int32_t* offsets, V16 columns,
                        V16 rows) {
  const D32 d;
  // In every 32-bit lane: the upper row in the low half, the lower row in the high one.
  const V16 mixed =
      sumsOfPairs(hn::BitCast(DU8(), quadsAt(samples, offsets)), hn::BitCast(DU8(), columns));
  const V16 bottom = hn::BitCast(D16(), hn::ShiftRight<16>(hn::BitCast(d, mixed)));
  return hn::And(hn::BitCast(d, mixRows(mixed, bottom, rows)), hn::Set(d, 0xFF));
}

HWY_NOINLINE inline V16 sampleScattered(const Samples& samples) {
  const D16 d;
  SampleOffsets offsets;
  locate<1>(samples, offsets);
  const V16 a = columnWeights(samples.u);
  const V16 b = rowWeights(samples.v);
  return fromHalves(mixQuads(samples, offsets.half[0], hn::InterleaveLower(d, a, a),
                             hn::InterleaveLower(d, b, b)),
                    mixQuads(samples, offsets.half[1], hn::InterleaveUpper(d, a, a),
                             hn::InterleaveUpper(d, b, b)));
}

HWY_INLINE void storeGrey(V16 values, unsigned char* pixels) {
  const hn::Rebind<std::uint8_t, D16> d;
  hn::StoreU(hn::DemoteTo(d, values), d, pixels);
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // FISHEYE_HAS_BLOCKS
#endif  // per-target include guard
