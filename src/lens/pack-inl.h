// A vector of doubles with arithmetic operators, so that the camera model is written once for
// single points and vectors of points. Compiled once per instruction set.
//
// Packs are passed in registers that the baseline lacks, so only functions compiled for the same
// instruction set may take, return or hold them: those written between HWY_BEFORE_NAMESPACE and
// HWY_AFTER_NAMESPACE, and lambdas with HWY_ATTR. Standard library templates and compiler-generated
// constructors are compiled for the baseline and, without optimisation, called rather than inlined.
// Hence plain arrays, and hand-written constructors where they do work.
#include <hwy/highway.h>

#if defined(FISHEYE_PACK_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef FISHEYE_PACK_INL_H_
#undef FISHEYE_PACK_INL_H_
#else
#define FISHEYE_PACK_INL_H_
#endif

#include <hwy/contrib/math/math-inl.h>

#include <cmath>
#include <type_traits>

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::lens {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Lanes = hn::ScalableTag<double>;

struct Pack {
  using V = hn::Vec<Lanes>;
  using M = hn::Mask<Lanes>;
  V v;

  Pack() = default;  // trivial, so that arrays of packs need no code of their own
  // NOLINTNEXTLINE(google-explicit-constructor): formulas mix packs with constants
  HWY_INLINE Pack(double x) : v(hn::Set(Lanes(), x)) {}
  HWY_INLINE explicit Pack(V x) : v(x) {}

  static HWY_INLINE Pack load(const double* p) { return Pack(hn::LoadU(Lanes(), p)); }
  HWY_INLINE void store(double* p) const { hn::StoreU(v, Lanes(), p); }
};

// Not friends defined in the class: GCC compiles those for the baseline.
HWY_INLINE Pack operator+(Pack a, Pack b) { return Pack(hn::Add(a.v, b.v)); }
HWY_INLINE Pack operator-(Pack a, Pack b) { return Pack(hn::Sub(a.v, b.v)); }
HWY_INLINE Pack operator*(Pack a, Pack b) { return Pack(hn::Mul(a.v, b.v)); }
HWY_INLINE Pack operator/(Pack a, Pack b) { return Pack(hn::Div(a.v, b.v)); }
HWY_INLINE Pack operator-(Pack a) { return Pack(hn::Neg(a.v)); }
HWY_INLINE Pack& operator+=(Pack& a, Pack b) { return a = a + b; }
HWY_INLINE Pack::M operator<(Pack a, Pack b) { return hn::Lt(a.v, b.v); }
HWY_INLINE Pack::M operator>(Pack a, Pack b) { return hn::Gt(a.v, b.v); }

HWY_INLINE Pack select(Pack::M condition, Pack yes, Pack no) {
  return Pack(hn::IfThenElse(condition, yes.v, no.v));
}
HWY_INLINE Pack squareRoot(Pack x) { return Pack(hn::Sqrt(x.v)); }
HWY_INLINE Pack absolute(Pack x) { return Pack(hn::Abs(x.v)); }
HWY_INLINE Pack arcTangent(Pack x) { return Pack(hn::Atan(Lanes(), x.v)); }
HWY_INLINE double sumOfLanes(Pack x) { return hn::GetLane(hn::SumOfLanes(Lanes(), x.v)); }

HWY_INLINE double select(bool condition, double yes, double no) { return condition ? yes : no; }
HWY_INLINE double squareRoot(double x) { return std::sqrt(x); }
HWY_INLINE double absolute(double x) { return std::abs(x); }
HWY_INLINE double arcTangent(double x) { return std::atan(x); }
HWY_INLINE double sumOfLanes(double x) { return x; }

template <class T>
HWY_INLINE T loadFrom(const double* p) {
  if constexpr (std::is_same_v<T, double>) {
    return *p;
  } else {
    return T::load(p);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::lens
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
