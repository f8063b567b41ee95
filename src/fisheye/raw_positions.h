// Raw-image positions of corrected pixels in any order, equal to those of the undistortion maps.
#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <opencv2/core.hpp>
#include <vector>

#include "fisheye/lens_table.h"
#include "fisheye/undistortion_maps.h"

namespace fisheye {

// Pixels are handled in runs of at most this many; arrays of a run always have this length.
constexpr std::size_t kRun = 64;

// Marks a pixel without a position, in both coordinates. A real position is never written so: only
// the low 21 bits count, and they can be written in another way.
constexpr int kNowhere = std::numeric_limits<int>::max();

// What all runs of one image share.
//
// A position is first computed with the lens table, from rays that are linear in the pixel's
// coordinates. Where the result, in units of 1/32 pixel, lies so near to a tie of its rounding that
// the errors of the table and of the linear rays could turn it, or where the table does not reach,
// it is computed again as the maps compute it.
class RawPositions {
 public:
  RawPositions(const RectifyingRays& rays, const cv::Size& size);

  const RectifyingRays& rays() const { return rays_; }
  const LensTable& table() const { return table_; }

  // (x, y) = linear (column, row, 1), the normalised coordinates of a corrected pixel.
  const cv::Matx23d& linear() const { return linear_; }

  // A computed position no farther than this from a whole number of 1/32 pixels is rounded rightly;
  // 0 when nothing is known.
  double safeDistance() const { return safeDistance_; }

 private:
  RectifyingRays rays_;
  cv::Matx23d linear_;
  LensTable table_;
  double safeDistance_;
};

// Positions as the maps compute them, one at a time. A ray is reached by adding up the steps from
// the start of its row, whose rounding is part of the result; the sums of the last row start are
// kept, one in sixteen. Not to be shared between threads.
class SteppedPositions {
 public:
  explicit SteppedPositions(const RectifyingRays& rays) : rays_(rays) {}

  RawPosition at(int column, int row);

 private:
  // start, start + step, start + step + step ...
  class Sums {
   public:
    double at(double start, double step, int count);

   private:
    double start_ = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> kept_;
  };

  RectifyingRays rays_;
  std::array<Sums, 3> sums_;
};

// Positions (u[k], v[k]) of the corrected pixels (column[k], row[k]), which are whole numbers; a
// negative column stands for no pixel and gives kNowhere. Fills the first `count` elements and may
// write the whole run. Returns how many positions had to be computed as the maps compute them.
std::size_t positionsOfRun(const RawPositions& positions, SteppedPositions& stepped,
                           const double* column, const double* row, std::size_t count, int* u,
                           int* v);

}  // namespace fisheye
