// The lens's radial factor as a table of polynomials with a proven error bound.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "lens/camera.h"

namespace fisheye_calibration::rendering {

// s(r) = theta_d(atan r)/r, expanded about r_n = n/64: s(r_n + t) = value + c_1 t + ... + c_6 t^6.
class LensTable {
 public:
  static constexpr std::size_t kDegree = 6;
  static constexpr double kNodesPerUnit = 64;
  static constexpr double kLargestReach = 0.05;  // |t| for which the bounds hold
  static constexpr double kLargestRadius = 8;    // beyond this no camera shows anything well

  struct Node {
    double value;
    std::array<float, kDegree> c;  // c_1 ... c_6
  };

  // Covers 0 <= r <= min(radius, kLargestRadius).
  LensTable(const lens::Camera& camera, double radius);

  std::size_t size() const { return nodes_.size(); }
  const Node& operator[](std::size_t n) const { return nodes_[n]; }

  // |s(r_n + t) - polynomial with exact coefficients| stays below this for |t| <= reach.
  double remainderBound(double reach) const;

  // Bounds on |s| for every r, and on |s| and r |ds/dr| within kLargestReach of the nodes.
  double factorBound() const { return factorBound_; }
  double largestFactor() const { return largestFactor_; }
  double slopeBound() const { return slopeBound_; }

 private:
  std::vector<Node> nodes_;
  double factorBound_;
  double largestFactor_ = 0;
  double slopeBound_ = 0;
};

}  // namespace fisheye_calibration::rendering
