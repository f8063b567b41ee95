// The table's polynomials and bounds against the lens's formula in extended precision.
#include "rendering/lens_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <opencv2/core.hpp>

#include "support/dice.h"

using namespace fisheye_calibration;

namespace {

using rendering::LensTable;
using support::Dice;

lens::Camera lens(double k0, double k1) {
  lens::Camera camera;
  camera.k0 = k0;
  camera.k1 = k1;
  return camera;
}

// s(r) = theta_d/r with theta_d = theta + k0 theta^2 + k1 theta^3, theta = atan r. Also for r < 0.
long double radialFactor(const lens::Camera& camera, long double r) {
  const long double theta = std::atan(r);
  return theta * (1 + theta * (camera.k0 + theta * camera.k1)) / r;
}

// ds/dr = (d theta_d/dr - s)/r, d theta_d/dr = (1 + 2 k0 theta + 3 k1 theta^2)/(1 + r^2).
long double radialSlope(const lens::Camera& camera, long double r) {
  const long double theta = std::atan(r);
  const long double rise = (1 + theta * (2 * camera.k0 + theta * 3 * camera.k1)) / (1 + r * r);
  return (rise - radialFactor(camera, r)) / r;
}

struct Polynomial {
  long double value;
  long double rounding;  // what the coefficients' rounding to float may add up to
};

Polynomial evaluate(const LensTable::Node& node, long double t) {
  Polynomial sum{node.value, 0};
  long double power = 1;
  for (const float c : node.c) {
    power *= t;
    const long double term = static_cast<long double>(c) * power;
    sum.value += term;
    sum.rounding += std::abs(term) * 0x1p-24L;
  }
  return sum;
}

void expectWithinBound(const lens::Camera& camera, double reach, Dice& dice) {
  const LensTable table(camera, LensTable::kLargestRadius);
  const long double bound = table.remainderBound(reach);
  for (int i = 0; i < 5000; ++i) {
    const int n = dice.whole(0, static_cast<int>(table.size()) - 1);
    const long double t = dice.number(reach);
    const long double r = n / static_cast<long double>(LensTable::kNodesPerUnit) + t;
    if (r == 0) continue;
    const Polynomial sum = evaluate(table[static_cast<std::size_t>(n)], t);
    ASSERT_LE(std::abs(sum.value - radialFactor(camera, r)), bound + sum.rounding)
        << "node " << n << ", t " << static_cast<double>(t);
  }
}

TEST(LensTable, PolynomialsStayWithinTheRemainderBound) {
  Dice dice(1);
  for (int i = 0; i < 40; ++i) {
    const double reach = LensTable::kLargestReach * dice.magnitude(1e-3, 1);
    expectWithinBound(lens(dice.number(0.2), dice.number(0.2)), reach, dice);
  }
}

TEST(LensTable, PolynomialsOfUnusualLensesStayWithinTheRemainderBound) {
  Dice dice(2);
  for (int i = 0; i < 20; ++i) {
    const double reach = dice.magnitude(1e-3, 1);
    expectWithinBound(lens(dice.number(100), dice.number(100)), LensTable::kLargestReach * reach,
                      dice);
  }
}

TEST(LensTable, PolynomialsOfAnUndistortedLensStayWithinTheRemainderBound) {
  Dice dice(3);
  expectWithinBound(lens(0, 0), LensTable::kLargestReach, dice);
}

// What six terms leave at the node on the axis is -44/105 k0 r^7 and, with k0 = 1 and k1 = 1/3,
// hardly anything of rounding: the coefficients of r and r^2 are 1 and 0.
TEST(LensTable, RemainderWorkedOutByHandIsWithinItsBound) {
  const lens::Camera camera = lens(1, 1.0 / 3);
  const LensTable table(camera, 1);
  const long double t = LensTable::kLargestReach;
  const long double error = radialFactor(camera, t) - evaluate(table[0], t).value;
  const double remainder = -44.0 / 105 * std::pow(LensTable::kLargestReach, 7);
  EXPECT_NEAR(static_cast<double>(error), remainder, -0.2 * remainder);
  EXPECT_LT(std::abs(error), table.remainderBound(LensTable::kLargestReach));
}

// About r = 0: atan r = r - r^3/3 + r^5/5 - r^7/7, so that
//   theta^2 = r^2 - 2/3 r^4 + 23/45 r^6, theta^3 = r^3 - r^5 + 14/15 r^7,
//   theta_d/r = 1 + k0 r + (k1 - 1/3) r^2 - 2/3 k0 r^3 + (1/5 - k1) r^4 + 23/45 k0 r^5
//               + (14/15 k1 - 1/7) r^6.
TEST(LensTable, NodeOnTheAxisHoldsTheSeriesWorkedOutByHand) {
  const double k0 = 0.25;
  const double k1 = -0.5;
  const LensTable table(lens(k0, k1), 1);
  const LensTable::Node& node = table[0];
  EXPECT_EQ(node.value, 1);
  EXPECT_FLOAT_EQ(node.c[0], 0.25F);
  EXPECT_FLOAT_EQ(node.c[1], -5.0F / 6);
  EXPECT_FLOAT_EQ(node.c[2], -1.0F / 6);
  EXPECT_FLOAT_EQ(node.c[3], 0.7F);
  EXPECT_FLOAT_EQ(node.c[4], 23.0F / 180);
  EXPECT_FLOAT_EQ(node.c[5], -7.0F / 15 - 1.0F / 7);
}

// Samples |s| and r |ds/dr| within the reach of all nodes.
struct Largest {
  long double factor = 0;
  long double slope = 0;
};

Largest sampled(const lens::Camera& camera, const LensTable& table) {
  Largest largest;
  const double end =
      static_cast<double>(table.size() - 1) / LensTable::kNodesPerUnit + LensTable::kLargestReach;
  constexpr int kSteps = 4000;
  for (int i = 1; i <= kSteps; ++i) {
    const long double r = static_cast<long double>(end) * i / kSteps;
    largest.factor = std::max(largest.factor, std::abs(radialFactor(camera, r)));
    largest.slope = std::max(largest.slope, r * std::abs(radialSlope(camera, r)));
  }
  return largest;
}

TEST(LensTable, BoundsHoldForSampledRadii) {
  Dice dice(4);
  for (int i = 0; i < 300; ++i) {
    const double reach = dice.oneIn(2) ? 0.2 : dice.magnitude(0.1, 100);
    const lens::Camera camera = lens(dice.number(reach), dice.number(reach));
    const LensTable table(camera, dice.magnitude(0.01, 20));
    const Largest largest = sampled(camera, table);
    ASSERT_LE(largest.factor, table.largestFactor()) << camera.k0 << ", " << camera.k1;
    ASSERT_LE(largest.slope, table.slopeBound()) << camera.k0 << ", " << camera.k1;
  }
}

// Loose bounds would be right, but would have most positions computed twice.
TEST(LensTable, BoundsOfAnOrdinaryLensAreClose) {
  const lens::Camera camera = lens(0.02, -0.03);
  const LensTable table(camera, 2);
  const Largest largest = sampled(camera, table);
  EXPECT_LT(table.largestFactor(), 1.1 * largest.factor);
  EXPECT_LT(table.slopeBound(), 1.2 * largest.slope);
  EXPECT_LT(table.remainderBound(LensTable::kLargestReach), 1e-8);
}

TEST(LensTable, FactorBoundHoldsForEveryRadius) {
  Dice dice(5);
  for (int i = 0; i < 100; ++i) {
    const lens::Camera camera = lens(dice.number(10), dice.number(10));
    const LensTable table(camera, 0.1);
    for (int k = 0; k < 200; ++k) {
      const double r = dice.magnitude(1e-6, 1e12);
      ASSERT_LE(std::abs(radialFactor(camera, r)), table.factorBound()) << r;
    }
  }
}

// The remainder's bound rests on this: Cauchy's estimate on discs of radius 0.9 about the nodes.
// The largest value lies on their edges.
TEST(LensTable, FactorBoundHoldsOnDiscsAboutTheNodes) {
  using Complex = std::complex<double>;
  Dice dice(6);
  for (int i = 0; i < 100; ++i) {
    const double reach = dice.magnitude(1e-3, 100);
    const lens::Camera camera = lens(dice.number(reach), dice.number(reach));
    const LensTable table(camera, 2);
    for (int k = 0; k < 500; ++k) {
      const double node = dice.oneIn(4) ? 0 : dice.whole(0, 128) / LensTable::kNodesPerUnit;
      const Complex z = node + std::polar(0.9, dice.number(CV_PI));
      const Complex theta = std::atan(z);
      const Complex s = theta * (1.0 + theta * (camera.k0 + theta * camera.k1)) / z;
      ASSERT_LE(std::abs(s), table.factorBound()) << z;
    }
  }
}

TEST(LensTable, CoversTheRequestedRadius) {
  EXPECT_EQ(LensTable(lens(0, 0), 0).size(), 1U);
  EXPECT_EQ(LensTable(lens(0, 0), 1).size(), 65U);
  EXPECT_EQ(LensTable(lens(0, 0), 1.001).size(), 66U);
}

TEST(LensTable, EndsAtTheLargestRadius) {
  EXPECT_EQ(LensTable(lens(0, 0), 1e300).size(), 513U);
  EXPECT_EQ(LensTable(lens(0, 0), std::nan("")).size(), 513U);
}

}  // namespace
