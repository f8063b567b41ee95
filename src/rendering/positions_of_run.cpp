#include "rendering/fast_positions.h"

#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rendering/positions_of_run.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "rendering/rounded-inl.h"

HWY_BEFORE_NAMESPACE();
namespace fisheye_calibration::rendering {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Neighbouring pixels computed from one middle pixel.
constexpr std::size_t kGroup = 8;
constexpr std::size_t kGroups = kRun / kGroup;

using DF = hn::CappedTag<float, kGroup>;
using VF = hn::Vec<DF>;
using DI = hn::Rebind<std::int32_t, DF>;
using DD = hn::CappedTag<double, kGroups>;
using VD = hn::Vec<DD>;

// The groups of a run, one element per group. (x, y) and q = x^2 + y^2 belong to the middle pixel;
// c0 is the lens factor at the table's node r_n.
struct Groups {
  HWY_ALIGN std::int32_t column[kGroups];  // of the middle pixel
  HWY_ALIGN std::int32_t row[kGroups];
  HWY_ALIGN double factor[kGroups];       // c0
  HWY_ALIGN std::int32_t node[kGroups];   // n
  HWY_ALIGN std::int32_t baseU[kGroups];  // cx + fx x c0 rounded, in 1/32 pixel
  HWY_ALIGN std::int32_t baseV[kGroups];
  HWY_ALIGN float restU[kGroups];  // its remainder
  HWY_ALIGN float restV[kGroups];
  HWY_ALIGN float x2[kGroups];  // 2 x
  HWY_ALIGN float y2[kGroups];
  HWY_ALIGN float fxX[kGroups];  // fx x
  HWY_ALIGN float fyY[kGroups];
  HWY_ALIGN float fxC[kGroups];  // fx c0
  HWY_ALIGN float fyC[kGroups];
  HWY_ALIGN float p[kGroups];           // q - r_n^2
  HWY_ALIGN float nodeRadius[kGroups];  // r_n
};

// The middle pixel of every group, or another one if that is not wanted.
HWY_INLINE void chooseMiddles(const int* column, const int* row, Groups& groups) {
  for (std::size_t g = 0; g < kGroups; ++g) {
    std::size_t pixel = g * kGroup + kGroup / 2;
    if (HWY_UNLIKELY(column[pixel] < 0)) {
      pixel = g * kGroup;
      while (pixel + 1 < (g + 1) * kGroup && column[pixel] < 0) {
        ++pixel;
      }
    }
    groups.column[g] = column[pixel];
    groups.row[g] = row[pixel];
  }
}

HWY_INLINE void store(VD value, float* to) {
  const hn::Rebind<float, DD> d;
  hn::Store(hn::DemoteTo(d, value), d, to);
}

HWY_INLINE void store(VD value, std::int32_t* to) {
  const hn::Rebind<std::int32_t, DD> d;
  hn::Store(hn::DemoteTo(d, value), d, to);
}

HWY_INLINE void prepareGroups(const FastPositions& positions, const int* column, const int* row,
                              Groups& groups) {
  const DD d;
  const cv::Matx23d& linear = positions.linear();
  const lens::Camera& camera = positions.rays().camera;
  const LensTable& table = positions.table();
  const VD fx = hn::Set(d, 32 * camera.fx);
  const VD fy = hn::Set(d, 32 * camera.fy);
  const VD half = hn::Set(d, 0.5);
  const VD perUnit = hn::Set(d, LensTable::kNodesPerUnit);
  const VD lastNode = hn::Set(d, static_cast<double>(table.size() - 1));
  chooseMiddles(column, row, groups);
  for (std::size_t g = 0; g < kGroups; g += hn::Lanes(d)) {
    const hn::Rebind<std::int32_t, DD> di;
    const VD i = hn::PromoteTo(d, hn::Load(di, groups.column + g));
    const VD j = hn::PromoteTo(d, hn::Load(di, groups.row + g));
    const VD x = hn::MulAdd(i, hn::Set(d, linear(0, 0)),
                            hn::MulAdd(j, hn::Set(d, linear(0, 1)), hn::Set(d, linear(0, 2))));
    const VD y = hn::MulAdd(j, hn::Set(d, linear(1, 1)), hn::Set(d, linear(1, 2)));
    const VD q = hn::MulAdd(x, x, hn::Mul(y, y));
    const VD r = hn::Sqrt(q);
    const VD node = hn::Min(hn::Floor(hn::MulAdd(r, perUnit, half)), lastNode);
    const VD nodeRadius = hn::Mul(node, hn::Set(d, 1 / LensTable::kNodesPerUnit));
    // A group too close to the axis gets a p beyond the reach of every node.
    const VD p = hn::IfThenElse(hn::Lt(r, hn::Set(d, positions.smallestRadius())), hn::Set(d, 1e9),
                                hn::NegMulAdd(nodeRadius, nodeRadius, q));
    store(node, groups.node + g);
    store(nodeRadius, groups.nodeRadius + g);
    store(p, groups.p + g);
    store(hn::Add(x, x), groups.x2 + g);
    store(hn::Add(y, y), groups.y2 + g);
    const VD fxX = hn::Mul(fx, x);
    const VD fyY = hn::Mul(fy, y);
    store(fxX, groups.fxX + g);
    store(fyY, groups.fyY + g);
    for (std::size_t k = g; k < g + hn::Lanes(d); ++k) {
      groups.factor[k] = table[static_cast<std::size_t>(groups.node[k])].value;
    }
    const VD factor = hn::Load(d, groups.factor + g);
    store(hn::Mul(fx, factor), groups.fxC + g);
    store(hn::Mul(fy, factor), groups.fyC + g);
    const VD u = hn::MulAdd(fxX, factor, hn::Set(d, 32 * camera.cx));
    const VD v = hn::MulAdd(fyY, factor, hn::Set(d, 32 * camera.cy));
    const VD baseU = hn::Round(u);
    const VD baseV = hn::Round(v);
    store(baseU, groups.baseU + g);
    store(baseV, groups.baseV + g);
    store(hn::Sub(u, baseU), groups.restU + g);
    store(hn::Sub(v, baseV), groups.restV + g);
  }
}

HWY_INLINE VF broadcast(float x) { return hn::Set(DF(), x); }

// Values shared by all groups.
struct Constants {
  float xx, xy, yy;  // linear rays
  float fx, fy;      // in 1/32 pixel
  float safe, groupReach, nodeReach;

