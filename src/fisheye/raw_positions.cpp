#include "fisheye/raw_positions.h"

#include <algorithm>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "fisheye/raw_positions.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace fisheye {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// What a vector's computation needs, broadcast once a run.
template <class D>
struct Constants {
  using V = hn::Vec<D>;
  V xx, xy, x1, yx, yy, y1;  // linear rays
  V fx, fy, cx, cy;          // in 1/32 pixel
  V safe, reach, largest;

  HWY_INLINE Constants(D d, const RawPositions& p)
      : xx(hn::Set(d, p.linear()(0, 0))),
        xy(hn::Set(d, p.linear()(0, 1))),
        x1(hn::Set(d, p.linear()(0, 2))),
        yx(hn::Set(d, p.linear()(1, 0))),
        yy(hn::Set(d, p.linear()(1, 1))),
        y1(hn::Set(d, p.linear()(1, 2))),
        fx(hn::Set(d, 32 * p.rays().camera.fx)),
        fy(hn::Set(d, 32 * p.rays().camera.fy)),
        cx(hn::Set(d, 32 * p.rays().camera.cx)),
        cy(hn::Set(d, 32 * p.rays().camera.cy)),
        safe(hn::Set(d, p.safeDistance())),
        reach(hn::Set(d, LensTable::kReach)),
        largest(hn::Set(d, 1073741824.0)) {}
};

// s(node + t) by Horner's scheme.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V radialFactor(D d, const double* c, V t) {
  V s = hn::Set(d, c[LensTable::kCoefficients - 1]);
  for (std::size_t k = LensTable::kCoefficients - 1; k-- > 0;) {
    s = hn::MulAdd(s, t, hn::Set(d, c[k]));
  }
  return s;
}

// One vector of positions. Returns the bits of the lanes whose rounding is not certain.
template <class D>
HWY_INLINE std::size_t positionsOfVector(D d, const Constants<D>& k, const LensTable& table,
                                         const double* column, const double* row, int* u, int* v) {
  using V = hn::Vec<D>;
  const hn::Rebind<int, D> di;
  const V i = hn::Load(d, column);
  const V j = hn::Load(d, row);
  const auto wanted = hn::Ge(i, hn::Zero(d));
  const V x = hn::MulAdd(i, k.xx, hn::MulAdd(j, k.xy, k.x1));
  const V y = hn::MulAdd(i, k.yx, hn::MulAdd(j, k.yy, k.y1));
  const V r = hn::Sqrt(hn::MulAdd(x, x, hn::Mul(y, y)));

  // The lanes are neighbours, so one node serves all; those that it does not reach are not certain.
  const intptr_t first = hn::FindFirstTrue(d, wanted);
  HWY_ALIGN double radii[HWY_MAX_BYTES / sizeof(double)];
  hn::Store(r, d, radii);
  const double nearest = first < 0 ? 0.0 : radii[first] * LensTable::kNodesPerUnit + 0.5;
  const std::size_t node = nearest < static_cast<double>(table.nodes())
                               ? static_cast<std::size_t>(nearest)
                               : std::size_t{0};
  const V t = hn::Sub(r, hn::Set(d, static_cast<double>(node) * (1 / LensTable::kNodesPerUnit)));
  const V s = radialFactor(d, table.node(node), t);

  const V exactU = hn::MulAdd(hn::Mul(k.fx, x), s, k.cx);
  const V exactV = hn::MulAdd(hn::Mul(k.fy, y), s, k.cy);
  const V roundU = hn::Round(exactU);
  const V roundV = hn::Round(exactV);
  const V farther = hn::Max(hn::Abs(hn::Sub(exactU, roundU)), hn::Abs(hn::Sub(exactV, roundV)));
  const V larger = hn::Max(hn::Abs(exactU), hn::Abs(exactV));
  const auto certain = hn::And(hn::And(hn::Lt(farther, k.safe), hn::Lt(larger, k.largest)),
                               hn::Le(hn::Abs(t), k.reach));
  const auto usable = hn::And(certain, wanted);
  const V nowhere = hn::Set(d, static_cast<double>(kNowhere));
  hn::Store(hn::DemoteTo(di, hn::IfThenElse(usable, roundU, nowhere)), di, u);
  hn::Store(hn::DemoteTo(di, hn::IfThenElse(usable, roundV, nowhere)), di, v);

  std::size_t uncertain = 0;
  if (HWY_UNLIKELY(!hn::AllTrue(d, hn::Or(usable, hn::Not(wanted))))) {
    uint8_t bits[8] = {};
    hn::StoreMaskBits(d, hn::AndNot(certain, wanted), bits);
    uncertain = bits[0];
  }
  return uncertain;
}

