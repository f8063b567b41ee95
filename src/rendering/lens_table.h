// The lens's radial factor as a table of polynomials with proven error bounds.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "lens/camera.h"

namespace fisheye_calibration::rendering {

// How far the pixels of any block of the view spread, and what is lost before the polynomials are
// evaluated.
struct BlockSpread {
  double reach = 0;   // from the block's middle, in normalised coordinates
  double across = 0;  // |fx x - fx x_m| at most, in pixels
  double down = 0;    // |fy y - fy y_m| at most, in pixels
  bool skewed = false;
  bool fused = false;   // float products are added without being rounded first
  double rayError = 0;  // of the rays that the undistortion maps step, in normalised coordinates
};

// S(q) = 32 theta_d(atan r)/r, q = r^2, about q_n = r_n^2, with p = q - q_n:
//   away from the axis  S = value + c_1 p + ... + c_5 p^5
//   near it             S = value + c_1 p + ... + c_5 p^5 + (r - r_n) (o_0 + ... + o_4 p^4)
// A raw position, in 1/32 pixel, is (fx x S + 32 cx, fy y S + 32 cy).
struct LensNode {
  static constexpr std::size_t kDegree = 5;

  bool odd = false;    // has odd terms: near the axis
  bool usual = false;  // safe and without odd terms
  double radius = 0;   // r_n
  double value = 0;
  std::array<double, kDegree> c{};
  std::array<double, kDegree> o{};
  std::array<float, kDegree> cFloat{};  // the same, rounded
  std::array<float, kDegree> oFloat{};

  // A position computed in float (safe) or double (sure) is rounded correctly if it is closer than
  // this to a whole number of 1/32 pixels. 0 if blocks about this node cannot be computed in float.
  float safe = 0;
  double sure = 0;
  // Raw pixels that a block can extend from the position of its middle, at most; 2^16 if unknown.
  std::int32_t extent = 1 << 16;
};

// One table or several, one after the other.
class LensTable {
 public:
  static constexpr double kNodesPerUnit = 32;
  static constexpr double kLargestRadius =
      8;  // farther from the axis, cameras hardly show anything

  // Makes room for `nodes` nodes in all, so that appending needs no more memory than they take.
  void reserve(std::size_t nodes) { nodes_.reserve(nodes); }

  // The nodes of a table that covers 0 <= r <= min(radius, kLargestRadius).
  static std::size_t sizeFor(double radius);
  // Appends such a table. Its last node stands for all radii beyond and is not safe.
  void append(const lens::Camera& camera, double radius, const BlockSpread& spread);

  std::size_t size() const { return nodes_.size(); }
  const LensNode& operator[](std::size_t n) const { return nodes_[n]; }
  std::span<const LensNode> nodes() const { return nodes_; }

 private:
  std::vector<LensNode> nodes_;
};

}  // namespace fisheye_calibration::rendering