  explicit Constants(const FastPositions& p)
      : xx(static_cast<float>(p.linear()(0, 0))),
        xy(static_cast<float>(p.linear()(0, 1))),
        yy(static_cast<float>(p.linear()(1, 1))),
        fx(static_cast<float>(32 * p.rays().camera.fx)),
        fy(static_cast<float>(32 * p.rays().camera.fy)),
        safe(static_cast<float>(p.safeDistance())),
        groupReach(static_cast<float>(p.groupReach())),
        nodeReach(static_cast<float>(p.nodeReach())) {}
};

// The positions of group g. With (dx, dy) the difference of a pixel's ray from the middle one's:
//   p = q - r_n^2, where q = (x + dx)^2 + (y + dy)^2
//   t = sqrt(q) - r_n = p/(sqrt(q) + r_n)
//   s = c0 + D, D = c1 t + ... + c6 t^6
//   u = (cx + fx x c0) + fx c0 dx + fx (x + dx) D
// Returns the bits of the wanted pixels whose rounding is uncertain; these and unwanted pixels get
// kNowhere.
HWY_INLINE std::uint64_t positionsOfGroup(const Constants& k, const LensTable& table,
                                          const Groups& groups, std::size_t g, const int* column,
                                          const int* row, int* toU, int* toV) {
  const DF d;
  const DI di;
  const auto middleColumn = hn::Set(di, groups.column[g]);
  const auto middleRow = hn::Set(di, groups.row[g]);
  const auto& c = table[static_cast<std::size_t>(groups.node[g])].c;
  const VF nodeRadius = broadcast(groups.nodeRadius[g]);
  std::uint64_t uncertain = 0;
  for (std::size_t lane = 0; lane < kGroup; lane += hn::Lanes(d)) {
    const auto i = hn::Load(di, column + lane);
    const VF columns = hn::ConvertTo(d, hn::Sub(i, middleColumn));
    const VF rows = hn::ConvertTo(d, hn::Sub(hn::Load(di, row + lane), middleRow));
    const VF dx = hn::MulAdd(columns, broadcast(k.xx), hn::Mul(rows, broadcast(k.xy)));
    const VF dy = hn::Mul(rows, broadcast(k.yy));
    const VF p =
        hn::MulAdd(dy, hn::Add(dy, broadcast(groups.y2[g])),
                   hn::MulAdd(dx, hn::Add(dx, broadcast(groups.x2[g])), broadcast(groups.p[g])));
    const VF r = hn::Sqrt(hn::MulAdd(nodeRadius, nodeRadius, p));
    const VF t = hn::Div(p, hn::Add(r, nodeRadius));
    VF D = broadcast(c[LensTable::kDegree - 1]);
    for (std::size_t n = LensTable::kDegree - 1; n-- > 0;) {
      D = hn::MulAdd(D, t, broadcast(c[n]));
    }
    D = hn::Mul(D, t);
    const VF du = hn::MulAdd(hn::MulAdd(dx, broadcast(k.fx), broadcast(groups.fxX[g])), D,
                             hn::MulAdd(dx, broadcast(groups.fxC[g]), broadcast(groups.restU[g])));
    const VF dv = hn::MulAdd(hn::MulAdd(dy, broadcast(k.fy), broadcast(groups.fyY[g])), D,
                             hn::MulAdd(dy, broadcast(groups.fyC[g]), broadcast(groups.restV[g])));
    const Rounded<DF> u = rounded(d, du);
    const Rounded<DF> v = rounded(d, dv);
    const VF farther = hn::Max(u.distance, v.distance);
    const VF extent = hn::Max(hn::Abs(dx), hn::Abs(dy));
    const auto certain = hn::And(
        hn::And(hn::Lt(farther, broadcast(k.safe)), hn::Le(extent, broadcast(k.groupReach))),
        hn::Le(hn::Abs(t), broadcast(k.nodeReach)));
    const auto wanted = hn::RebindMask(d, hn::Gt(i, hn::Set(di, -1)));
    const auto usable = hn::And(certain, wanted);
    const auto keep = hn::RebindMask(di, usable);
    const auto nowhere = hn::Set(di, kNowhere);
    const auto wholeU = hn::Add(u.whole, hn::Set(di, groups.baseU[g]));
    const auto wholeV = hn::Add(v.whole, hn::Set(di, groups.baseV[g]));
    hn::Store(hn::IfThenElse(keep, wholeU, nowhere), di, toU + lane);
    hn::Store(hn::IfThenElse(keep, wholeV, nowhere), di, toV + lane);
    std::uint8_t bits[8] = {};
    hn::StoreMaskBits(d, hn::AndNot(certain, wanted), bits);
    uncertain |= std::uint64_t{bits[0]} << lane;
  }
  return uncertain;
}

std::size_t PositionsOfRun(const FastPositions& positions, ExactPositions& exact, const int* column,
                           const int* row, std::size_t count, int* u, int* v) {
  const Constants constants(positions);
  Groups groups;
  prepareGroups(positions, column, row, groups);
  std::uint64_t uncertain = 0;  // checked once per run so that groups need not wait for each other
  for (std::size_t g = 0; g < kGroups; ++g) {
    const std::size_t k = g * kGroup;
    uncertain |=
        positionsOfGroup(constants, positions.table(), groups, g, column + k, row + k, u + k, v + k)
        << k;
  }
  return exact.recompute(uncertain, count, column, row, u, v);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace fisheye_calibration::rendering
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fisheye_calibration::rendering {

HWY_EXPORT(PositionsOfRun);

std::size_t positionsOfRun(const FastPositions& positions, ExactPositions& exact, const int* column,
                           const int* row, std::size_t count, int* u, int* v) {
  if (positions.safeDistance() == 0) {
    std::uint64_t wanted = 0;
    for (std::size_t k = 0; k < kRun; ++k) {
      u[k] = v[k] = kNowhere;
      wanted |= std::uint64_t{column[k] >= 0} << k;
    }
    return exact.recompute(wanted, count, column, row, u, v);
  }
  return HWY_DYNAMIC_DISPATCH(PositionsOfRun)(positions, exact, column, row, count, u, v);
}

}  // namespace fisheye_calibration::rendering
#endif  // HWY_ONCE
