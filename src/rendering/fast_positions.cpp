#include "rendering/fast_positions.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace fisheye_calibration::rendering {
namespace {

// The rays as linear functions of the pixel's coordinates: exact, except for the rounding of the
// steps, if the last row of iR is (0, 0, W) with W > 0.
cv::Matx23d linearRays(const cv::Matx33d& iR) {
  const double W = iR(2, 2);
  return {iR(0, 0) / W, iR(0, 1) / W, iR(0, 2) / W, iR(1, 0) / W, iR(1, 1) / W, iR(1, 2) / W};
}

// |coefficients| . (width, height, 1): a bound on the coordinate and all its terms.
double coordinateBound(const cv::Matx23d& linear, int coordinate, const cv::Size& size) {
  return std::abs(linear(coordinate, 0)) * size.width +
         std::abs(linear(coordinate, 1)) * size.height + std::abs(linear(coordinate, 2));
}

double radiusBound(const cv::Matx23d& linear, const cv::Size& size) {
  return std::hypot(coordinateBound(linear, 0, size), coordinateBound(linear, 1, size));
}

// Groups extend to a dozen pixels if the table's reach allows it.
constexpr double kGroupPixels = 12;
constexpr double kLargestGroupReach = 0.028;

double groupReachOf(const cv::Matx23d& linear) {
  return std::min(kGroupPixels * std::max(std::abs(linear(0, 0)), std::abs(linear(1, 1))),
                  kLargestGroupReach);
}

}  // namespace

FastPositions::FastPositions(const RectifyingRays& rays, const cv::Size& size)
    : rays_(rays),
      linear_(linearRays(rays.iR)),
      table_(rays.camera, radiusBound(linear_, size)),
      groupReach_(groupReachOf(linear_)),
      nodeReach_(0.5 / LensTable::kNodesPerUnit + 1.5 * groupReach_),
      smallestRadius_(std::max(2 * groupReach_, 1 / LensTable::kNodesPerUnit)) {
  const lens::Camera& camera = rays.camera;
  const bool finite = std::isfinite(camera.fx + camera.fy + camera.cx + camera.cy);
  const cv::Matx33d& iR = rays.iR;
  const bool pinhole = iR(1, 0) == 0 && iR(2, 0) == 0 && iR(2, 1) == 0 && iR(2, 2) > 0;
  const bool nearlySquare = std::abs(iR(0, 1)) <= std::abs(iR(1, 1));
  const double margin = 1.1 * errorBound(size);
  if (finite && pinhole && nearlySquare && margin < 0.125) {
    safeDistance_ = 0.5 - margin;
  }
}

// Bound on the error of a position computed in a group, in 1/32 pixel. Below, e = 2^-24 is the
// relative error of one operation in float, R the group's reach (|dx|, |dy| <= R), T the node's
// (|t| <= T), r the radius of the middle pixel; r >= 2 R and r >= 1/64. With skew, dx has two terms
// of at most 2 R and R. F = 32 max(fx, fy), S is a bound on (r + 0.05) |ds/dr|.
//   dx        7 e R (2 e R without skew)
//   p         34 e R r of products, 2 e r (0.02 + 3.9 R) of sums, 0.02 e r of its first term
//   fx x D    of p: dt/dp = 1/(2 sqrt q) and |x + dx| <= sqrt q, so F |ds/dr| (error of p)/2; with
//             r |ds/dr| <= S r/(r + 0.05) r/sqrt(q)  and sqrt(q) >= r - 1.42 R that is less than
//             F S (error of p)/(0.79 r)
//             of t and the polynomial: 3 e T, and 12 e T with the products, times F S
//   fx c0 dx  F s (8 e R + 3 e (R + T)) with the last sums, s the largest factor; and e for the
//   rest
// Added in double: the error of the ray (one operation per step of the maps, and a few more) and
// the table's remainder.
double FastPositions::errorBound(const cv::Size& size) const {
  const double e = std::numeric_limits<float>::epsilon() / 2.0;
  const double R = groupReach_;
  const double T = nodeReach_;
  const double F = 32 * std::max(std::abs(rays_.camera.fx), std::abs(rays_.camera.fy));
  const double S = table_.slopeBound();
  const double M = table_.factorBound();
  const double s = table_.largestFactor();
  const double tError = e * (34 * R + 2 * (0.02 + 3.9 * R) + 0.02) / 0.79 + 3 * e * T;
  const double groupError = F * S * (tError + 12 * e * T) + F * s * e * (11 * R + 3 * T) + e;

  const double e2 = std::numeric_limits<double>::epsilon() / 2;
  const double radius = radiusBound(linear_, size);
  const double rayError = (size.width + 16.0) * 2 * e2 * radius;
  const double centre = 32 * std::max(std::abs(rays_.camera.cx), std::abs(rays_.camera.cy));
  const double largest = F * radius * M + centre;
  if (!(largest < 1073741824.0)) {  // beyond 2^30 the integers leave no room for the differences
    return std::numeric_limits<double>::infinity();
  }
  return groupError + F * radius * table_.remainderBound(T) + F * (M + 4 * M) * rayError +
         16 * e2 * largest;
}

}  // namespace fisheye_calibration::rendering
