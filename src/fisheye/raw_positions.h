// Raw-image positions of corrected pixels in any order, equal to those of the undistortion maps.
#pragma once

#include <cstddef>
#include <limits>
#include <opencv2/core.hpp>

#include "fisheye/lens_table.h"
#include "fisheye/stepped_positions.h"
#include "fisheye/undistortion_maps.h"

namespace fisheye {

// Pixels are handled in runs of at most this many; arrays of a run always have this length.
constexpr std::size_t kRun = 64;

// Marks a pixel without a position, in both coordinates. A real position is never written so: only
// the low 21 bits count, and they can be written in another way.
constexpr int kNowhere = std::numeric_limits<int>::max();

// What all runs of one image share.
//
// A position is first computed in 32-bit float as its difference from a point of a small group of
// pixels, with the lens table. Where the result, in units of 1/32 pixel, lies so near to a tie of
// its rounding that the errors of this computation could turn it, or where the group is not small,
// it is computed again as the maps compute it.
class RawPositions {
 public:
  RawPositions(const RectifyingRays& rays, const cv::Size& size);

  const RectifyingRays& rays() const { return rays_; }
  const LensTable& table() const { return table_; }

  // (x, y) = linear (column, row, 1), the normalised coordinates of a corrected pixel; y does not
  // depend on the column.
  const cv::Matx23d& linear() const { return linear_; }

  // How far a group may extend from its middle pixel, in x and in y, and from its node of the
  // table; and how near to the optical axis that pixel may be.
  double groupReach() const { return groupReach_; }
  double nodeReach() const { return nodeReach_; }
  double smallestRadius() const { return smallestRadius_; }

  // A computed position no farther than this from a whole number of 1/32 pixels is rounded rightly;
  // 0 when the fast computation cannot be used.
  double safeDistance() const { return safeDistance_; }

 private:
  double errorBound(const cv::Size& size) const;

  RectifyingRays rays_;
  cv::Matx23d linear_;
  LensTable table_;
  double groupReach_;
  double nodeReach_;
  double smallestRadius_;
  double safeDistance_ = 0;
};

// Positions (u[k], v[k]) of the corrected pixels (column[k], row[k]); a negative column stands for
// no pixel and gives kNowhere. Reads and writes whole runs, of which the first `count` elements are
// wanted. Returns how many positions had to be computed as the maps compute them.
std::size_t positionsOfRun(const RawPositions& positions, SteppedPositions& stepped,
                           const int* column, const int* row, std::size_t count, int* u, int* v);

}  // namespace fisheye
