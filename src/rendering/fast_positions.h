// Raw-image positions of corrected pixels in any order, equal to those of the undistortion maps.
#pragma once

#include <cstddef>
#include <opencv2/core.hpp>

#include "rendering/exact_positions.h"
#include "rendering/lens_table.h"
#include "rendering/raw_position.h"
#include "rendering/run.h"

namespace fisheye_calibration::rendering {

// Data shared by all runs of one image.
//
// A position is first computed with the lens table in 32-bit float, relative to one pixel of a
// small group. If the result, in 1/32 pixel, is so close to a rounding tie that the error of this
// computation could change it, or if the group is not small, it is recomputed as the maps compute
// it.
class FastPositions {
 public:
  FastPositions(const RectifyingRays& rays, const cv::Size& size);

  const RectifyingRays& rays() const { return rays_; }
  const LensTable& table() const { return table_; }

  // (x, y) = linear (column, row, 1), the normalised coordinates of a corrected pixel; y does not
  // depend on the column.
  const cv::Matx23d& linear() const { return linear_; }

  // How far a group may extend from its middle pixel, in x and in y, and from its table node, and
  // how close to the optical axis that pixel may be.
  double groupReach() const { return groupReach_; }
  double nodeReach() const { return nodeReach_; }
  double smallestRadius() const { return smallestRadius_; }

  // Computed positions within this distance of a multiple of 1/32 pixel round correctly; 0 if the
  // fast computation cannot be used.
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

// Positions (u[k], v[k]) of the corrected pixels (column[k], row[k]); a negative column means no
// pixel and gives kNowhere. Reads and writes whole runs, of which the first `count` elements are
// wanted. Returns the number of positions recomputed as the maps compute them.
std::size_t positionsOfRun(const FastPositions& positions, ExactPositions& exact, const int* column,
                           const int* row, std::size_t count, int* u, int* v);

}  // namespace fisheye_calibration::rendering
