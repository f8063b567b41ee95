#include "stitching/blended_run.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "stitching/blended_run.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::stitching {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;
using Integers = hn::RebindToSigned<Floats>;
using Bytes = hn::Rebind<std::uint8_t, Floats>;
using Pack = hn::Vec<Floats>;

HWY_INLINE Pack loadBytes(const unsigned char* from) {
  return hn::ConvertTo(Floats(), hn::PromoteTo(Integers(), hn::LoadU(Bytes(), from)));
}

// The pixel of lane i is (i + lane) / kBytes; the product is exact for as many bytes as vectors
// have.
template <int kBytes>
HWY_INLINE hn::Vec<Integers> pixelOfByte(int i) {
  constexpr std::int32_t kReciprocal = ((1 << 16) + kBytes - 1) / kBytes;
  const Integers d;
  return hn::ShiftRight<16>(hn::Mul(hn::Iota(d, i), hn::Set(d, kReciprocal)));
}

// As many pixels as a vector has lanes; `ahead` is the first one's distance to the seam.
template <int kBytes>
HWY_INLINE void blendPack(std::int32_t ahead, Pack length, const unsigned char* first,
                          const unsigned char* second, unsigned char* out) {
  const Floats d;
  const Integers di;
  const Pack one = hn::Set(d, 1.0F);
  const int lanes = static_cast<int>(hn::Lanes(d));
  for (int i = 0; i < kBytes * lanes; i += lanes) {
    const auto distance = hn::Sub(hn::Set(di, ahead), pixelOfByte<kBytes>(i));
    const Pack t = hn::Div(hn::ConvertTo(d, distance), length);
    const auto a = hn::ConvertTo(di, hn::Mul(loadBytes(first + i), t));
    const auto b = hn::ConvertTo(di, hn::Mul(loadBytes(second + i), hn::Sub(one, t)));
    hn::StoreU(hn::DemoteTo(Bytes(), hn::Add(a, b)), Bytes(), out + i);
  }
}

// The last pixels, which do not fill a vector, take a detour over buffers that do.
template <int kBytes>
HWY_NOINLINE void blendLast(std::int32_t ahead, Pack length, std::int32_t count,
                            const unsigned char* first, const unsigned char* second,
                            unsigned char* out) {
  constexpr std::size_t kMostBytes = hn::MaxLanes(Floats()) * kBytes;
  unsigned char a[kMostBytes] = {};
  unsigned char b[kMostBytes] = {};
  unsigned char blended[kMostBytes];
  const std::size_t size = static_cast<std::size_t>(count) * kBytes;
  std::memcpy(a, first, size);
  std::memcpy(b, second, size);
  blendPack<kBytes>(ahead, length, a, b, blended);
  std::memcpy(out, blended, size);
}

template <int kBytes>
HWY_INLINE void blendAlongRamp(std::int32_t ahead, std::int32_t length, std::int32_t count,
                               const unsigned char* first, const unsigned char* second,
                               unsigned char* out) {
  const Floats d;
  const Pack whole = hn::Set(d, static_cast<float>(length));
  const auto lanes = static_cast<std::int32_t>(hn::Lanes(d));
  std::int32_t k = 0;
  for (; lanes <= count - k; k += lanes) {
    const std::size_t offset = static_cast<std::size_t>(k) * kBytes;
    blendPack<kBytes>(ahead - k, whole, first + offset, second + offset, out + offset);
  }
  if (k < count) {
    const std::size_t offset = static_cast<std::size_t>(k) * kBytes;
    blendLast<kBytes>(ahead - k, whole, count - k, first + offset, second + offset, out + offset);
  }
}

void BlendRun(const Ramp& ramp, std::int32_t column, std::int32_t count, int bytes,
              const unsigned char* first, const unsigned char* second, unsigned char* out) {
  const std::int32_t ahead = ramp.seam - column;
  switch (bytes) {
    case 1:
      blendAlongRamp<1>(ahead, ramp.length, count, first, second, out);
      break;
    case 3:
      blendAlongRamp<3>(ahead, ramp.length, count, first, second, out);
      break;
    default:
      blendAlongRamp<4>(ahead, ramp.length, count, first, second, out);
      break;
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::stitching
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fisheye_calibration::stitching {

HWY_EXPORT(BlendRun);

void blendRun(const Ramp& ramp, std::int32_t column, std::int32_t count, int bytes,
              const unsigned char* first, const unsigned char* second, unsigned char* out) {
  if (ramp.length > 0) {
    HWY_DYNAMIC_DISPATCH(BlendRun)(ramp, column, count, bytes, first, second, out);
    return;
  }
  const auto mean = [](unsigned char a, unsigned char b) {
    return static_cast<unsigned char>((a + b) / 2);
  };
  std::transform(first, first + static_cast<std::ptrdiff_t>(count) * bytes, second, out, mean);
}

}  // namespace fisheye_calibration::stitching
#endif  // HWY_ONCE
