#include "rendering/power_series.h"

#include <cmath>

namespace fisheye_calibration::rendering {
namespace {

// 2 G' q + G = 1/(1 + q) relates each term of G to the next one,
//   (2 k + 1) g_k + 2 q (k + 1) g_(k + 1) = e_k, e_k = (-1)^k/(1 + q)^(k + 1).
// Errors shrink by about q from g_(k + 1) to g_k, and by 1/q the other way.
constexpr double kSmallSquare = 0.7;

// From g_kFirst = 0 down; 0.7^104 leaves nothing of the error.
Series smallRatio(double q) {
  constexpr int kFirst = 120;
  Series g{};
  double e = std::pow(1 + q, -(kFirst + 1));  // |e_k|
  double next = 0;
  for (int k = kFirst; k >= 0; --k) {
    const double sign = k % 2 == 0 ? 1 : -1;
    next = (sign * e - 2 * q * (k + 1) * next) / (2 * k + 1);
    e *= 1 + q;
    if (static_cast<std::size_t>(k) < kSeriesTerms) {
      g[static_cast<std::size_t>(k)] = next;
    }
  }
  return g;
}

Series largeRatio(double q) {
  Series g{};
  const double r = std::sqrt(q);
  g[0] = std::atan(r) / r;
  double e = 1 / (1 + q);
  for (std::size_t n = 0; n + 1 < kSeriesTerms; ++n) {
    const auto k = static_cast<double>(n);
    g[n + 1] = (e - (2 * k + 1) * g[n]) / (2 * q * (k + 1));
    e /= -(1 + q);
  }
  return g;
}

// T_k/2^(k - 1): the leading coefficient is 1, and |T_k| <= 1 on [-1, 1].
struct MonicChebyshev {
  double c[kSeriesTerms][kSeriesTerms] = {};

  constexpr MonicChebyshev() {
    c[0][0] = 1;
    c[1][1] = 1;
    for (std::size_t k = 2; k < kSeriesTerms; ++k) {
      // T_k = 2 t T_(k-1) - T_(k-2)
      const double share = k == 2 ? 0.5 : 0.25;
      for (std::size_t i = 0; i < k; ++i) {
        c[k][i + 1] += c[k - 1][i];
        c[k][i] -= share * c[k - 2][i];
      }
    }
  }
};
constexpr MonicChebyshev kChebyshev;

// Rounding of the terms and of all operations on them stays below this share of the bound where
// |p| <= 0.7 rho.
constexpr double kRounding = 1e-13;

}  // namespace

Expansion operator+(const Expansion& a, const Expansion& b) {
  Expansion sum{a.terms, a.bound + b.bound};
  for (std::size_t k = 0; k < kSeriesTerms; ++k) {
    sum.terms[k] += b.terms[k];
  }
  return sum;
}

Expansion operator*(const Expansion& a, const Expansion& b) {
  Expansion product;
  for (std::size_t i = 0; i < kSeriesTerms; ++i) {
    for (std::size_t j = 0; i + j < kSeriesTerms; ++j) {
      product.terms[i + j] += a.terms[i] * b.terms[j];
    }
  }
  product.bound = a.bound * b.bound;
  return product;
}

Expansion operator*(double factor, const Expansion& a) {
  Expansion scaled = a;
  for (double& term : scaled.terms) {
    term *= factor;
  }
  scaled.bound *= std::abs(factor);
  return scaled;
}

// g_k = (-1)^k integral from 0 to 1 of t^2k/(1 + q t^2)^(k + 1) dt, so |g_k| <= G(q) (1 + q)^-k,
// and the sum of |g_k| rho^k is at most G(q)/(1 - rho/(1 + q)).
Expansion arcTangentRatio(double q, double rho) {
  Expansion g;
  g.terms = q < kSmallSquare ? smallRatio(q) : largeRatio(q);
  g.bound = g.terms[0] / (1 - rho / (1 + q));
  return g;
}

Expansion squareRoot(double q, double rho) {
  Expansion root;
  double term = std::sqrt(q);
  for (std::size_t n = 0; n < kSeriesTerms; ++n) {
    const auto k = static_cast<double>(n);
    root.terms[n] = term;
    term *= (0.5 - k) / (k + 1) / q;
  }
  root.bound = std::sqrt(q + rho);
  return root;
}

Expansion identity(double q, double rho) {
  Expansion itself;
  itself.terms = {q, 1};
  itself.bound = q + rho;
  return itself;
}

// By Cauchy's estimate |f_k| <= bound rho^-k, which bounds the terms after the last one. Each of
// the others above the degree is replaced, in t = p/reach, by what remains of t^k - T_k/2^(k - 1).
double economise(Expansion& f, std::size_t degree, double reach, double rho) {
  const double share = reach / rho;
  double error =
      f.bound * (std::pow(share, static_cast<double>(kSeriesTerms)) / (1 - share) + kRounding);
  double power = 1;
  for (double& term : f.terms) {
    term *= power;
    power *= reach;
  }
  for (std::size_t k = kSeriesTerms - 1; k > degree; --k) {
    const double leading = f.terms[k];
    for (std::size_t i = k % 2; i <= k; i += 2) {
      f.terms[i] -= leading * kChebyshev.c[k][i];
    }
    error += std::ldexp(std::abs(leading), 1 - static_cast<int>(k));
  }
  power = 1;
  for (double& term : f.terms) {
    term /= power;
    power *= reach;
  }
  return error;
}

}  // namespace fisheye_calibration::rendering
