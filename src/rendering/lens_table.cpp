#include "rendering/lens_table.h"

#include <algorithm>
#include <cmath>

#include "rendering/power_series.h"

namespace fisheye_calibration::rendering {
namespace {

constexpr double kHalfSpacing = 0.5 / LensTable::kNodesPerUnit;
constexpr double kFloat = 0x1p-24;  // relative error of one operation
constexpr double kDouble = 0x1p-53;
constexpr double kDisc = 0.85;            // of the radius of convergence
constexpr double kFurthestShare = 0.7;    // of the disc
constexpr double kLargestError = 0.02;    // more would leave too many doubtful pixels
constexpr double kLargestOffset = 30000;  // 1/32 pixels; offsets are kept in 16 bits

// |p| <= reach in every block whose middle is nearest to node r.
double reachAbout(double r, const BlockSpread& spread) {
  const double off = spread.reach + kHalfSpacing;
  return off * (2 * r + off);
}

using Coefficients = std::array<double, LensNode::kDegree>;

// Sum of (k + 1) |a_k| reach^k: bounds the polynomial, its partial sums and, if it is multiplied by
// p, its slope.
double weightedSum(const Coefficients& a, double reach) {
  double sum = 0;
  for (std::size_t k = a.size(); k-- > 0;) {
    sum = sum * reach + static_cast<double>(k + 1) * std::abs(a[k]);
  }
  return sum;
}

// Sum of k |a_k| reach^(k - 1): bounds the polynomial's slope.
double slopeSum(const Coefficients& a, double reach) {
  double sum = 0;
  for (std::size_t k = a.size() - 1; k > 0; --k) {
    sum = sum * reach + static_cast<double>(k) * std::abs(a[k]);
  }
  return sum;
}

// What the bounds are made of, see docs/rendering.md. Sums over powers of p are at |p| = reach.
struct Sizes {
  double focal;    // max(|fx|, |fy|)
  double largest;  // r of any pixel of the block
  double off;      // |r - r_n|
  double A;        // |fx x| and |fy y|, in pixels
  double P;        // |p|
  double H;        // sum of k |c_k| P^(k - 1)
  double O;        // sum of (k + 1) |o_k| P^k
  double slopeO;   // sum of k |o_k| P^(k - 1)
};

// Roundings in float, 2^-24 each, of the terms of a position, counted in docs/rendering.md.
struct Roundings {
  double p;       // of P
  double even;    // of A H P
  double odd;     // of A off O
  double linear;  // of S0 times the offset from the middle
  double rest = 3 * 32;
};

Roundings countRoundings(bool odd, const BlockSpread& spread) {
  const double product = spread.fused ? 0 : 1;            // of one that is added to something
  const double skewed = spread.skewed ? 2 + product : 0;  // of X with the skew added
  const double p = 4 + 2 * product + 2 * skewed;
  const double position = 1 + product + (spread.skewed ? 2 + skewed : 0);
  return {.p = p,
          .even = 3 + p + position + (odd ? 1 : 0),
          .odd = 2 + p + 1 + (1 + product) + position,
          .linear = 3 + product + skewed};
}

// Of positions computed in float, without the remainder of the polynomial.
double floatError(const LensNode& node, const Sizes& z, const BlockSpread& spread) {
  const Roundings count = countRoundings(node.odd, spread);
  const double extent = std::max(spread.across, spread.down);
  const double square = count.p * z.P + 2 * z.largest * z.largest;  // of r
  return kFloat *
         (count.even * z.A * z.H * z.P + z.focal * square * z.O + count.odd * z.A * z.off * z.O +
          count.linear * std::abs(node.value) * extent + count.rest);
}

// Of anything computed in double: the steps of the maps' rays and the operations after them.
double doubleError(const LensNode& node, const Sizes& z, const BlockSpread& spread,
                   const lens::Camera& camera) {
  const double S = std::abs(node.value) + z.H * z.P + z.off * z.O;
  // r |dS/dr|, where dq/dr = 2 r
  const double slope = z.largest * (2 * z.largest * (z.H + z.off * z.slopeO) + z.O);
  const double centre = 32 * std::max(std::abs(camera.cx), std::abs(camera.cy));
  return z.focal * (S + slope) * spread.rayError + 32 * kDouble * (z.A * S + centre);
}

void setBounds(LensNode& node, const Sizes& z, double remainder, const BlockSpread& spread,
               const lens::Camera& camera) {
  const double always = z.A * remainder + doubleError(node, z, spread, camera);
  const double error = always + floatError(node, z, spread);
  const double offset =
      std::max(spread.across, spread.down) * std::abs(node.value) + z.A * (z.H * z.P + z.off * z.O);
  // Beyond 2^23 whole pixels and halves do not fit float.
  if (error < kLargestError && offset < kLargestOffset && z.A < 0x1p23) {
    node.safe = static_cast<float>(0.5 - error - 0x1p-25);  // and its own rounding
    node.sure = 0.5 - always;
    node.usual = !node.odd;
    node.extent = static_cast<int>(offset / 32) + 2;
  }
}

LensNode nodeAt(const lens::Camera& camera, double r, bool hasOdd, const BlockSpread& spread) {
  const double q = r * r;
  const double P = reachAbout(r, spread);
  const double rho = kDisc * (hasOdd ? 1 + q : q);
  LensNode node;
  node.odd = hasOdd;
  node.radius = r;
  if (!(P <= kFurthestShare * rho)) {
    return node;
  }
  // theta_d/r = G + k0 r G^2 + k1 q G^3
  const Expansion G = arcTangentRatio(q, rho);
  const Expansion G2 = G * G;
  Expansion odd = 32 * camera.k0 * G2;
  Expansion even = 32.0 * G + 32 * camera.k1 * (identity(q, rho) * (G2 * G));
  Sizes z{.focal = std::max(std::abs(camera.fx), std::abs(camera.fy)),
          .largest = r + kHalfSpacing + spread.reach,
          .off = kHalfSpacing + spread.reach,
          .A = 0,
          .P = P,
          .H = 0,
          .O = 0,
          .slopeO = 0};
  z.A = z.focal * z.largest;
  double remainder = 0;
  if (hasOdd) {
    remainder = z.largest * economise(odd, LensNode::kDegree - 1, P, rho);
    std::copy_n(odd.terms.begin(), LensNode::kDegree, node.o.begin());
  } else {
    even = even + squareRoot(q, rho) * odd;
  }
  remainder += economise(even, LensNode::kDegree, P, rho);
  node.value = even.terms[0] + r * node.o[0];
  std::copy_n(even.terms.begin() + 1, LensNode::kDegree, node.c.begin());
  for (std::size_t k = 1; k < LensNode::kDegree; ++k) {  // r o = (r - r_n) o + r_n o
    node.c[k - 1] += r * node.o[k];
  }
  const auto rounded = [](double a) { return static_cast<float>(a); };
  std::transform(node.c.begin(), node.c.end(), node.cFloat.begin(), rounded);
  std::transform(node.o.begin(), node.o.end(), node.oFloat.begin(), rounded);
  z.H = weightedSum(node.c, P);
  z.O = weightedSum(node.o, P);
  z.slopeO = slopeSum(node.o, P);
  setBounds(node, z, remainder, spread, camera);
  return node;
}

// The form without square roots where it is about as precise as the other.
LensNode betterNode(const lens::Camera& camera, double r, const BlockSpread& spread) {
  constexpr float kPrecise = 0.499F;
  const LensNode far = nodeAt(camera, r, false, spread);
  if (far.safe > kPrecise) {
    return far;
  }
  const LensNode near = nodeAt(camera, r, true, spread);
  return near.safe > far.safe ? near : far;
}

}  // namespace

std::size_t LensTable::sizeFor(double radius) {
  const double covered = radius < kLargestRadius ? radius : kLargestRadius;
  return static_cast<std::size_t>(std::ceil(covered * kNodesPerUnit)) + 2;
}

void LensTable::append(const lens::Camera& camera, double radius, const BlockSpread& spread) {
  const std::size_t last = sizeFor(radius) - 1;
  for (std::size_t n = 0; n < last; ++n) {
    nodes_.push_back(betterNode(camera, static_cast<double>(n) / kNodesPerUnit, spread));
  }
  nodes_.emplace_back();
}

}  // namespace fisheye_calibration::rendering
