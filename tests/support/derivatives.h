// Two independent oracles for Jacobians: central differences of any function, and forward-mode
// automatic differentiation with dual numbers.
#pragma once

#include <array>
#include <cmath>
#include <functional>
#include <opencv2/core.hpp>

namespace support {

// Central differences of f: R^n -> R^m at x (a column), as m x n. The step of parameter j is
// step * max(1, |x_j|); two step sizes are combined (Richardson) so that the error is O(step^4).
cv::Mat centralDifferences(const std::function<cv::Mat(const cv::Mat&)>& f, const cv::Mat& x,
                           double step = 1e-4);

// Largest |a - b| in units of each column's largest entry of b (1 if that is smaller).
double largestRelativeDifference(const cv::Mat& a, const cv::Mat& b);

// A value with its derivatives with respect to N parameters: a + sum_i b_i e_i, e_i e_j = 0.
template <int N>
struct Dual {
  double value = 0;
  std::array<double, N> slope{};

  Dual() = default;
  Dual(double constant) : value(constant) {}  // NOLINT: numbers are dual numbers of slope 0
  static Dual parameter(double at, int index) {
    Dual dual(at);
    dual.slope[static_cast<size_t>(index)] = 1;
    return dual;
  }

  // The chain rule: f(a) with f'(a) = outer.
  Dual through(double image, double outer) const {
    Dual result(image);
    for (size_t i = 0; i < slope.size(); ++i) result.slope[i] = outer * slope[i];
    return result;
  }
};

template <int N>
Dual<N> operator+(Dual<N> a, const Dual<N>& b) {
  a.value += b.value;
  for (size_t i = 0; i < a.slope.size(); ++i) a.slope[i] += b.slope[i];
  return a;
}
template <int N>
Dual<N> operator-(Dual<N> a, const Dual<N>& b) {
  a.value -= b.value;
  for (size_t i = 0; i < a.slope.size(); ++i) a.slope[i] -= b.slope[i];
  return a;
}
template <int N>
Dual<N> operator*(const Dual<N>& a, const Dual<N>& b) {
  Dual<N> product(a.value * b.value);
  for (size_t i = 0; i < a.slope.size(); ++i) {
    product.slope[i] = a.slope[i] * b.value + a.value * b.slope[i];
  }
  return product;
}
template <int N>
Dual<N> operator/(const Dual<N>& a, const Dual<N>& b) {
  Dual<N> quotient(a.value / b.value);
  for (size_t i = 0; i < a.slope.size(); ++i) {
    quotient.slope[i] = (a.slope[i] - quotient.value * b.slope[i]) / b.value;
  }
  return quotient;
}
template <int N>
Dual<N> sqrt(const Dual<N>& a) {
  return a.through(std::sqrt(a.value), 0.5 / std::sqrt(a.value));
}
template <int N>
Dual<N> atan(const Dual<N>& a) {
  return a.through(std::atan(a.value), 1 / (1 + a.value * a.value));
}
template <int N>
Dual<N> sin(const Dual<N>& a) {
  return a.through(std::sin(a.value), std::cos(a.value));
}
template <int N>
Dual<N> cos(const Dual<N>& a) {
  return a.through(std::cos(a.value), -std::sin(a.value));
}

// The camera's parameters in the order of the Jacobian's columns.
template <class Scalar>
struct ProjectionParameters {
  Scalar fx, fy, cx, cy, k0, k1;
  std::array<Scalar, 3> om, T;
  Scalar alpha;
};

// Projection of the target point X, away from the optical axis and with a rotation that is not 0:
//
//   Y = X cos w + (a x X) sin w + a (a . X)(1 - cos w) + T,   w = |om|, a = om/w
//   theta = atan sqrt(x^2 + y^2), theta_d = theta + k0 theta^2 + k1 theta^3
template <class Scalar>
std::array<Scalar, 2> projectPoint(const cv::Point3d& X, const ProjectionParameters<Scalar>& p) {
  using std::atan;
  using std::cos;
  using std::sin;
  using std::sqrt;
  const Scalar w = sqrt(p.om[0] * p.om[0] + p.om[1] * p.om[1] + p.om[2] * p.om[2]);
  const std::array<Scalar, 3> a = {p.om[0] / w, p.om[1] / w, p.om[2] / w};
  const std::array<Scalar, 3> x = {Scalar(X.x), Scalar(X.y), Scalar(X.z)};
  const Scalar along = (a[0] * x[0] + a[1] * x[1] + a[2] * x[2]) * (Scalar(1) - cos(w));
  std::array<Scalar, 3> Y;
  for (size_t i = 0; i < 3; ++i) {
    const size_t j = (i + 1) % 3;
    const size_t k = (i + 2) % 3;
    Y[i] = x[i] * cos(w) + (a[j] * x[k] - a[k] * x[j]) * sin(w) + a[i] * along + p.T[i];
  }
  const Scalar u = Y[0] / Y[2];
  const Scalar v = Y[1] / Y[2];
  const Scalar r = sqrt(u * u + v * v);
  const Scalar theta = atan(r);
  const Scalar thetaD = theta + p.k0 * theta * theta + p.k1 * theta * theta * theta;
  const Scalar xd = u * thetaD / r;
  const Scalar yd = v * thetaD / r;
  return {p.fx * (xd + p.alpha * yd) + p.cx, p.fy * yd + p.cy};
}

// The 13 parameters as a column, in the order of the Jacobian's columns, as numbers or as dual
// numbers with unit slopes.
ProjectionParameters<double> projectionParameters(const cv::Mat& column);
ProjectionParameters<Dual<13>> dualProjectionParameters(const cv::Mat& column);

// 2N x 13 Jacobian of the projection by automatic differentiation.
cv::Mat differentiatedProjection(const std::vector<cv::Point3d>& points, const cv::Mat& column);

}  // namespace support
