// Raw-image positions one at a time, as the undistortion maps compute them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "rendering/raw_position.h"

namespace fisheye_calibration::rendering {

// A ray is reached by adding up the steps from the start of its row, whose rounding is part of the
// result. Some sums of the last row start are kept (without skew all rows start alike), few enough
// for any width. Not to be shared between threads.
class ExactPositions {
 public:
  ExactPositions(const RectifyingRays& rays, int width);

  RawPosition at(int column, int row);

  // Computes those of the first `count` pixels of a run whose bits are set, and returns how many. A
  // position is never written as kNowhere.
  std::size_t recompute(std::uint64_t pixels, std::size_t count, const int* column, const int* row,
                        int* u, int* v);

 private:
  // start, start + step, start + step + step ...
  class Sums {
   public:
    Sums(double step, int spacingBits) : step_(step), spacingBits_(spacingBits) {}

    double at(double start, int count);

   private:
    double step_;
    int spacingBits_;  // one sum of 2^spacingBits is kept
    double start_ = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> kept_;
  };

  RectifyingRays rays_;
  std::array<Sums, 3> sums_;
};

}  // namespace fisheye_calibration::rendering
