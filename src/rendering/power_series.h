// Power series with a proven bound on the terms that are left out.
#pragma once

#include <array>
#include <cstddef>

namespace fisheye_calibration::rendering {

constexpr std::size_t kSeriesTerms = 16;
using Series = std::array<double, kSeriesTerms>;

// The first terms of f(q + p) = f_0 + f_1 p + f_2 p^2 + ..., and a bound on |f| for complex p with
// |p| <= rho. Sums and products have the sums and products of the bounds.
struct Expansion {
  Series terms{};
  double bound = 0;
};

Expansion operator+(const Expansion& a, const Expansion& b);
Expansion operator*(const Expansion& a, const Expansion& b);
Expansion operator*(double factor, const Expansion& a);

// About q >= 0, for rho below the distance of the nearest singularity: -1 for G, 0 for the root.
Expansion arcTangentRatio(double q, double rho);  // G = atan(sqrt q)/sqrt q
Expansion squareRoot(double q, double rho);       // sqrt q, for q > 0
Expansion identity(double q, double rho);         // q itself

// Leaves a polynomial of this degree that is nearly the best on |p| <= reach < rho (economisation
// with Chebyshev polynomials). Returns a bound on the difference from f there, rounding of the
// terms included.
double economise(Expansion& f, std::size_t degree, double reach, double rho);

}  // namespace fisheye_calibration::rendering
