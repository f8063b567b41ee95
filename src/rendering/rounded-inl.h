// Rounds vectors of floats to integers. Compiled once per instruction set.
#include <hwy/highway.h>

#if defined(FISHEYE_ROUNDED_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_ROUNDED_INL_H_
#undef FISHEYE_ROUNDED_INL_H_
#else
#define FISHEYE_ROUNDED_INL_H_
#endif

#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// The nearest integer, ties to even, and the distance to it.
template <class D>
struct Rounded {
  hn::Vec<hn::Rebind<std::int32_t, D>> whole;
  hn::Vec<D> distance;
};

// Only for |x| < 2^22: adding 1.5 2^23 leaves no fraction bits, so the sum's own bits count
// integers. Cheaper than a conversion, which guards against numbers that are too large.
template <class D>
HWY_INLINE Rounded<D> rounded(D d, hn::Vec<D> x) {
  const hn::Rebind<std::int32_t, D> di;
  const auto shift = hn::Set(d, 0x1.8p23F);
  const auto shifted = hn::Add(x, shift);
  return {hn::Sub(hn::BitCast(di, shifted), hn::BitCast(di, shift)),
          hn::Abs(hn::Sub(x, hn::Sub(shifted, shift)))};
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
