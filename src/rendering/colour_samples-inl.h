// Samples of frames with three or four bytes per pixel. Compiled once per instruction set.
#if defined(FISHEYE_COLOUR_SAMPLES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_COLOUR_SAMPLES_INL_H_
#undef FISHEYE_COLOUR_SAMPLES_INL_H_
#else
#define FISHEYE_COLOUR_SAMPLES_INL_H_
#endif

#include <cstring>

#include "rendering/bilinear-inl.h"

#if FISHEYE_HAS_BLOCKS

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

// Bytes read from P00 on, of which 2 kBytes are used.
constexpr int kPairBytes = 8;

// Groups of two pixels of every part: repeats the 16-bit lane of each pixel for its four bytes.
alignas(16) constexpr std::uint8_t kLaneOfPixel[4][16] = {
    {0, 1, 0, 1, 0, 1, 0, 1, 2, 3, 2, 3, 2, 3, 2, 3},
    {4, 5, 4, 5, 4, 5, 4, 5, 6, 7, 6, 7, 6, 7, 6, 7},
    {8, 9, 8, 9, 8, 9, 8, 9, 10, 11, 10, 11, 10, 11, 10, 11},
    {12, 13, 12, 13, 12, 13, 12, 13, 14, 15, 14, 15, 14, 15, 14, 15}};
// Two neighbouring pixels, byte by byte side by side.
alignas(16) constexpr std::uint8_t kSidesOfTriples[16] = {0, 3,  1, 4,  2,  5,  6,  6,
                                                          8, 11, 9, 12, 10, 13, 14, 14};
alignas(16) constexpr std::uint8_t kSidesOfQuads[16] = {0, 4,  1, 5,  2,  6,  3,  7,
                                                        8, 12, 9, 13, 10, 14, 11, 15};
// Four pixels without their fourth bytes.
alignas(16) constexpr std::uint8_t kTriples[16] = {0,  1,  2,  4,  5,    6,    8,    9,
                                                   10, 12, 13, 14, 0x80, 0x80, 0x80, 0x80};

HWY_INLINE VU8 tableOf(const std::uint8_t* bytes) { return hn::LoadDup128(DU8(), bytes); }

// P00 and P01 of two samples per part; `shift` leads to the lower row.
HWY_INLINE VU8 loadPairs(const Samples& samples, const std::int32_t* offsets,
                         std::ptrdiff_t shift) {
  const hn::Half<Part> half;
  hn::Vec<Part> parts[kParts];
  HWY_UNROLL(4)
  for (std::ptrdiff_t j = 0; j < kParts; ++j) {
    const auto left = hn::LoadU(half, samples.at(offsets[4 * j] + shift));
    const auto right = hn::LoadU(half, samples.at(offsets[4 * j + 1] + shift));
    parts[j] = hn::Combine(Part(), right, left);
  }
  return join(parts);
}

// Four bytes per pixel: 4 pixels per part in `lower`, the other 4 in `upper`.
struct ColourValues {
  VU8 lower, upper;
};

// Samples wherever in the frame they lie. Pixels whose lane of `shown` is 0 become 0.
template <int kBytes, bool kMasked>
HWY_INLINE ColourValues sampleColour(const Samples& samples, V16 shown) {
  const DU8 du8;
  const D16 d;
  SampleOffsets offsets;
  locate<kBytes>(samples, offsets);
  for (std::ptrdiff_t j = 0; j < kParts; ++j) {
    hwy::Prefetch(samples.at(offsets.half[0][4 * j] + samples.ahead));
  }
  const VU8 columns = hn::BitCast(du8, columnWeights(samples.u));
  const VU8 rows = hn::BitCast(du8, rowWeights(samples.v));
  const VU8 sides = tableOf(kBytes == 3 ? kSidesOfTriples : kSidesOfQuads);
  V16 mixed[4];
  HWY_UNROLL(4)
  for (std::ptrdiff_t g = 0; g < 4; ++g) {
    const std::int32_t* const pair = offsets.half[g / 2] + 2 * (g % 2);
    const VU8 lanes = tableOf(kLaneOfPixel[g]);
    const VU8 a = hn::TableLookupBytes(columns, lanes);
    const V16 b = hn::BitCast(d, hn::TableLookupBytes(rows, lanes));
    const V16 top = sumsOfPairs(hn::TableLookupBytes(loadPairs(samples, pair, 0), sides), a);
    const V16 bottom =
        sumsOfPairs(hn::TableLookupBytes(loadPairs(samples, pair, -samples.stride), sides), a);
    mixed[g] = mixRows(top, bottom, b);
    if (kMasked) {
      mixed[g] =
          hn::And(mixed[g], hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(du8, shown), lanes)));
    }
  }
  return {narrow(mixed[0], mixed[1]), narrow(mixed[2], mixed[3])};
}

HWY_INLINE void storeQuads(const ColourValues& values, unsigned char* pixels) {
  alignas(64) std::uint8_t lower[hn::MaxLanes(DU8())];
  alignas(64) std::uint8_t upper[hn::MaxLanes(DU8())];
  hn::Store(values.lower, DU8(), lower);
  hn::Store(values.upper, DU8(), upper);
  for (std::ptrdiff_t j = 0; j < kParts; ++j) {
    std::memcpy(pixels + 32 * j, lower + 16 * j, 16);
    std::memcpy(pixels + 32 * j + 16, upper + 16 * j, 16);
  }
}

// Each store writes four bytes too many, which the next one overwrites. `isLast`: none follows.
HWY_INLINE void storeTriples(const ColourValues& values, unsigned char* pixels, bool isLast) {
  alignas(64) std::uint8_t lower[hn::MaxLanes(DU8())];
  alignas(64) std::uint8_t upper[hn::MaxLanes(DU8())];
  hn::Store(hn::TableLookupBytesOr0(values.lower, tableOf(kTriples)), DU8(), lower);
  hn::Store(hn::TableLookupBytesOr0(values.upper, tableOf(kTriples)), DU8(), upper);
  for (std::ptrdiff_t j = 0; j < kParts; ++j) {
    std::memcpy(pixels + 24 * j, lower + 16 * j, 16);
    if (isLast && j + 1 == kParts) {
      std::memcpy(pixels + 24 * j + 12, upper + 16 * j, 12);
    } else {
      std::memcpy(pixels + 24 * j + 12, upper + 16 * j, 16);
    }
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // FISHEYE_HAS_BLOCKS
#endif  // per-target include guard
