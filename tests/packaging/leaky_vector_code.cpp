// Vectors in functions that are not compiled for their instruction set: what vector_code.sh has to
// notice.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "leaky_vector_code.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include <array>

HWY_BEFORE_NAMESPACE();
namespace leaky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Lanes = hn::ScalableTag<float>;
using V = hn::Vec<Lanes>;

struct WithFriend {
  V v;
  friend WithFriend twice(WithFriend x) { return {hn::Add(x.v, x.v)}; }
};

struct Defaulted {
  V v = hn::Zero(Lanes());
};

void Compute(float* values) {
  const Lanes d;
  const V v = hn::LoadU(d, values);
  std::array<V, 2> standardArray = {v, twice(WithFriend{v}).v};
  Defaulted sum;
  sum.v = hn::Add(sum.v, hn::Add(standardArray[0], standardArray[1]));
  hn::StoreU(sum.v, d, values);
}

}  // namespace HWY_NAMESPACE
}  // namespace leaky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace leaky {

HWY_EXPORT(Compute);

void compute(float* values) { HWY_DYNAMIC_DISPATCH(Compute)(values); }

}  // namespace leaky
#endif  // HWY_ONCE
