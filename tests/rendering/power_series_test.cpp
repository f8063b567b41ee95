// Power series against the functions in extended precision, and their bounds.
#include "rendering/power_series.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>

#include "support/dice.h"

using namespace fisheye_calibration;

namespace {

using rendering::arcTangentRatio;
using rendering::economise;
using rendering::Expansion;
using rendering::identity;
using rendering::kSeriesTerms;
using rendering::squareRoot;
using support::Dice;

constexpr double kPi = 3.14159265358979323846;

// The functions for any s > -1, or s > 0.
long double ratioAt(long double s) {
  const long double root = std::sqrt(std::abs(s));
  if (root == 0) return 1;
  return (s > 0 ? std::atan(root) : std::atanh(root)) / root;
}
long double rootAt(long double s) { return std::sqrt(s); }

// The terms up to the degree, summed from the smallest power up.
long double sum(const Expansion& f, long double p, std::size_t degree = kSeriesTerms - 1) {
  long double total = 0;
  long double power = 1;
  for (std::size_t k = 0; k <= degree; ++k) {
    total += f.terms[k] * power;
    power *= p;
  }
  return total;
}

// What the terms after the last one may add up to at |p| = share rho, and 1e-13 for rounding.
long double tail(const Expansion& f, double share) {
  return f.bound * (std::pow(share, 16) / (1 - share) + 1e-13);
}

// A lens's q is r^2 for r up to 8; about the axis, in the middle and far from it.
double anySquare(Dice& dice) {
  if (dice.oneIn(10)) return 0;
  return dice.oneIn(2) ? dice.uniform(0, 2) : dice.magnitude(1e-6, 64);
}

template <class Make, class Function>
void expectTermsOf(std::uint64_t seed, double singularity, const Make& make,
                   const Function& function) {
  Dice dice(seed);
  for (int i = 0; i < 4000; ++i) {
    const double q = anySquare(dice);
    const double rho = dice.uniform(0.1, 0.95) * (q - singularity);
    if (rho <= 0) continue;
    const Expansion f = make(q, rho);
    const double share = dice.oneIn(2) ? 0.1 : dice.uniform(0.1, 0.7);
    const double p = dice.number(share * rho);
    ASSERT_LE(std::abs(sum(f, p) - function(static_cast<long double>(q) + p)), tail(f, share))
        << "q " << q << ", p " << p << ", rho " << rho;
  }
}

TEST(PowerSeries, OfTheArcTangentRatioSumsUpToIt) {
  expectTermsOf(1, -1, arcTangentRatio, ratioAt);
}

TEST(PowerSeries, OfTheSquareRootSumsUpToIt) { expectTermsOf(2, 0, squareRoot, rootAt); }

TEST(PowerSeries, OfTheIdentitySumsUpToIt) {
  expectTermsOf(3, -1, identity, [](long double s) { return s; });
}

// theta^2 and sqrt(q) G^2 etc. are made of such products.
TEST(PowerSeries, OfProductsAndSumsSumUpToThem) {
  const auto make = [](double q, double rho) {
    const Expansion G = arcTangentRatio(q, rho);
    return squareRoot(q, rho) * (-0.25 * (G * G)) + 3 * (identity(q, rho) * (G * (G * G)));
  };
  expectTermsOf(4, 0, make, [](long double s) {
    const long double G = ratioAt(s);
    return -0.25L * rootAt(s) * G * G + 3 * s * G * G * G;
  });
}

TEST(PowerSeries, OfTheArcTangentRatioOnTheAxisIsTheKnownOne) {
  const Expansion G = arcTangentRatio(0, 0.5);  // 1 - p/3 + p^2/5 - p^3/7 ...
  for (std::size_t k = 0; k < kSeriesTerms; ++k) {
    const double sign = k % 2 == 0 ? 1 : -1;
    EXPECT_NEAR(G.terms[k], sign / (2 * static_cast<double>(k) + 1), 1e-15) << k;
  }
}

// G(1) = pi/4; from 2 q G' + G = 1/(1 + q): G' = (1/2 - pi/4)/2, and from its derivative,
// 2 q G'' + 3 G' = -1/(1 + q)^2: G''/2 = (-1/4 - 3 G')/4.
TEST(PowerSeries, OfTheArcTangentRatioAboutOneStartsAsWorkedOutByHand) {
  const Expansion G = arcTangentRatio(1, 1);
  EXPECT_NEAR(G.terms[0], kPi / 4, 1e-15);
  EXPECT_NEAR(G.terms[1], 0.25 - kPi / 8, 1e-15);
  EXPECT_NEAR(G.terms[2], -0.25 + 3 * kPi / 32, 1e-15);
}

// The recurrence changes its direction there; both must give the same terms.
TEST(PowerSeries, OfTheArcTangentRatioIsSmoothWhereItsRecurrenceTurns) {
  const Expansion below = arcTangentRatio(std::nextafter(0.7, 0.0), 1);
  const Expansion above = arcTangentRatio(0.7, 1);
  for (std::size_t k = 0; k < kSeriesTerms; ++k) {
    EXPECT_NEAR(below.terms[k], above.terms[k], 1e-14) << k;
  }
}

TEST(PowerSeries, OfTheSquareRootOfFourStartsAsWorkedOutByHand) {
  const Expansion root = squareRoot(4, 2);  // 2 (1 + p/4)^(1/2)
  EXPECT_DOUBLE_EQ(root.terms[0], 2);
  EXPECT_DOUBLE_EQ(root.terms[1], 1.0 / 4);
  EXPECT_DOUBLE_EQ(root.terms[2], -1.0 / 64);
  EXPECT_DOUBLE_EQ(root.terms[3], 1.0 / 512);
}

// The largest values of analytic functions lie on the edges of the discs.
TEST(PowerSeries, BoundsHoldOnTheDiscs) {
  using Complex = std::complex<double>;
  Dice dice(5);
  for (int i = 0; i < 400; ++i) {
    const double q = anySquare(dice);
    const double share = dice.uniform(0.1, 0.95);
    const Expansion G = arcTangentRatio(q, share * (1 + q));
    const Expansion itself = identity(q, share * (1 + q));
    for (int k = 0; k < 50; ++k) {
      const Complex turn = std::polar(1.0, k == 0 ? kPi : dice.number(kPi));
      const Complex z = q + share * (1 + q) * turn;
      const Complex r = std::sqrt(z);
      ASSERT_LE(std::abs(std::atan(r) / r), G.bound * (1 + 1e-12)) << "q " << q << ", z " << z;
      ASSERT_LE(std::abs(z), itself.bound * (1 + 1e-12)) << "q " << q << ", z " << z;
      if (q > 0) {
        const Complex nearer = q + share * q * turn;
        ASSERT_LE(std::abs(std::sqrt(nearer)), squareRoot(q, share * q).bound * (1 + 1e-12));
      }
    }
  }
}

TEST(PowerSeries, BoundsOfSumsAndProductsAreThoseOfTheirParts) {
  const Expansion a{{1, 2}, 5};
  const Expansion b{{3, -4}, 7};
  EXPECT_EQ((a + b).bound, 12);
  EXPECT_EQ((a * b).bound, 35);
  EXPECT_EQ((-2.0 * a).bound, 10);
  EXPECT_EQ((-2.0 * a).terms[1], -4);
  EXPECT_EQ((a + b).terms[1], -2);
  EXPECT_EQ((a * b).terms[0], 3);
  EXPECT_EQ((a * b).terms[1], 2);
  EXPECT_EQ((a * b).terms[2], -8);
}

// ---- economisation ----

// The function, its polynomial and the promise.
struct Economised {
  double q;
  double reach;
  Expansion polynomial;
  double bound;
};

Economised economisedRatio(double q, double reach, double rho, std::size_t degree) {
  Economised e{q, reach, arcTangentRatio(q, rho), 0};
  e.bound = economise(e.polynomial, degree, reach, rho);
  return e;
}

long double errorAt(const Economised& e, long double p) {
  return std::abs(sum(e.polynomial, p) - ratioAt(e.q + p));
}

TEST(Economisation, BoundHoldsEverywhereInTheReach) {
  Dice dice(6);
  for (int i = 0; i < 500; ++i) {
    const double q = anySquare(dice);
    const double rho = 0.85 * (1 + q);
    const double reach = rho * dice.magnitude(1e-3, 0.7);
    const auto degree = static_cast<std::size_t>(dice.whole(2, 7));
    const Economised e = economisedRatio(q, reach, rho, degree);
    for (int k = 0; k <= 200; ++k) {
      ASSERT_LE(errorAt(e, reach * (k / 100.0L - 1)), e.bound) << "q " << q << ", reach " << reach;
    }
    for (std::size_t k = degree + 1; k < kSeriesTerms; ++k) {
      ASSERT_EQ(e.polynomial.terms[k], 0) << "degree " << degree << ", term " << k;
    }
  }
}

TEST(Economisation, BoundIsCloseToTheLargestError) {
  const Economised e = economisedRatio(0.5, 0.3, 0.85 * 1.5, 5);
  long double largest = 0;
  for (int k = 0; k <= 2000; ++k) {
    largest = std::max(largest, errorAt(e, e.reach * (k / 1000.0L - 1)));
  }
  EXPECT_GT(largest, 0);
  EXPECT_LT(e.bound, 3 * largest);
}

// The sixth term alone would leave 2^5 times as much: |T_6/2^5| <= 2^-5.
TEST(Economisation, IsBetterThanLeavingTermsOut) {
  const Economised e = economisedRatio(0.5, 0.1, 0.85 * 1.5, 5);
  const Expansion whole = arcTangentRatio(0.5, 0.85 * 1.5);
  const long double leftOut = std::abs(sum(whole, -0.1L, 5) - ratioAt(0.4L));
  EXPECT_LT(e.bound, leftOut / 16);
}

// f = p^2, degree 1, reach 1/2, t = 2 p: t^2 = T_2/2 + 1/2, so that the polynomial is 1/8, and the
// error 1/8.
TEST(Economisation, OfASquareIsThatWorkedOutByHand) {
  const double rho = 0.5e3;
  Expansion square{{0, 0, 1}, rho * rho};
  const double bound = economise(square, 1, 0.5, rho);
  EXPECT_DOUBLE_EQ(square.terms[0], 0.125);
  EXPECT_DOUBLE_EQ(square.terms[1], 0);
  EXPECT_EQ(square.terms[2], 0);
  EXPECT_NEAR(bound, 0.125, 1e-6);
}

// f = p^3, degree 2, reach 1: t^3 = T_3/4 + 3/4 t.
TEST(Economisation, OfACubeIsThatWorkedOutByHand) {
  Expansion cube{{0, 0, 0, 1}, 1e9};
  const double bound = economise(cube, 2, 1, 1e3);
  EXPECT_DOUBLE_EQ(cube.terms[1], 0.75);
  EXPECT_DOUBLE_EQ(cube.terms[0], 0);
  EXPECT_DOUBLE_EQ(cube.terms[2], 0);
  EXPECT_NEAR(bound, 0.25, 1e-3);
}

}  // namespace
