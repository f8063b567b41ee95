#include "rendering/bilinear_sampler.h"

#include <algorithm>
#include <cstring>

#include "images/pixel_format.h"
#include "rendering/one_sample.h"
#include "rendering/run.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rendering/bilinear_sampler.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR  // no vectors of bytes

void SampleRun(const images::Frame& frame, const int* u, const int* v, std::size_t count,
               unsigned char* pixels, unsigned char* mask) {
  for (std::size_t k = 0; k < count; ++k) {
    sampleOne(frame, u[k], v[k], pixels + k * static_cast<std::size_t>(frame.bytes));
    if (mask != nullptr) {
      mask[k] = validityOfOne(frame, u[k], v[k]);
    }
  }
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using D32 = hn::CappedTag<std::uint32_t, kRun>;
using DI32 = hn::Rebind<std::int32_t, D32>;
using DI16 = hn::Repartition<std::int16_t, D32>;
using V32 = hn::Vec<D32>;
using VI16 = hn::Vec<DI16>;

template <class Bits>
HWY_INLINE std::uint32_t loadBits(const unsigned char* p) {
  Bits value;
  std::memcpy(&value, p, sizeof(value));
  return value;
}

// Locations of a run's samples: the index of P00 in the buffer, in pixels.
struct Samples {
  HWY_ALIGN std::uint32_t index[kRun];
  HWY_ALIGN std::uint32_t inside[kRun];  // all ones where the four pixels lie in the frame, else 0
};

// Which kinds of samples occur in the run.
struct Found {
  bool any;     // some lie wholly in the frame
  bool all;     // all do
  bool border;  // some begin in the frame's last column or row
};

// The indices fit the lanes' 32-bit arithmetic.
HWY_INLINE Found locate(const images::Frame& frame, const int* u, const int* v, std::size_t count,
                        Samples& samples) {
  const DI32 d;
  const D32 du;
  const auto lastX = hn::Set(d, frame.width - 1);
  const auto lastY = hn::Set(d, frame.height - 1);
  const auto width = hn::Set(d, frame.width);
  const auto nowhere = hn::Set(d, kNowhere);
  const auto minusOne = hn::Set(d, -1);
  auto any = hn::Zero(d);
  auto all = minusOne;
  auto border = hn::Zero(d);
  for (std::size_t k = 0; k < count; k += hn::Lanes(d)) {
    const auto pu = hn::Load(d, u + k);
    const auto pv = hn::Load(d, v + k);
    const auto sx = hn::ShiftRight<16>(hn::ShiftLeft<11>(pu));
    const auto sy = hn::ShiftRight<16>(hn::ShiftLeft<11>(pv));
    const auto begins =
        hn::AndNot(hn::And(hn::Eq(pu, nowhere), hn::Eq(pv, nowhere)),
                   hn::And(hn::Gt(hn::Min(sx, sy), minusOne),
                           hn::And(hn::Not(hn::Gt(sx, lastX)), hn::Not(hn::Gt(sy, lastY)))));
    const auto inside =
        hn::VecFromMask(d, hn::And(begins, hn::And(hn::Lt(sx, lastX), hn::Lt(sy, lastY))));
    any = hn::Or(any, inside);
    all = hn::And(all, inside);
    border = hn::Or(border, hn::AndNot(inside, hn::VecFromMask(d, begins)));
    // Picture row sy is buffer row height - 1 - sy. Other samples read the start of the second
    // buffer row, which exists whenever a sample lies in the frame, and are masked later.
    const auto index = hn::Add(hn::Mul(hn::Sub(lastY, sy), width), sx);
    hn::Store(hn::BitCast(du, hn::IfVecThenElse(inside, index, width)), du, samples.index + k);
    hn::Store(hn::BitCast(du, inside), du, samples.inside + k);
  }
  return {!hn::AllTrue(d, hn::Eq(any, hn::Zero(d))), hn::AllTrue(d, hn::Eq(all, minusOne)),
          !hn::AllTrue(d, hn::Eq(border, hn::Zero(d)))};
}

// The weight in both halves of every 32-bit lane.
HWY_INLINE VI16 weightInBothHalves(const int* position) {
  const D32 d;
  const V32 weight =
      hn::And(hn::Load(d, reinterpret_cast<const std::uint32_t*>(position)), hn::Set(d, 31));
  return hn::BitCast(DI16(), hn::Or(weight, hn::ShiftLeft<16>(weight)));
}

// 32 left + a (right - left) in every 16-bit lane: at most 8160.
HWY_INLINE VI16 mixColumns(VI16 left, VI16 right, VI16 a) {
  return hn::Add(hn::ShiftLeft<5>(left), hn::Mul(hn::Sub(right, left), a));
}

// (32 top + b (bottom - top) + 512) / 1024 in every 16-bit lane, rounded down. With integers this
// is (top + floor(b (bottom - top)/32) + 16)/32, and the floor is the high half of a 32-bit
// product: 4 (bottom - top) fits 16 bits, and so does 512 b.
HWY_INLINE VI16 mixRows(VI16 top, VI16 bottom, VI16 b) {
  const VI16 lean = hn::MulHigh(hn::ShiftLeft<2>(hn::Sub(bottom, top)), hn::ShiftLeft<9>(b));
  return hn::ShiftRight<5>(hn::Add(hn::Add(top, lean), hn::Set(DI16(), 16)));
}

HWY_INLINE VI16 evenBytes(V32 x) {
  return hn::BitCast(DI16(), hn::And(x, hn::Set(D32(), 0x00FF00FF)));
}
HWY_INLINE VI16 oddBytes(V32 x) { return evenBytes(hn::ShiftRight<8>(x)); }

// One byte per pixel: the four pixels of a sample are gathered into one 32-bit lane.
HWY_INLINE void mixGrey(const images::Frame& frame, const int* u, const int* v, std::size_t count,
                        const Samples& samples, std::uint32_t* mixed) {
  const D32 d;
  const auto stride = static_cast<std::size_t>(frame.width);
  HWY_ALIGN std::uint32_t quads[kRun];
  for (std::size_t k = 0; k < count; ++k) {
    const unsigned char* p = frame.pixels + samples.index[k];
    quads[k] = loadBits<std::uint16_t>(p) | loadBits<std::uint16_t>(p - stride) << 16;
  }
  for (std::size_t k = 0; k < count; k += hn::Lanes(d)) {
    const V32 quad = hn::Load(d, quads + k);
    // Bytes P00 P01 P10 P11: the low half of a lane mixes the upper row, the high half the lower
    // one.
    const VI16 rows = mixColumns(evenBytes(quad), oddBytes(quad), weightInBothHalves(u + k));
    const VI16 bottom = hn::BitCast(DI16(), hn::ShiftRight<16>(hn::BitCast(d, rows)));
    const V32 value = hn::BitCast(d, mixRows(rows, bottom, weightInBothHalves(v + k)));
    hn::Store(hn::And(hn::And(value, hn::Set(d, 255)), hn::Load(d, samples.inside + k)), d,
              mixed + k);
  }
}

// Three or four bytes per pixel: one lane per pixel, channels 0 and 2 separate from 1 and 3.
template <std::size_t Bytes>
HWY_INLINE void mixColour(const images::Frame& frame, const int* u, const int* v, std::size_t count,
                          const Samples& samples, std::uint32_t* mixed) {
  const D32 d;
  const std::size_t stride = static_cast<std::size_t>(frame.width) * Bytes;
  // The right one of two three-byte pixels is read starting one byte early, so as not to read
  // beyond the frame, and then shifted by a byte.
  constexpr std::size_t kRight = Bytes == 3 ? 2 : 4;
  constexpr int kShift = Bytes == 3 ? 8 : 0;
  HWY_ALIGN std::uint32_t P00[kRun];
  HWY_ALIGN std::uint32_t P01[kRun];
  HWY_ALIGN std::uint32_t P10[kRun];
  HWY_ALIGN std::uint32_t P11[kRun];
  for (std::size_t k = 0; k < count; ++k) {
    const unsigned char* p = frame.pixels + samples.index[k] * Bytes;
    P00[k] = loadBits<std::uint32_t>(p);
    P01[k] = loadBits<std::uint32_t>(p + kRight);
    P10[k] = loadBits<std::uint32_t>(p - stride);
    P11[k] = loadBits<std::uint32_t>(p - stride + kRight);
  }
  for (std::size_t k = 0; k < count; k += hn::Lanes(d)) {
    const VI16 a = weightInBothHalves(u + k);
    const VI16 b = weightInBothHalves(v + k);
    const V32 p00 = hn::Load(d, P00 + k);
    const V32 p01 = hn::ShiftRight<kShift>(hn::Load(d, P01 + k));
    const V32 p10 = hn::Load(d, P10 + k);
    const V32 p11 = hn::ShiftRight<kShift>(hn::Load(d, P11 + k));
    const VI16 even = mixRows(mixColumns(evenBytes(p00), evenBytes(p01), a),
                              mixColumns(evenBytes(p10), evenBytes(p11), a), b);
    const VI16 odd = mixRows(mixColumns(oddBytes(p00), oddBytes(p01), a),
                             mixColumns(oddBytes(p10), oddBytes(p11), a), b);
    const V32 value = hn::Or(hn::BitCast(d, even), hn::ShiftLeft<8>(hn::BitCast(d, odd)));
    hn::Store(hn::And(value, hn::Load(d, samples.inside + k)), d, mixed + k);
  }
}

HWY_INLINE void storeBytes(const std::uint32_t* values, std::size_t count, unsigned char* bytes) {
  const D32 d;
  const hn::Rebind<std::uint8_t, D32> d8;
  const DI32 di;
  std::size_t k = 0;
  for (; k + hn::Lanes(d) <= count; k += hn::Lanes(d)) {
    hn::StoreU(hn::DemoteTo(d8, hn::BitCast(di, hn::Load(d, values + k))), d8, bytes + k);
  }
  for (; k < count; ++k) {
    bytes[k] = static_cast<unsigned char>(values[k]);
  }
}

// Three-byte pixels: each store writes a fourth byte, which the next one overwrites.
HWY_INLINE void storeTriples(const std::uint32_t* values, std::size_t count,
                             unsigned char* pixels) {
  for (std::size_t k = 0; k + 1 < count; ++k) {
    std::memcpy(pixels + 3 * k, values + k, 4);
  }
  std::memcpy(pixels + 3 * (count - 1), values + count - 1, 3);
}

HWY_INLINE void storeValidity(const images::Frame& frame, const int* u, const int* v,
                              std::size_t count, const Samples& samples, unsigned char* mask) {
  const D32 d;
  const DI32 di;
  const auto nowhere = hn::Set(di, kNowhere);
  HWY_ALIGN std::uint32_t values[kRun];
  for (std::size_t k = 0; k < count; k += hn::Lanes(d)) {
    const auto inside = hn::Load(d, samples.inside + k);
    hn::Store(hn::AndNot(inside, hn::Set(d, images::kNoContent)), d, values + k);
    // Samples that are neither inside nor marked are decided one by one.
    const auto marked =
        hn::And(hn::Eq(hn::Load(di, u + k), nowhere), hn::Eq(hn::Load(di, v + k), nowhere));
    const auto settled = hn::Or(hn::BitCast(d, hn::VecFromMask(di, marked)), inside);
    if (!hn::AllTrue(d, hn::Ne(settled, hn::Zero(d)))) {
      for (std::size_t i = k; i < std::min(k + hn::Lanes(d), count); ++i) {
        values[i] = validityOfOne(frame, u[i], v[i]);
      }
    }
  }
  storeBytes(values, count, mask);
}

// Mixes the samples that lie wholly in the frame; the others become 0.
HWY_INLINE void sampleInside(const images::Frame& frame, const int* u, const int* v,
                             std::size_t count, const Samples& samples, unsigned char* pixels) {
  HWY_ALIGN std::uint32_t mixed[kRun];
  switch (frame.bytes) {
    case 1:
      mixGrey(frame, u, v, count, samples, mixed);
      storeBytes(mixed, count, pixels);
      break;
    case 3:
      mixColour<3>(frame, u, v, count, samples, mixed);
      storeTriples(mixed, count, pixels);
      break;
    case 4:
      mixColour<4>(frame, u, v, count, samples, mixed);
      std::memcpy(pixels, mixed, count * 4);
      break;
    default:  // images::bytesPerPixel gives no other
      break;
  }
}

// One by one: few samples begin in the last column or row.
void sampleBorder(const images::Frame& frame, const int* u, const int* v, std::size_t count,
                  unsigned char* pixels) {
  for (std::size_t k = 0; k < count; ++k) {
    if (beginsOnBorder(frame, u[k], v[k])) {
      sampleOne(frame, u[k], v[k], pixels + k * static_cast<std::size_t>(frame.bytes));
    }
  }
}

void SampleRun(const images::Frame& frame, const int* u, const int* v, std::size_t count,
               unsigned char* pixels, unsigned char* mask) {
  Samples samples;
  const Found found = locate(frame, u, v, count, samples);
  if (mask != nullptr) {
    if (found.all) {
      std::memset(mask, 0, count);
    } else {
      storeValidity(frame, u, v, count, samples, mask);
    }
  }
  if (found.any) {
    sampleInside(frame, u, v, count, samples, pixels);
  } else {
    std::memset(pixels, 0, count * static_cast<std::size_t>(frame.bytes));
  }
  if (found.border) {
    sampleBorder(frame, u, v, count, pixels);
  }
}

#endif  // HWY_TARGET

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fisheye_calibration::rendering {

HWY_EXPORT(SampleRun);

void sampleRun(const images::Frame& frame, const int* u, const int* v, std::size_t count,
               unsigned char* pixels, unsigned char* mask) {
  HWY_DYNAMIC_DISPATCH(SampleRun)(frame, u, v, count, pixels, mask);
}

}  // namespace fisheye_calibration::rendering
#endif  // HWY_ONCE
