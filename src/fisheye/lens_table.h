// The lens's radial factor as a table of polynomials with a proven error bound.
#pragma once

#include <cstddef>
#include <vector>

#include "fisheye/camera.h"

namespace fisheye {

// s(r) = theta_d(atan r)/r, expanded about r_n = n/64 to degree seven: s(r_n + t) = sum c_k t^k.
class LensTable {
 public:
  static constexpr std::size_t kCoefficients = 8;
  static constexpr double kNodesPerUnit = 64;
  static constexpr double kReach = 0.05;       // largest |t| for which the bound holds
  static constexpr double kLargestRadius = 8;  // beyond lies nothing that a camera shows well

  // Covers 0 <= r <= radius, or kLargestRadius where that is less.
  LensTable(const Camera& camera, double radius);

  std::size_t nodes() const { return coefficients_.size() / kCoefficients; }
  const double* node(std::size_t n) const { return &coefficients_[n * kCoefficients]; }

  // |s(r_n + t) - polynomial| stays below this for |t| <= kReach at every node.
  double errorBound() const { return errorBound_; }

  // Bounds of |s| and |ds/dr| for every r.
  double factorBound() const { return factorBound_; }
  double slopeBound() const { return slopeBound_; }

 private:
  std::vector<double> coefficients_;
  double factorBound_;
  double slopeBound_;
  double errorBound_ = 0;
};

}  // namespace fisheye