std::size_t PositionsOfRun(const RawPositions& positions, SteppedPositions& stepped,
                           const double* column, const double* row, std::size_t count, int* u,
                           int* v) {
  using D = hn::CappedTag<double, 8>;
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  const Constants<D> constants(d, positions);
  std::size_t recomputed = 0;
  for (std::size_t k = 0; k < count; k += lanes) {
    std::size_t uncertain =
        positionsOfVector(d, constants, positions.table(), column + k, row + k, u + k, v + k);
    for (std::size_t lane = k; uncertain != 0; ++lane, uncertain >>= 1) {
      if ((uncertain & 1) != 0 && lane < count) {
        const RawPosition p =
            stepped.at(static_cast<int>(column[lane]), static_cast<int>(row[lane]));
        u[lane] = p.u;
        v[lane] = p.v;
        ++recomputed;
      }
    }
  }
  return recomputed;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace fisheye
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace fisheye {
namespace {

// The rays as linear functions of the pixel's coordinates: they are, but for the rounding of the
// steps, when the last row of iR is (0, 0, W) with W > 0.
cv::Matx23d linearRays(const cv::Matx33d& iR) {
  const double W = iR(2, 2);
  return {iR(0, 0) / W, iR(0, 1) / W, iR(0, 2) / W, iR(1, 0) / W, iR(1, 1) / W, iR(1, 2) / W};
}

// Largest |coefficients| . (width, height, 1): a bound of the coordinate and of all its terms.
double coordinateBound(const cv::Matx23d& linear, int coordinate, const cv::Size& size) {
  return std::abs(linear(coordinate, 0)) * size.width +
         std::abs(linear(coordinate, 1)) * size.height + std::abs(linear(coordinate, 2));
}

}  // namespace

RawPositions::RawPositions(const RectifyingRays& rays, const cv::Size& size)
    : rays_(rays),
      linear_(linearRays(rays.iR)),
      table_(rays.camera,
             std::hypot(coordinateBound(linear_, 0, size), coordinateBound(linear_, 1, size))),
      safeDistance_(0) {
  const cv::Matx33d& iR = rays.iR;
  if (!(iR(2, 0) == 0 && iR(2, 1) == 0 && iR(2, 2) > 0)) {
    return;
  }
  // Errors of a position in 1/32 pixel, u = 2^-53 being the relative error of one operation: of the
  // ray (one operation a step, and a few), of the radius, which changes the lens factor, of the
  // factor itself and of the last operations.
  const double u = std::numeric_limits<double>::epsilon() / 2;
  const Camera& c = rays.camera;
  const double coordinate =
      std::max(coordinateBound(linear_, 0, size), coordinateBound(linear_, 1, size));
  const double rayError = (size.width + 16.0) * 2 * u * coordinate;
  const double factorError = table_.errorBound() + table_.slopeBound() * 4 * rayError;
  const double f = 32 * std::max(std::abs(c.fx), std::abs(c.fy));
  const double centre = 32 * std::max(std::abs(c.cx), std::abs(c.cy));
  const double error = f * (coordinate * factorError + table_.factorBound() * rayError) +
                       16 * u * (f * coordinate * table_.factorBound() + centre);
  const double margin = 2 * error;
  if (margin < 0.25) {
    safeDistance_ = 0.5 - margin;
  }
}

double SteppedPositions::Sums::at(double start, double step, int count) {
  constexpr int spacing = 16;
  if (!(start == start_)) {
    start_ = start;
    kept_.assign(1, start);
  }
  const auto block = static_cast<std::size_t>(count / spacing);
  while (kept_.size() <= block) {
    double sum = kept_.back();
    for (int i = 0; i < spacing; ++i) {
      sum += step;
    }
    kept_.push_back(sum);
  }
  double sum = kept_[block];
  for (int i = 0; i < count % spacing; ++i) {
    sum += step;
  }
  return sum;
}

RawPosition SteppedPositions::at(int column, int row) {
  const cv::Matx33d& iR = rays_.iR;
  std::array<double, 3> ray;
  for (int k = 0; k < 3; ++k) {
    const double start = row * iR(k, 1) + iR(k, 2);
    ray[static_cast<std::size_t>(k)] =
        iR(k, 0) == 0 && column > 0
            ? start + iR(k, 0)
            : sums_[static_cast<std::size_t>(k)].at(start, iR(k, 0), column);
  }
  RawPosition p = rawPosition(rays_.camera, ray[0], ray[1], ray[2]);
  if (p.u == kNowhere && p.v == kNowhere) {
    p.u = -1;  // the same low 21 bits
  }
  return p;
}

HWY_EXPORT(PositionsOfRun);

std::size_t positionsOfRun(const RawPositions& positions, SteppedPositions& stepped,
                           const double* column, const double* row, std::size_t count, int* u,
                           int* v) {
  return HWY_DYNAMIC_DISPATCH(PositionsOfRun)(positions, stepped, column, row, count, u, v);
}

}  // namespace fisheye
#endif  // HWY_ONCE
