#include "rendering/lens_table.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace fisheye_calibration::rendering {
namespace {

// Power series in t, one term more than the table keeps because the node at r = 0 divides by t.
constexpr std::size_t kTerms = LensTable::kDegree + 2;
using Series = std::array<double, kTerms>;

Series product(const Series& a, const Series& b) {
  Series c{};
  for (std::size_t i = 0; i < kTerms; ++i) {
    for (std::size_t j = 0; i + j < kTerms; ++j) {
      c[i + j] += a[i] * b[j];
    }
  }
  return c;
}

// atan(r0 + t). Its derivative g = 1/(1 + (r0 + t)^2) follows from
// (1 + r0^2) g_n + 2 r0 g_(n-1) + g_(n-2) = 0, g_0 = 1/(1 + r0^2).
Series arcTangentSeries(double r0) {
  const double d = 1 + r0 * r0;
  Series g{};
  for (std::size_t n = 0; n < kTerms; ++n) {
    const double before = n > 0 ? 2 * r0 * g[n - 1] : -1;
    g[n] = -(before + (n > 1 ? g[n - 2] : 0)) / d;
  }
  Series a{};
  a[0] = std::atan(r0);
  for (std::size_t n = 1; n < kTerms; ++n) {
    a[n] = g[n - 1] / static_cast<double>(n);
  }
  return a;
}

// Expansion of theta_d/r about r0.
Series radialFactorSeries(const lens::Camera& camera, double r0) {
  const Series theta = arcTangentSeries(r0);
  const Series theta2 = product(theta, theta);
  const Series theta3 = product(theta2, theta);
  Series s{};
  for (std::size_t n = 0; n < kTerms; ++n) {
    s[n] = theta[n] + camera.k0 * theta2[n] + camera.k1 * theta3[n];
  }
  if (r0 == 0) {
    std::rotate(s.begin(), s.begin() + 1, s.end());  // divided by t
    return s;
  }
  for (std::size_t n = 0; n < kTerms; ++n) {
    s[n] = (s[n] - (n > 0 ? s[n - 1] : 0)) / r0;
  }
  return s;
}

// s is analytic except at the branch points +-i. On a disc of radius rho = 0.9 about a node,
// |Im z| <= 0.9 and |z + i|/|z - i| lies between 1/19 and 19, so there
//   |Re atan z| <= pi/2 and |Im atan z| <= ln(19)/2 < 1.48, which gives |theta| < 2.16,
//   |atan(z)/z| <= atanh(0.9)/0.9 < 1.64 for |z| <= 0.9, and <= 2.16/0.9 = 2.4 beyond,
//   |s| <= 2.4 (1 + 2.16 |k0| + 4.67 |k1|).
constexpr double kRho = 0.9;

double boundOnDiscs(const lens::Camera& camera) {
  return 2.4 * (1 + 2.16 * std::abs(camera.k0) + 4.67 * std::abs(camera.k1));
}

// Bound on |ds/dr| within kLargestReach of a node.
double slopeNear(const Series& s) {
  double slope = 0;
  double power = 1;
  for (std::size_t k = 1; k <= LensTable::kDegree; ++k) {
    slope += static_cast<double>(k) * std::abs(s[k]) * power;
    power *= LensTable::kLargestReach;
  }
  return slope;
}

}  // namespace

LensTable::LensTable(const lens::Camera& camera, double radius)
    : factorBound_(boundOnDiscs(camera)) {
  const double covered = radius < kLargestRadius ? radius : kLargestRadius;
  const auto count = static_cast<std::size_t>(std::ceil(covered * kNodesPerUnit)) + 1;
  nodes_.resize(count);
  for (std::size_t n = 0; n < count; ++n) {
    const double r0 = static_cast<double>(n) / kNodesPerUnit;
    const Series s = radialFactorSeries(camera, r0);
    nodes_[n].value = s[0];
    std::transform(s.begin() + 1, s.begin() + 1 + kDegree, nodes_[n].c.begin(),
                   [](double c) { return static_cast<float>(c); });
    const double slope = slopeNear(s);
    slopeBound_ = std::max(slopeBound_, (r0 + kLargestReach) * slope);
    largestFactor_ = std::max(largestFactor_, std::abs(s[0]) + kLargestReach * slope);
  }
  // By Cauchy's estimate, the remainders add far less than this.
  slopeBound_ += 1e-3 * factorBound_;
  largestFactor_ += 1e-3 * factorBound_;
}

double LensTable::remainderBound(double reach) const {
  // Cauchy's estimate: with |s| <= M on the disc, the terms from degree n on add up to at most
  // M q^n/(1 - q), q = |t|/rho. Rounding of the value stays far below 1e-14 M.
  const double q = reach / kRho;
  return factorBound_ * (std::pow(q, static_cast<double>(kDegree + 1)) / (1 - q) + 1e-14);
}

}  // namespace fisheye_calibration::rendering
